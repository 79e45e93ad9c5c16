#include "launcher/leftovers.h"

#include "launcher/filelisting.h"
#include "launcher/launcherpaths.h"
#include "launcher/publicfile.h"

namespace Leftovers {

namespace {

/// Whether a file of this name is of no use, in a directory of files that have the suffix in place
/// of that of their desktop entry. For a desktop entry itself that is for others to say.
bool isLeftover(const QString &directory, const QString &name, QLatin1String suffix,
                const QSet<QString> &desktopFiles)
{
    const QString finalName = PublicFile::withoutTemporarySuffix(name);
    const bool isTemporary = finalName != name;
    if (isTemporary && directory + finalName == LauncherPaths::sharingFile())
        return true;
    const QString entryName = LauncherPaths::entryOfFile(finalName, suffix);
    if (!LauncherPaths::isEntryName(entryName))
        return false;
    return isTemporary || (entryName != name &&
                           !desktopFiles.contains(LauncherPaths::applicationsDir() + entryName));
}

} // namespace

QStringList find(const QSet<QString> &desktopFiles)
{
    const auto findIn = [&desktopFiles](const QString &directory, const char *suffix) {
        return listFiles(directory, [&](const QString &name) {
            return isLeftover(directory, name, QLatin1String(suffix), desktopFiles);
        });
    };
    return findIn(LauncherPaths::applicationsDir(), ".desktop") +
           findIn(LauncherPaths::iconsDir(), ".png") +
           findIn(LauncherPaths::settingsEntriesDir(), ".json");
}

} // namespace Leftovers
