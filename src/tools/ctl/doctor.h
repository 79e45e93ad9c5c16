#pragma once

#include "tools/ctl/appentry.h"
#include "tools/ctl/daemonstatus.h"
#include "tools/ctl/sharetarget.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>

/// What is known about the host when it is examined; whoever fills it in reads files and asks
/// buses.
struct HostState
{
    /// A file of the daemon's.
    struct File
    {
        QString path;
        RegularFile::State state = RegularFile::State::Read;
        QByteArray content;
    };

    bool systemBusReachable = true;
    bool daemonKnown = true; ///< it runs, or the bus can start it
    DaemonStatus::Answer daemonAnswer;
    bool callsPermitted = true;
    QString unitState;     ///< as systemd has it; empty when it is not known
    QString unitComplaint; ///< why it is not known, and what to do
    bool unitUnstartable = false;
    bool runtimeImageThere = true;
    bool sessionBusReachable = true;
    QString sessionBusPath;            ///< where the daemon expects it
    QStringList unreadableDirectories; ///< ending in "/"; what is in them is not known
    QVector<AppEntry> entries;
    QVector<File> icons;
    QVector<File> settingsEntries;
    RegisteredTargets targets;
};

/// Something that is not as it should be.
struct Finding
{
    QString what;
    QString advice; ///< what to do about it
};

bool operator==(const Finding &left, const Finding &right);

namespace Doctor {

/// A directory that the user of this program may not look into.
Finding closedDirectory(const QString &path);

/// Everything that is wrong, the most general first; empty when all is well.
QVector<Finding> examine(const HostState &host);

} // namespace Doctor
