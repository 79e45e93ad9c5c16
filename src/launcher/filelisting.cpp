#include "launcher/filelisting.h"

#include "launcher/logging.h"

#include <QFile>

#include <cerrno>
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

} // namespace

// QDir would take longer for the list than it takes to read all files on it, and does not tell a
// directory that it could not read from an empty one.
QStringList listFiles(const QString &directory,
                      const std::function<bool(const QString &name)> &isWanted)
{
    QStringList paths;
    const std::unique_ptr<DIR, int (*)(DIR *)> opened(
        ::opendir(QFile::encodeName(directory).constData()), ::closedir);
    bool isComplete = opened || errno == ENOENT;
    while (opened) {
        errno = 0;
        const dirent *entry = ::readdir(opened.get());
        if (!entry) {
            isComplete = errno == 0;
            break;
        }
        const QString name = QFile::decodeName(entry->d_name);
        // Others may leave names here that have no text.
        if (isWanted(name) && QFile::encodeName(name) == entry->d_name &&
            isFile(opened.get(), *entry))
            paths.append(directory + name);
    }
    if (!isComplete)
        qCWarning(launcherLog) << "Could not list:" << directory;
    paths.sort();
    return paths;
}
