#include "daemon/sourcefile.h"

#include <QByteArray>
#include <QFile>

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/statfs.h>

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

/// The name under which the file that a descriptor stands for can be opened again, whatever has its
/// path by now.
QByteArray nameOf(const FileDescriptor &file)
{
    return "/proc/self/fd/" + QByteArray::number(file.get());
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

} // namespace SourceFile
