#pragma once

#include "launcher/apklauncher.h"
#include "support/hostfiles.h"

/// The host's files around DesktopManager, in a private root, and announcements to give it.
namespace LauncherHost {

inline QString entryPath(const char *name)
{
    return QLatin1String("/usr/share/applications/") + QLatin1String(name) +
           QLatin1String(".desktop");
}

inline QString iconPath(const char *name)
{
    return QLatin1String("/var/lib/bramd/") + QLatin1String(name) + QLatin1String(".png");
}

inline QString settingsPath(const char *name)
{
    return QLatin1String("/usr/share/corvo-settings/entries/") + QLatin1String(name) +
           QLatin1String(".json");
}

inline QString sharingPath()
{
    return QStringLiteral("/var/lib/bramd/sharing.json");
}

/// A host without Android apps.
inline void reset()
{
    HostFiles::makeEmptyDirectory(QStringLiteral("/usr/share/applications"));
    HostFiles::makeEmptyDirectory(QStringLiteral("/usr/share/corvo-settings/entries"));
    HostFiles::makeEmptyDirectory(QStringLiteral("/usr/share/bramd/partnerspace"));
    HostFiles::makeEmptyDirectory(QStringLiteral("/var/lib/bramd"));
    HostFiles::makeEmptyDirectory(QStringLiteral("/etc/bramd"));
}

/// All files that stand for Android apps.
inline QStringList files()
{
    return HostFiles::filesBelow(QStringLiteral("/usr/share/applications")) +
           HostFiles::filesBelow(QStringLiteral("/var/lib/bramd")) +
           HostFiles::filesBelow(QStringLiteral("/usr/share/corvo-settings/entries"));
}

inline ApkLauncher launcher(const QString &packageName, const QString &className)
{
    ApkLauncher announced;
    announced.label = QStringLiteral("An App");
    announced.icon = QByteArray("\x89PNG\0", 5);
    announced.packageName = packageName;
    announced.className = className;
    announced.packageVersion = QStringLiteral("1.0");
    return announced;
}

/// "a.b", whose files are named "bramd_launcher_a_b-a_b_Main".
inline ApkLauncher launcher()
{
    return launcher(QStringLiteral("a.b"), QStringLiteral("a.b.Main"));
}

/// Opens texts and calls; its files are named "bramd_handler_a_b-a_b_Open".
inline ApkLauncher handler()
{
    ApkLauncher announced = launcher(QStringLiteral("a.b"), QStringLiteral("a.b.Open"));
    announced.mimeTypes =
        QStringList{QStringLiteral("text/plain"), QStringLiteral("x-scheme-handler/tel")};
    return announced;
}

/// Takes shared images; its files are named "bramd_handler_a_b-a_b_Share".
inline ApkLauncher shareTarget()
{
    ApkLauncher announced = launcher(QStringLiteral("a.b"), QStringLiteral("a.b.Share"));
    announced.caption = QStringLiteral("Send to An App");
    announced.shareMimeTypes = QStringList{QStringLiteral("image/*")};
    return announced;
}

} // namespace LauncherHost
