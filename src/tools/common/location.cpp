#include "tools/common/location.h"

#include <QDir>
#include <QMimeDatabase>
#include <QRegularExpression>
#include <QUrl>

namespace {

/// RFC 3986, section 3.1, but for schemes of one letter, which nobody has.
bool hasScheme(const QString &argument)
{
    static const QRegularExpression scheme(QStringLiteral("^[A-Za-z][A-Za-z0-9+.-]+:"));
    return scheme.match(argument).hasMatch();
}

bool isOfThisHost(const QUrl &url)
{
    return url.isLocalFile() && (url.host().isEmpty() || url.host() == QLatin1String("localhost"));
}

} // namespace

bool operator==(const Location &left, const Location &right)
{
    return left.address == right.address && left.isFile == right.isFile;
}

Location locationOf(const QString &argument, const QString &directory)
{
    if (!hasScheme(argument))
        return {QDir::cleanPath(QDir(directory).absoluteFilePath(argument)), true};
    QUrl url(argument, QUrl::TolerantMode);
    if (!isOfThisHost(url))
        return {argument, false};
    url.setHost(QString());
    return {QDir::cleanPath(url.toLocalFile()), true};
}

QString mimeTypeOf(const Location &location)
{
    if (!location.isFile)
        return QString();
    return QMimeDatabase().mimeTypeForFile(location.address).name();
}
