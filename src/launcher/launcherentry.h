#pragma once

#include <QString>

struct ApkLauncher;
class DesktopFile;

/// Where an announced activity's desktop entry shows.
enum class Visibility {
    Shown,
    Hidden,      ///< handlers and blacklisted launchers: known to the host, not in the app grid
    PartnerSpace ///< hidden here, shown in the partner space
};

/// Sets what the host needs to know to show and start the activity. Other keys stay.
/// `appsDir` is the runtime's directory of installed apps, ending in "/".
void fillLauncherEntry(DesktopFile &entry, const ApkLauncher &launcher, const QString &appsDir,
                       const QString &iconPath, Visibility visibility);
