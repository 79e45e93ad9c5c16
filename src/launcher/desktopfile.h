#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

/// One desktop file in memory, for reading and changing. It is read on construction; a missing
/// or unreadable file is empty. What was changed is written on destruction.
///
/// Keys and values are kept raw: escaping is up to who sets them, and keys that nobody here knows
/// survive. Everything after the first "[Desktop Entry]" line counts as that one group. Keys are
/// written in ascending order.
class DesktopFile
{
public:
    explicit DesktopFile(const QString &path);
    ~DesktopFile();

    DesktopFile(const DesktopFile &) = delete;
    DesktopFile &operator=(const DesktopFile &) = delete;

    /// `value` must be a single line, and escaped; see singleLine() and escaped().
    void setValue(const QString &key, const QString &value);

    /// A missing key is no error.
    void remove(const QString &key);

    /// An empty string, with a warning, when there is no such key.
    QString value(const QString &key) const;

    /// The value that a file has for a key, as above, without reading the rest of it. The key must
    /// be plain ASCII.
    static QString readValue(const QString &path, const char *key);

    /// The keys and values of a desktop file's text, by the rules above.
    static QMap<QString, QString> parse(const QByteArray &content);

    /// A text as a value spells it, and back: a backslash is two. A single one would begin an
    /// escape sequence, and a value with one that does not exist has no meaning to desktops.
    static QString escaped(QString text);
    static QString unescaped(QString value);

private:
    void read();
    void write() const;

    QString m_path;
    QMap<QString, QString> m_entries;
    bool m_dirty = false;
};
