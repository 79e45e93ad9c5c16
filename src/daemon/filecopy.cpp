#include "daemon/filecopy.h"

#include "daemon/filedescriptor.h"

#include <QtGlobal>

#include <cerrno>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace {

/// An APK is a ZIP archive of the kind that tells sizes and places in 32 bits; the runtime reads no
/// other. What is larger has nothing to do with an app, and a sparse file costs nothing to make.
constexpr qint64 maxApkBytes = Q_INT64_C(0xffffffff);

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

bool copyContent(const FileDescriptor &from, const FileDescriptor &to)
{
    struct stat status
    {
    };
    if (::fstat(from.get(), &status) != 0)
        return false;
    if (status.st_size > maxApkBytes) {
        errno = EFBIG;
        return false;
    }
    if (!hasRoom(to, status.st_size))
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
