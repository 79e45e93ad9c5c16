#include "launcher/installedentries.h"

#include "launcher/desktopfile.h"
#include "launcher/launcherpaths.h"

#include <QDir>

InstalledEntries::InstalledEntries()
{
    const QDir directory(LauncherPaths::applicationsDir());
    const QStringList names =
        directory.entryList({LauncherPaths::launcherFilter(), LauncherPaths::handlerFilter()},
                            QDir::Files | QDir::CaseSensitive, QDir::Name);
    for (const QString &name : names) {
        const QString path = directory.filePath(name);
        m_paths[DesktopFile(path).value(QStringLiteral("X-bramd-packageName"))].append(path);
    }
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
