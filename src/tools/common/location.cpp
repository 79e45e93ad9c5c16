#include "tools/common/location.h"

#include <QDir>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QRegularExpression>
#include <QStringList>
#include <QUrl>

namespace {

/// RFC 3986, section 3.1, but for schemes of one letter, which nobody has.
bool hasScheme(const QString &argument)
{
    static const QRegularExpression scheme(QStringLiteral("^[A-Za-z][A-Za-z0-9+.-]+:"));
    return scheme.match(argument).hasMatch();
}

/// Nothing above the root.
QString parentOf(const QString &path)
{
    const QFileInfo directory(path);
    const QString real =
        directory.isSymLink() && directory.exists() ? directory.canonicalFilePath() : path;
    return real.left(real.lastIndexOf(QLatin1Char('/')));
}

/// The same file, named without "." and "..". Behind a link, ".." is where the link leads to, as
/// the kernel has it, and not back where the link is.
QString withoutDots(const QString &path)
{
    QString folded;
    const QStringList names = path.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    for (const QString &name : names) {
        if (name == QLatin1String(".."))
            folded = parentOf(folded);
        else if (name != QLatin1String("."))
            folded += QLatin1Char('/') + name;
    }
    return folded.isEmpty() ? QStringLiteral("/") : folded;
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
        return {withoutDots(QDir(directory).absoluteFilePath(argument)), true};
    QUrl url(argument, QUrl::TolerantMode);
    if (!isOfThisHost(url))
        return {argument, false};
    url.setHost(QString());
    return {withoutDots(QDir(directory).absoluteFilePath(url.toLocalFile())), true};
}

QString mimeTypeOf(const Location &location)
{
    if (!location.isFile)
        return QString();
    return QMimeDatabase().mimeTypeForFile(location.address).name();
}
