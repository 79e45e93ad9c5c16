#include "launcher/publicfile.h"

#include "launcher/temporaryfile.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace PublicFile {

namespace {

/// Far above what anybody keeps in such a file.
constexpr qint64 MaxBytes = INT_MAX / 2;

/// A file that is open for reading, and nothing that only looks like one: the daemon would wait for
/// who writes to a pipe. QFile would ask the system twice as often, and with every start of the
/// runtime all files of all apps are read.
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

} // namespace

// As QSaveFile does it, which ignores that the disk cannot keep what was written, and asks the
// system twice as often.
WriteResult write(const QString &path, const QByteArray &content)
{
    const QByteArray name = QFile::encodeName(path);
    struct stat old = {};
    const bool isThere = ::lstat(name.constData(), &old) == 0;
    const bool isLink = isThere && S_ISLNK(old.st_mode);
    const bool exists = isLink ? ::stat(name.constData(), &old) == 0 : isThere;
    if (exists && (!S_ISREG(old.st_mode) || ::access(name.constData(), W_OK) != 0))
        return WriteResult::CannotOpen;
    TemporaryFile file(isLink ? QFile::encodeName(QFileInfo(path).symLinkTarget()) : name);
    if (!file.isOpen())
        return WriteResult::CannotOpen;
    if (!file.write(content) || !file.putIntoPlace(!exists))
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
    const QString suffix = name.right(TemporaryFile::SuffixBytes);
    const bool isTemporary = suffix.size() == TemporaryFile::SuffixBytes &&
                             suffix.startsWith(QLatin1Char('.')) &&
                             std::all_of(suffix.begin() + 1, suffix.end(), isLetter);
    return isTemporary ? name.chopped(TemporaryFile::SuffixBytes) : name;
}

int maxNameBytes()
{
    return NAME_MAX - TemporaryFile::SuffixBytes;
}

} // namespace PublicFile
