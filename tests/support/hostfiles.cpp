#include "support/hostfiles.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <cerrno>
#include <sys/mount.h>
#include <sys/stat.h>
#include <utility>

namespace HostFiles {

namespace {

void require(bool succeeded, const char *what, const QString &path)
{
    if (!succeeded)
        qFatal("%s: %s", what, qPrintable(path));
}

struct stat statusOf(const QString &path)
{
    struct stat status = {};
    require(::lstat(QFile::encodeName(path).constData(), &status) == 0, "cannot stat", path);
    return status;
}

bool mount(const QByteArray &source, const QString &target, const char *type, unsigned long flags,
           const QByteArray &options)
{
    return ::mount(source.constData(), QFile::encodeName(target).constData(), type, flags,
                   options.constData()) == 0;
}

QMap<QString, QString> broken(const QString &why)
{
    return {{QStringLiteral("broken"), why}};
}

} // namespace

void makeEmptyDirectory(const QString &path)
{
    removeAll(path);
    require(QDir().mkpath(path), "cannot make", path);
}

void removeAll(const QString &path)
{
    const QFileInfo info(path);
    if (info.isDir() && !info.isSymLink())
        require(QDir(path).removeRecursively(), "cannot remove", path);
    else if (info.exists() || info.isSymLink())
        require(QFile::remove(path), "cannot remove", path);
}

void write(const QString &path, const QByteArray &content)
{
    QFile file(path);
    require(file.open(QIODevice::WriteOnly) && file.write(content) == content.size(),
            "cannot write", path);
}

QByteArray read(const QString &path)
{
    QFile file(path);
    require(file.open(QIODevice::ReadOnly), "cannot read", path);
    return file.readAll();
}

int mode(const QString &path)
{
    return static_cast<int>(statusOf(path).st_mode & 07777);
}

quint64 inode(const QString &path)
{
    return statusOf(path).st_ino;
}

QStringList filesBelow(const QString &directory)
{
    QStringList files;
    QDirIterator iterator(directory, QDir::Files | QDir::Hidden | QDir::System,
                          QDirIterator::Subdirectories);
    while (iterator.hasNext())
        files.append(iterator.next());
    files.sort();
    return files;
}

QMap<QString, QString> desktopEntry(const QString &path)
{
    const QByteArray bytes = read(path);
    const QString text = QString::fromUtf8(bytes.constData(), bytes.size());
    if (text.toUtf8() != bytes)
        return broken(QStringLiteral("not UTF-8"));
    if (!text.endsWith(QLatin1Char('\n')))
        return broken(QStringLiteral("last line without an end"));
    // Whatever any reader may take for the end of a line ends one here.
    QStringList lines = text.split(
        QRegularExpression(QStringLiteral("[\\n\\r\\f\\v\\x{0}\\x{85}\\x{2028}\\x{2029}]")));
    lines.removeLast();
    if (lines.isEmpty() || lines.takeFirst() != QLatin1String("[Desktop Entry]"))
        return broken(QStringLiteral("first line"));

    const QRegularExpression keyAndValue(QStringLiteral("^([A-Za-z0-9-]+)=(.*)$"),
                                         QRegularExpression::DotMatchesEverythingOption);
    QMap<QString, QString> values;
    for (const QString &line : qAsConst(lines)) {
        const QRegularExpressionMatch match = keyAndValue.match(line);
        if (!match.hasMatch())
            return broken(line);
        if (!values.isEmpty() && values.lastKey() >= match.captured(1))
            return broken(QStringLiteral("order of keys: ") + line);
        values.insert(match.captured(1), match.captured(2));
    }
    return values;
}

Mount Mount::memory(const QString &directory, const QByteArray &options)
{
    require(mount("tmpfs", directory, "tmpfs", 0, options), "cannot mount", directory);
    return Mount(directory);
}

Mount Mount::readOnly(const QString &directory)
{
    const QByteArray source = QFile::encodeName(directory);
    require(mount(source, directory, nullptr, MS_BIND, QByteArray()) &&
                mount(source, directory, nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY, QByteArray()),
            "cannot mount", directory);
    return Mount(directory);
}

Mount Mount::file(const QString &source, const QString &target)
{
    if (!QFile::exists(target))
        write(target, QByteArray());
    require(mount(QFile::encodeName(source), target, nullptr, MS_BIND, QByteArray()),
            "cannot mount", target);
    return Mount(target);
}

Mount::Mount(const QString &target)
    : m_target(QFile::encodeName(target))
{
}

Mount::Mount(Mount &&other) noexcept
    : m_target(std::exchange(other.m_target, QByteArray()))
{
}

Mount::~Mount()
{
    if (!m_target.isEmpty())
        ::umount2(m_target.constData(), MNT_DETACH);
}

void fillDisk(const QString &directory)
{
    QFile file(QDir(directory).filePath(QStringLiteral("filler")));
    require(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered), "cannot write", directory);
    const QByteArray block(4096, 'x');
    while (file.write(block) == block.size()) {
    }
    while (file.write("x") == 1) {
    }
    require(file.error() == QFile::ResourceError || errno == ENOSPC, "cannot fill", directory);
}

} // namespace HostFiles
