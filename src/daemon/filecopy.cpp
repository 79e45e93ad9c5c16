#include "daemon/filecopy.h"

#include "daemon/filedescriptor.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

namespace {

FileDescriptor openRegularFile(const QByteArray &path)
{
    // O_PATH finds the file without opening it: to open a FIFO blocks or wakes its writer, and to
    // open a device can make it act.
    const FileDescriptor found(::open(path.constData(), O_PATH | O_CLOEXEC));
    struct stat status
    {
    };
    if (!found.isOpen() || ::fstat(found.get(), &status) != 0)
        return FileDescriptor();
    if (!S_ISREG(status.st_mode)) {
        errno = EINVAL;
        return FileDescriptor();
    }
    // Opens the file that was looked at, whatever has its name by now. Not blocking, because some
    // files of the kernel look regular and still wait for data.
    const QByteArray same = "/proc/self/fd/" + QByteArray::number(found.get());
    return FileDescriptor(::open(same.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
}

/// Asked beforehand, so that a file that does not fit does not fill the disk first. (To reserve the
/// space would do just that: a reservation that fails may keep what it has got so far.)
bool hasRoom(const FileDescriptor &file, off_t size)
{
    struct statvfs disk
    {
    };
    if (::fstatvfs(file.get(), &disk) != 0 || disk.f_blocks == 0)
        return true; // not known: the copy will find out
    if (static_cast<quint64>(size) / disk.f_frsize < disk.f_bavail)
        return true;
    errno = ENOSPC;
    return false;
}

/// Copies some bytes at the files' positions, in the kernel, which may share the blocks.
ssize_t copySome(const FileDescriptor &from, const FileDescriptor &to, size_t size)
{
    const ssize_t copied = ::copy_file_range(from.get(), nullptr, to.get(), nullptr, size, 0);
    if (copied >= 0)
        return copied;
    const bool unsuitable =
        errno == EXDEV || errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP;
    return unsuitable ? ::sendfile(to.get(), from.get(), nullptr, size) : copied;
}

} // namespace

bool copyRegularFile(const QString &source, const QString &destination)
{
    const FileDescriptor from = openRegularFile(QFile::encodeName(source));
    if (!from.isOpen())
        return false;
    const FileDescriptor to(::open(QFile::encodeName(destination).constData(),
                                   O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    struct stat status
    {
    };
    if (!to.isOpen() || ::fstat(from.get(), &status) != 0 || !hasRoom(to, status.st_size))
        return false;

    // As many bytes as there were at the start, so that a file that keeps growing comes to an end.
    off_t remaining = status.st_size;
    while (remaining > 0) {
        const ssize_t copied = copySome(from, to, static_cast<size_t>(remaining));
        if (copied < 0 && errno == EINTR)
            continue;
        if (copied == 0)
            errno = ENODATA; // the file has been cut meanwhile
        if (copied <= 0)
            return false;
        remaining -= copied;
    }
    return true;
}
