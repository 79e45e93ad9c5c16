#pragma once

#include <QString>

struct ApkLauncher;

/// Where the files that stand for an announced activity are, and how they are named. Only
/// isApkPath() looks at the file system.
namespace LauncherPaths {

/// The directories end in "/".
QString applicationsDir();
QString iconsDir();
QString settingsEntriesDir();
QString partnerSpaceDir();

/// Package and class as one word of a file name: a "." becomes "_" and a "_" becomes "__", so
/// that different names stay different; "-" stands between the two.
QString escapedComponent(const QString &packageName, const QString &className);

/// The desktop entry of an activity. Handlers and plain launchers have different prefixes.
QString desktopFile(const ApkLauncher &launcher);

/// Name filters that match the daemon's own desktop entries.
QString launcherFilter();
QString handlerFilter();

/// Whether one of them matches the name.
bool isEntryName(const QString &name);

/// The icon and the settings entry that belong to a desktop entry.
QString icon(const QString &desktopFile);
QString settingsEntry(const QString &desktopFile);

/// The name of the desktop entry to which a file with another suffix belongs, such as an icon.
/// Empty when that is not its suffix.
QString entryOfFile(const QString &name, QLatin1String suffix);

/// The list of all share targets.
QString sharingFile();

/// The file that marks a package as one of the partner space. A version suffix ("-12") of the
/// package's name is folded away.
QString partnerSpaceMarker(const QString &packageName);

/// Whether a path names an APK: by its ending, whatever the case, or by being a directory that
/// holds a "base.apk".
bool isApkPath(const QString &path);

} // namespace LauncherPaths
