#include "launcher/installedentries.h"

#include "launcher/desktopfile.h"
#include "launcher/launcherpaths.h"

#include <QFile>

#include <algorithm>
#include <dirent.h>
#include <memory>
#include <sys/stat.h>

namespace {

/// Whether it is a file, or a link to one.
bool isFile(DIR *directory, const dirent &entry)
{
    if (entry.d_type == DT_REG || (entry.d_type != DT_UNKNOWN && entry.d_type != DT_LNK))
        return entry.d_type == DT_REG;
    struct stat status = {};
    return ::fstatat(::dirfd(directory), entry.d_name, &status, 0) == 0 && S_ISREG(status.st_mode);
}

/// The names of our entries in the directory, in order. QDir would take longer for the list than it
/// takes to read all files on it.
QStringList entryNames()
{
    QStringList names;
    const std::unique_ptr<DIR, int (*)(DIR *)> directory(
        ::opendir(QFile::encodeName(LauncherPaths::applicationsDir()).constData()), ::closedir);
    while (const dirent *entry = directory ? ::readdir(directory.get()) : nullptr) {
        const QString name = QFile::decodeName(entry->d_name);
        // Others may leave names here that have no text.
        if (LauncherPaths::isEntryName(name) && QFile::encodeName(name) == entry->d_name &&
            isFile(directory.get(), *entry))
            names.append(name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace

InstalledEntries::InstalledEntries()
{
    const QStringList names = entryNames();
    for (const QString &name : names) {
        const QString path = LauncherPaths::applicationsDir() + name;
        m_paths[DesktopFile::readValue(path, "X-bramd-packageName")].append(path);
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
