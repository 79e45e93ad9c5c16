#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>

/// Files at fixed paths of the host, for tests that run in a private root (PRIVATE_ROOT of
/// bramd_add_test). A helper that cannot do its work ends the test program with a message: the
/// surroundings are broken then.
namespace HostFiles {

/// Makes the directory, with parents, and empties it.
void makeEmptyDirectory(const QString &path);

/// Removes a file or a whole directory, if there is one.
void removeAll(const QString &path);

void write(const QString &path, const QByteArray &content);
QByteArray read(const QString &path);

/// The permission bits, e.g. 0644.
int mode(const QString &path);

/// A number that changes when the file is replaced by another one.
quint64 inode(const QString &path);

/// Paths of all files in the directory and below, in the order of their names.
QStringList filesBelow(const QString &directory);

/// A desktop file's keys and values, read by rules of its own: the text must be the line
/// "[Desktop Entry]" and then one "key=value" line per key, in ascending order of the keys, each
/// key once and made of letters, digits and "-", each line ended by a line feed, in valid UTF-8.
/// One key "broken" tells what is not so.
QMap<QString, QString> desktopEntry(const QString &path);

/// A mount that goes when the object goes.
class Mount
{
public:
    /// A new file system in memory over a directory; `options` as for mount(8), e.g. "size=4k".
    static Mount memory(const QString &directory, const QByteArray &options);

    /// The directory itself, but read-only.
    static Mount readOnly(const QString &directory);

    /// A file over another file, which is made if it does not exist.
    static Mount file(const QString &source, const QString &target);

    Mount(Mount &&other) noexcept;
    ~Mount();

private:
    explicit Mount(const QString &target);

    QByteArray m_target;
};

/// Fills the file system that the directory is on to the last byte.
void fillDisk(const QString &directory);

} // namespace HostFiles
