#pragma once

#include "tools/ctl/regularfile.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QVector>

/// One desktop entry that the daemon has written.
struct AppEntry
{
    QString path;
    RegularFile::State state = RegularFile::State::Read;
    QString packageName; ///< empty when the entry names none: nothing of the rest is known then
    QString className;   ///< empty when the command line names none
    QString name;
    QString iconPath;
    QStringList mimeTypes; ///< with the pseudo types of URL schemes and hosts
    bool isHandler = false;
    bool isHidden = false;
};

/// One app, as its entries show it.
struct App
{
    QString packageName;
    QString name;
    QString version;       ///< empty when no settings entry tells
    bool isHidden = false; ///< it has nothing in the app grid
    QStringList launchers; ///< classes
    QStringList opens;     ///< MIME types
};

namespace AppEntries {

AppEntry parse(const QString &path, const QByteArray &content);

/// All entries of the daemon, ordered by file name.
QVector<AppEntry> readAll();

/// The entries' apps, ordered by package; entries without a package are none's.
QVector<App> appsOf(const QVector<AppEntry> &entries);

/// appsOf(readAll()), with the versions from the settings entries.
QVector<App> installedApps();

/// Whether the host has an entry of this package.
bool isInstalled(const QString &packageName);

/// For scripts.
QJsonObject inJson(const App &app);

/// The version that a settings entry shows; empty when it shows none.
QString versionOf(const QByteArray &settingsEntry);

} // namespace AppEntries
