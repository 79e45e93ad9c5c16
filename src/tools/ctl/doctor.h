#pragma once

#include "tools/ctl/appentry.h"
#include "tools/ctl/sharetarget.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>

/// What is known about the host when it is examined; whoever fills it in reads files and asks
/// buses.
struct HostState
{
    /// An icon file and how it begins.
    struct Icon
    {
        QString path;
        bool isReadable = true;
        QByteArray content;
    };

    bool systemBusReachable = true;
    bool daemonKnown = true; ///< it runs, or the bus can start it
    QString unitState;       ///< as systemd has it; empty when it is not known
    QString unitComplaint;   ///< why it is not known
    bool runtimeImageThere = true;
    bool sessionBusReachable = true;
    QString sessionBusPath;            ///< where the daemon expects it
    QStringList unreadableDirectories; ///< ending in "/"; what is in them is not known
    QVector<AppEntry> entries;
    QVector<Icon> icons;
    QStringList settingsEntries; ///< paths of the daemon's
    ShareTargets targets;
};

/// Something that is not as it should be.
struct Finding
{
    QString what;
    QString advice; ///< what to do about it
};

bool operator==(const Finding &left, const Finding &right);

namespace Doctor {

/// Everything that is wrong, the most general first; empty when all is well.
QVector<Finding> examine(const HostState &host);

} // namespace Doctor
