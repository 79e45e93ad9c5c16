#include "launcher/publicfile.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryFile>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace PublicFile {

namespace {

constexpr QFileDevice::Permissions ReadableByAll = QFileDevice::ReadOwner |
                                                   QFileDevice::WriteOwner |
                                                   QFileDevice::ReadGroup | QFileDevice::ReadOther;

/// What is appended to the name of a file for its temporary file, with letters in place of each X.
constexpr char TemporarySuffix[] = ".XXXXXX";
constexpr int TemporarySuffixBytes = sizeof TemporarySuffix - 1;

/// Far above what anybody keeps in such a file.
constexpr qint64 MaxBytes = INT_MAX / 2;

/// A file that is open for reading, and nothing that only looks like one: the daemon would wait for
/// who writes to a pipe. QFile would ask the system twice as often, and with every start
/// of the runtime all files of all apps are read.
class OpenFile
{
public:
    explicit OpenFile(const QString &path)
        : m_descriptor(::open(QFile::encodeName(path).constData(),
                              O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK))
    {
    }
    ~OpenFile()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }
    OpenFile(const OpenFile &) = delete;
    OpenFile &operator=(const OpenFile &) = delete;

    /// Negative when the file is not open, and for anything but a file.
    qint64 size() const
    {
        struct stat status = {};
        const bool known = ::fstat(m_descriptor, &status) == 0 && S_ISREG(status.st_mode);
        return known ? static_cast<qint64>(status.st_size) : -1;
    }

    /// Up to `size` bytes; less only at the end of the file, nothing at all on failure.
    std::optional<QByteArray> read(int size) const
    {
        QByteArray content(size, Qt::Uninitialized);
        int done = 0;
        while (done < size) {
            const ssize_t count =
                ::read(m_descriptor, content.data() + done, static_cast<std::size_t>(size - done));
            if (count < 0 && errno == EINTR)
                continue;
            if (count < 0)
                return std::nullopt;
            done += static_cast<int>(count);
            if (count == 0)
                break;
        }
        content.truncate(done);
        return content;
    }

private:
    int m_descriptor;
};

bool isLetter(QChar character)
{
    return (character >= QLatin1Char('a') && character <= QLatin1Char('z')) ||
           (character >= QLatin1Char('A') && character <= QLatin1Char('Z'));
}

/// Whether what was written is on the disk. Some file systems know no such thing, but one that
/// tells of an error has lost something.
bool synchronise(const QFileDevice &file)
{
    return ::fdatasync(file.handle()) == 0 || errno == EINVAL || errno == ENOSYS;
}

/// Gives the file its place; `isNew`: where there was none. A file without a name can have the
/// final one at once, but only if that is free.
bool move(QTemporaryFile *file, const QByteArray &finalPath, bool isNew)
{
    const QByteArray nameless = "/proc/self/fd/" + QByteArray::number(file->handle());
    if (isNew && ::linkat(AT_FDCWD, nameless.constData(), AT_FDCWD, finalPath.constData(),
                          AT_SYMLINK_FOLLOW) == 0)
        return true;
    const QByteArray name = QFile::encodeName(file->fileName()); // it gets one by that
    if (name.isEmpty() || std::rename(name.constData(), finalPath.constData()) != 0)
        return false;
    file->setAutoRemove(false);
    return true;
}

} // namespace

// As QSaveFile does it, but for one thing: that synchronises too, and ignores that it fails. To do
// so before it does would make the disk do it twice.
WriteResult write(const QString &path, const QByteArray &content)
{
    const QFileInfo old(path);
    if (old.exists() && (!old.isFile() || !old.isWritable()))
        return WriteResult::CannotOpen;
    const QString finalPath = old.isSymLink() ? old.symLinkTarget() : path;
    QTemporaryFile file(finalPath + QLatin1String(TemporarySuffix));
    if (!file.open())
        return WriteResult::CannotOpen;
    if (!file.setPermissions(ReadableByAll) || file.write(content) != content.size() ||
        !file.flush() || !synchronise(file) ||
        !move(&file, QFile::encodeName(finalPath), !old.exists()))
        return WriteResult::CannotWrite;
    return WriteResult::Written;
}

std::optional<QByteArray> read(const QString &path)
{
    const OpenFile file(path);
    const qint64 size = file.size();
    if (size < 0 || size > MaxBytes)
        return std::nullopt;
    return file.read(static_cast<int>(size));
}

bool hasContent(const QString &path, const QByteArray &content)
{
    const OpenFile file(path);
    return file.size() == content.size() && file.read(content.size()) == content;
}

bool writeIfChanged(const QString &path, const QByteArray &content)
{
    return hasContent(path, content) || write(path, content) == WriteResult::Written;
}

QString withoutTemporarySuffix(const QString &name)
{
    const QString suffix = name.right(TemporarySuffixBytes);
    const bool isTemporary = suffix.size() == TemporarySuffixBytes &&
                             suffix.startsWith(QLatin1Char('.')) &&
                             std::all_of(suffix.begin() + 1, suffix.end(), isLetter);
    return isTemporary ? name.chopped(TemporarySuffixBytes) : name;
}

int maxNameBytes()
{
    return NAME_MAX - TemporarySuffixBytes;
}

} // namespace PublicFile
