#include "tools/ctl/blacklistfile.h"

#include "tools/ctl/regularfile.h"

#include <QList>

namespace BlacklistFile {

namespace {

QString packageIn(const QByteArray &line)
{
    return QString::fromUtf8(line).trimmed();
}

} // namespace

QString path()
{
    return QStringLiteral("/etc/bramd/app-blacklist");
}

QString secondPath()
{
    return secondPathIn(RegularFile::read(QStringLiteral("/etc/default/bramd")).content);
}

QString secondPathIn(const QByteArray &environmentFile)
{
    const QByteArray name = QByteArrayLiteral("BRAMD_PACKAGE_BLACKLIST_PATH=");
    QString path; // of the last assignment, as systemd.exec(5) has it
    const QList<QByteArray> lines = environmentFile.split('\n');
    for (const QByteArray &line : lines) {
        if (!line.trimmed().startsWith(name))
            continue;
        path = QString::fromUtf8(line.trimmed().mid(name.size()));
        const bool isQuoted =
            path.size() > 1 && path.front() == path.back() &&
            (path.front() == QLatin1Char('"') || path.front() == QLatin1Char('\''));
        if (isQuoted)
            path = path.mid(1, path.size() - 2);
    }
    return path;
}

QStringList packages(const QByteArray &content)
{
    QStringList found;
    const QList<QByteArray> lines = content.split('\n');
    for (const QByteArray &line : lines) {
        const QString package = packageIn(line);
        if (!package.isEmpty() && !found.contains(package))
            found.append(package);
    }
    return found;
}

QByteArray with(const QByteArray &content, const QString &packageName)
{
    if (packages(content).contains(packageName))
        return content;
    const bool needsLineEnd = !content.isEmpty() && !content.endsWith('\n');
    return content + (needsLineEnd ? "\n" : "") + packageName.toUtf8() + '\n';
}

QByteArray without(const QByteArray &content, const QString &packageName)
{
    QByteArray kept;
    int begin = 0;
    while (begin < content.size()) {
        const int lineEnd = content.indexOf('\n', begin);
        const int end = lineEnd < 0 ? content.size() : lineEnd + 1;
        const QByteArray line = content.mid(begin, end - begin);
        if (packageIn(line) != packageName)
            kept += line;
        begin = end;
    }
    return kept;
}

} // namespace BlacklistFile
