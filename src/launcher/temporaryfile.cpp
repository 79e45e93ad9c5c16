#include "launcher/temporaryfile.h"

#include <QRandomGenerator>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr char Letters[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
constexpr mode_t ReadableByAll = S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH;

/// Of names that are taken already, each one of billions.
constexpr int MaxAttempts = 100;

QByteArray directoryOf(const QByteArray &path)
{
    return path.left(path.lastIndexOf('/') + 1);
}

QByteArray named(const QByteArray &finalPath)
{
    QByteArray name = finalPath + '.';
    for (int letter = 1; letter < TemporaryFile::SuffixBytes; ++letter)
        name += Letters[QRandomGenerator::global()->bounded(int{sizeof Letters - 1})];
    return name;
}

/// Whether the file system knows no files without a name, or the kernel does not.
bool needsName(int error)
{
    return error == EOPNOTSUPP || error == EISDIR || error == EINVAL;
}

bool writeAll(int descriptor, const QByteArray &content)
{
    int done = 0;
    while (done < content.size()) {
        const ssize_t count = ::write(descriptor, content.constData() + done,
                                      static_cast<std::size_t>(content.size() - done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0) // none is no error, but would be so for ever
            return false;
        done += static_cast<int>(count);
    }
    return true;
}

/// Some file systems know no such thing, but one that tells of an error has lost something.
bool synchronise(int descriptor)
{
    while (::fdatasync(descriptor) != 0) {
        if (errno != EINTR)
            return errno == EINVAL || errno == ENOSYS;
    }
    return true;
}

} // namespace

TemporaryFile::TemporaryFile(const QByteArray &finalPath)
    : m_finalPath(finalPath)
    , m_descriptor(::open(directoryOf(finalPath).constData(), O_TMPFILE | O_WRONLY | O_CLOEXEC,
                          S_IRUSR | S_IWUSR))
{
    if (m_descriptor < 0 && needsName(errno))
        openNamed();
}

TemporaryFile::~TemporaryFile()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
    if (!m_name.isEmpty())
        ::unlink(m_name.constData());
}

bool TemporaryFile::write(const QByteArray &content)
{
    m_content = content;
    return writeContent();
}

// A file without a name can have the final one at once, but only if that is free.
bool TemporaryFile::putIntoPlace(bool isNew)
{
    if (m_name.isEmpty()) {
        if (isNew && link(m_finalPath))
            return true;
        if (!linkNamed() && !(errno == ENOENT && writeNamed()))
            return false;
    }
    if (std::rename(m_name.constData(), m_finalPath.constData()) != 0)
        return false;
    m_name.clear();
    return true;
}

void TemporaryFile::openNamed()
{
    for (int attempt = 0; attempt < MaxAttempts; ++attempt) {
        const QByteArray name = named(m_finalPath);
        m_descriptor =
            ::open(name.constData(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, S_IRUSR | S_IWUSR);
        if (isOpen())
            m_name = name;
        if (isOpen() || errno != EEXIST)
            return;
    }
}

bool TemporaryFile::writeContent() const
{
    return ::fchmod(m_descriptor, ReadableByAll) == 0 && writeAll(m_descriptor, m_content) &&
           synchronise(m_descriptor);
}

bool TemporaryFile::link(const QByteArray &path) const
{
    const QByteArray nameless = "/proc/self/fd/" + QByteArray::number(m_descriptor);
    return ::linkat(AT_FDCWD, nameless.constData(), AT_FDCWD, path.constData(),
                    AT_SYMLINK_FOLLOW) == 0;
}

bool TemporaryFile::linkNamed()
{
    for (int attempt = 0; attempt < MaxAttempts; ++attempt) {
        const QByteArray name = named(m_finalPath);
        if (link(name)) {
            m_name = name;
            return true;
        }
        if (errno != EEXIST)
            break;
    }
    return false;
}

// To ask for "/proc" in time would be one more system call for each file.
bool TemporaryFile::writeNamed()
{
    ::close(m_descriptor);
    openNamed();
    return isOpen() && writeContent();
}
