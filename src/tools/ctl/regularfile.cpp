#include "tools/ctl/regularfile.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// Icons are the largest files that the daemon writes: at most what one message of the runtime
/// holds.
constexpr qint64 MaxBytes = Q_INT64_C(8) * 1024 * 1024;

bool isNotThere(int error)
{
    return error == ENOENT || error == ENOTDIR;
}

/// Of a file that stat() has failed for.
RegularFile::State stateByError(int error, const char *name)
{
    if (!isNotThere(error) && error != ELOOP)
        return RegularFile::State::Unreadable;
    struct stat link
    {
    };
    return lstat(name, &link) == 0 ? RegularFile::State::Unusable : RegularFile::State::Missing;
}

} // namespace

RegularFile RegularFile::read(const QString &path)
{
    const QByteArray name = QFile::encodeName(path);
    struct stat info
    {
    };
    if (stat(name.constData(), &info) != 0)
        return {stateByError(errno, name.constData()), QByteArray()};
    if (!S_ISREG(info.st_mode) || info.st_size > MaxBytes)
        return {State::Unusable, QByteArray()};
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {State::Unreadable, QByteArray()};
    return {State::Read, file.read(MaxBytes)};
}

bool RegularFile::isClosedDirectory(const QString &path)
{
    const QByteArray name = QFile::encodeName(path);
    return faccessat(AT_FDCWD, name.constData(), R_OK | X_OK, AT_EACCESS) != 0 && errno == EACCES;
}
