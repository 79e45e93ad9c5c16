#include "launcher/installedentries.h"

#include "launcher/desktopfile.h"
#include "launcher/filelisting.h"
#include "launcher/launcherpaths.h"

InstalledEntries::InstalledEntries()
{
    const QStringList paths =
        listFiles(LauncherPaths::applicationsDir(), LauncherPaths::isEntryName);
    for (const QString &path : paths)
        m_paths[DesktopFile::readValue(path, "X-bramd-packageName")].append(path);
}

QStringList InstalledEntries::all() const
{
    QStringList paths;
    for (const QStringList &packagePaths : m_paths)
        paths += packagePaths;
    return paths;
}

QStringList InstalledEntries::ofPackage(const QString &packageName) const
{
    return m_paths.value(packageName);
}

std::optional<QString> InstalledEntries::packageOf(const QString &desktopFile) const
{
    for (auto package = m_paths.constBegin(); package != m_paths.constEnd(); ++package) {
        if (package.value().contains(desktopFile))
            return package.key();
    }
    return std::nullopt;
}
