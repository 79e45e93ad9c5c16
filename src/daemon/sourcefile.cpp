#include "daemon/sourcefile.h"

#include "daemon/assumedrights.h"

#include <QByteArray>
#include <QFile>

#include <algorithm>
#include <array>
#include <climits>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>

namespace SourceFile {

namespace {

// Their files look regular, and are answers of the kernel's to whoever asks. To open one can have
// an effect, and "/proc/self" is the daemon itself.
constexpr std::array<quint32, 8> kernelFileSystems = {
    PROC_SUPER_MAGIC, SYSFS_MAGIC,      NSFS_MAGIC,         DEBUGFS_MAGIC,
    TRACEFS_MAGIC,    SECURITYFS_MAGIC, CGROUP_SUPER_MAGIC, CGROUP2_SUPER_MAGIC,
};

bool isOfTheKernelsMaking(const FileDescriptor &file)
{
    struct statfs fileSystem
    {
    };
    if (::fstatfs(file.get(), &fileSystem) != 0)
        return true;
    const auto magic = static_cast<quint32>(fileSystem.f_type);
    return std::find(kernelFileSystems.begin(), kernelFileSystems.end(), magic) !=
           kernelFileSystems.end();
}

bool isRegular(const FileDescriptor &file)
{
    struct stat status
    {
    };
    return ::fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode);
}

bool isSame(const FileDescriptor &one, const FileDescriptor &other)
{
    struct stat first
    {
    };
    struct stat second
    {
    };
    return ::fstat(one.get(), &first) == 0 && ::fstat(other.get(), &second) == 0 &&
           first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

/// The name under which the file that a descriptor stands for can be opened again, whatever has its
/// path by now.
QByteArray nameOf(const FileDescriptor &file)
{
    return "/proc/self/fd/" + QByteArray::number(file.get());
}

/// Whether the path that the kernel has for an open file leads to it, too, so that the rights of
/// this thread were enough for each directory on the way.
bool isReachable(const FileDescriptor &file)
{
    QByteArray path(PATH_MAX, '\0');
    const ssize_t length = ::readlink(nameOf(file).constData(), path.data(), PATH_MAX - 1);
    if (length <= 0)
        return false;
    path.truncate(static_cast<int>(length));
    const FileDescriptor again(::open(path.constData(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    return again.isOpen() && isSame(file, again);
}

} // namespace

FileDescriptor open(const QString &path)
{
    // O_PATH finds the file without opening it: to open a FIFO blocks or wakes its writer, and to
    // open a device can make it act.
    const FileDescriptor found(::open(QFile::encodeName(path).constData(), O_PATH | O_CLOEXEC));
    if (!found.isOpen() || !isRegular(found) || isOfTheKernelsMaking(found))
        return FileDescriptor();
    // Not blocking, because some files of the kernel look regular and still wait for data.
    return FileDescriptor(::open(nameOf(found).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
}

FileDescriptor open(const QString &path, const UserRights &rights)
{
    const AssumedRights assumed(rights);
    if (!assumed.areAssumed())
        return FileDescriptor();
    FileDescriptor file = open(path);
    if (!file.isOpen() || !isReachable(file))
        return FileDescriptor();
    return file;
}

} // namespace SourceFile
