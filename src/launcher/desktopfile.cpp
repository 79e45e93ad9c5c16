#include "launcher/desktopfile.h"

#include "launcher/logging.h"
#include "launcher/publicfile.h"

#include <QFile>
#include <QTextStream>

namespace {

QString groupHeader()
{
    return QStringLiteral("[Desktop Entry]");
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
        qCWarning(launcherLog) << "File" << m_path << "does not have key:" << key;
        return QString();
    }
    return existing.value();
}

void DesktopFile::read()
{
    QFile file(m_path);
    if (file.open(QIODevice::ReadOnly))
        m_entries = parse(file.readAll());
}

QMap<QString, QString> DesktopFile::parse(const QByteArray &content)
{
    QMap<QString, QString> entries;
    QTextStream stream(content);
    stream.setCodec("UTF-8");
    bool inGroup = false;
    QString line;
    while (stream.readLineInto(&line)) {
        if (!inGroup) {
            inGroup = line == groupHeader();
            continue;
        }
        const int separator = line.indexOf(QLatin1Char('='));
        if (separator >= 0)
            entries.insert(line.left(separator), line.mid(separator + 1));
    }
    return entries;
}

QString DesktopFile::escaped(QString text)
{
    return text.replace(QLatin1Char('\\'), QLatin1String("\\\\"));
}

QString DesktopFile::unescaped(QString value)
{
    return value.replace(QLatin1String("\\\\"), QLatin1String("\\"));
}

void DesktopFile::write() const
{
    qCDebug(launcherLog) << "Updating:" << m_path;

    QByteArray content;
    QTextStream stream(&content, QIODevice::WriteOnly);
    stream.setCodec("UTF-8");
    stream << groupHeader() << '\n';
    for (auto entry = m_entries.constBegin(); entry != m_entries.constEnd(); ++entry)
        stream << QStringLiteral("%1=%2").arg(entry.key(), entry.value()) << '\n';
    stream.flush();

    switch (PublicFile::write(m_path, content)) {
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
