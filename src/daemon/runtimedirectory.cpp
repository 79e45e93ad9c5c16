#include "daemon/runtimedirectory.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <utility>

namespace {

/// One step of a walk, to what `name` stands for in `directory`.
using Step = FileDescriptor (*)(const FileDescriptor &directory, const QByteArray &name);

// Not openat2(), which takes all steps at once: some kernels of phones do not have it.
FileDescriptor enter(const FileDescriptor &directory, const QByteArray &name)
{
    return FileDescriptor(
        ::openat(directory.get(), name.constData(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

FileDescriptor makeAndEnter(const FileDescriptor &directory, const QByteArray &name)
{
    if (::mkdirat(directory.get(), name.constData(), 0777) != 0 && errno != EEXIST)
        return FileDescriptor();
    return enter(directory, name);
}

FileDescriptor walk(const QString &root, const QString &path, Step step)
{
    const QByteArray start = root.isEmpty() ? QByteArray("/") : QFile::encodeName(root);
    FileDescriptor directory(::open(start.constData(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    const QStringList names = path.mid(root.size()).split(QLatin1Char('/'), Qt::SkipEmptyParts);
    for (const QString &name : names)
        directory = step(directory, QFile::encodeName(name));
    // What O_PATH has opened can be neither listed nor given another owner.
    return FileDescriptor(::openat(directory.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

bool isFileOrLink(const FileDescriptor &directory, const char *name)
{
    struct stat status
    {
    };
    return ::fstatat(directory.get(), name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           (S_ISREG(status.st_mode) || S_ISLNK(status.st_mode));
}

} // namespace

RuntimeDirectory RuntimeDirectory::open(const QString &root, const QString &path)
{
    return RuntimeDirectory(walk(root, path, enter));
}

RuntimeDirectory RuntimeDirectory::make(const QString &root, const QString &path)
{
    QDir().mkpath(root);
    return RuntimeDirectory(walk(root, path, makeAndEnter));
}

RuntimeDirectory::RuntimeDirectory(FileDescriptor descriptor)
    : m_descriptor(std::move(descriptor))
{
}

bool RuntimeDirectory::setOwner(uid_t user, gid_t group) const
{
    return ::fchown(m_descriptor.get(), user, group) == 0;
}

bool RuntimeDirectory::setMode(mode_t mode) const
{
    return ::fchmod(m_descriptor.get(), mode) == 0;
}

QVector<QByteArray> RuntimeDirectory::files() const
{
    const int reader = ::openat(m_descriptor.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const std::unique_ptr<DIR, int (*)(DIR *)> listing(::fdopendir(reader), ::closedir);
    if (!listing)
        return {}; // not open, so that there is no reader either
    QVector<QByteArray> names;
    while (const dirent *entry = ::readdir(listing.get())) {
        if (isFileOrLink(m_descriptor, entry->d_name))
            names.append(entry->d_name);
    }
    return names;
}

bool RuntimeDirectory::contains(const QByteArray &name) const
{
    struct stat status
    {
    };
    return ::fstatat(m_descriptor.get(), name.constData(), &status, AT_SYMLINK_NOFOLLOW) == 0;
}

FileDescriptor RuntimeDirectory::create(const QByteArray &name) const
{
    return FileDescriptor(::openat(m_descriptor.get(), name.constData(),
                                   O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
}

bool RuntimeDirectory::rename(const QByteArray &from, const QByteArray &to) const
{
    return ::renameat(m_descriptor.get(), from.constData(), m_descriptor.get(), to.constData()) ==
           0;
}

bool RuntimeDirectory::remove(const QByteArray &name) const
{
    return ::unlinkat(m_descriptor.get(), name.constData(), 0) == 0;
}
