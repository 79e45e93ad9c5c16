#include "launcher/desktopfile.h"

#include "launcher/logging.h"
#include "launcher/publicfile.h"

#include <QFile>
#include <QStringBuilder>

#include <optional>

namespace {

constexpr char ByteOrderMark[] = "\xEF\xBB\xBF";

const QLatin1String GroupHeader("[Desktop Entry]");

void warnOfMissingKey(const QString &path, const QString &key)
{
    qCWarning(launcherLog) << "File" << path << "does not have key:" << key;
}

/// The last line of the group that begins with the key; nothing if there is none. What the text is
/// decoded to is the same whether that is done before or after it is split into lines.
std::optional<QString> findValue(const QByteArray &content, const char *key)
{
    const QByteArray header(GroupHeader.data(), GroupHeader.size());
    const QByteArray start = QByteArray(key) + '=';
    QByteArray found;
    bool inGroup = false;
    int end = 0;
    for (int begin = content.startsWith(ByteOrderMark) ? int(sizeof ByteOrderMark) - 1 : 0;
         begin < content.size(); begin = end + 1) {
        end = content.indexOf('\n', begin);
        if (end < 0)
            end = content.size();
        QByteArray line = QByteArray::fromRawData(content.constData() + begin, end - begin);
        if (line.endsWith('\r'))
            line.chop(1);
        if (!inGroup)
            inGroup = line == header;
        else if (line.startsWith(start))
            found = line;
    }
    if (found.isNull())
        return std::nullopt;
    return QString::fromUtf8(found.constData(), found.size()).mid(start.size());
}

} // namespace

DesktopFile::DesktopFile(const QString &path)
    : m_path(path)
{
    read();
}

DesktopFile::~DesktopFile()
{
    if (m_dirty)
        write();
}

void DesktopFile::setValue(const QString &key, const QString &value)
{
    const auto existing = m_entries.constFind(key);
    if (existing != m_entries.constEnd() && existing.value() == value)
        return;
    m_entries.insert(key, value);
    m_dirty = true;
}

void DesktopFile::remove(const QString &key)
{
    if (m_entries.remove(key) > 0)
        m_dirty = true;
}

QString DesktopFile::value(const QString &key) const
{
    const auto existing = m_entries.constFind(key);
    if (existing == m_entries.constEnd()) {
        warnOfMissingKey(m_path, key);
        return QString();
    }
    return existing.value();
}

QString DesktopFile::readValue(const QString &path, const char *key)
{
    const QByteArray content = PublicFile::read(path).value_or(QByteArray());
    const std::optional<QString> value = findValue(content, key);
    if (!value)
        warnOfMissingKey(path, QLatin1String(key));
    return value.value_or(QString());
}

void DesktopFile::read()
{
    if (const std::optional<QByteArray> content = PublicFile::read(m_path))
        m_entries = parse(*content);
    else if (QFile::exists(m_path))
        qCWarning(launcherLog) << "Could not read:" << m_path;
}

QMap<QString, QString> DesktopFile::parse(const QByteArray &content)
{
    QMap<QString, QString> entries;
    // The size is given because some text could contain NUL, where it would be taken to end.
    const QString text = QString::fromUtf8(content.constData(), content.size());
    bool inGroup = false;
    int end = 0;
    for (int begin = 0; begin < text.size(); begin = end + 1) {
        end = text.indexOf(QLatin1Char('\n'), begin);
        if (end < 0)
            end = text.size();
        QStringRef line = text.midRef(begin, end - begin);
        if (line.endsWith(QLatin1Char('\r')))
            line.chop(1);
        if (!inGroup) {
            inGroup = line == GroupHeader;
            continue;
        }
        const int separator = line.indexOf(QLatin1Char('='));
        if (separator >= 0)
            entries.insert(line.left(separator).toString(), line.mid(separator + 1).toString());
    }
    return entries;
}

QString DesktopFile::escaped(QString text)
{
    if (!text.contains(QLatin1Char('\\'))) // replace() prepares itself at length
        return text;
    return text.replace(QLatin1Char('\\'), QLatin1String("\\\\"));
}

QString DesktopFile::unescaped(QString value)
{
    return value.replace(QLatin1String("\\\\"), QLatin1String("\\"));
}

void DesktopFile::write() const
{
    qCDebug(launcherLog) << "Updating:" << m_path;

    QString text = GroupHeader + QLatin1Char('\n');
    for (auto entry = m_entries.constBegin(); entry != m_entries.constEnd(); ++entry)
        text += entry.key() % QLatin1Char('=') % entry.value() % QLatin1Char('\n');

    switch (PublicFile::write(m_path, text.toUtf8())) {
    case PublicFile::WriteResult::Written:
        break;
    case PublicFile::WriteResult::CannotOpen:
        qCWarning(launcherLog) << "Could not open" << m_path << "for writing";
        break;
    case PublicFile::WriteResult::CannotWrite:
        qCWarning(launcherLog) << "Could not write desktop file" << m_path;
        break;
    }
}
