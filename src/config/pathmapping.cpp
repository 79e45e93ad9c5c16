#include "config/pathmapping.h"

#include "config/logging.h"

#include <QRegularExpression>

namespace PathMapping {

namespace {

QString withoutFileScheme(const QString &path)
{
    if (!path.startsWith(QLatin1String("file:/")))
        return path;
    return QUrl(path, QUrl::TolerantMode).toLocalFile();
}

QString withoutFirst(const QString &pattern, QString path)
{
    const QRegularExpressionMatch match = QRegularExpression(pattern).match(path);
    if (match.hasMatch())
        path.remove(match.capturedStart(), match.capturedLength());
    return path;
}

QString homeToAndroid(const QString &path)
{
    QString remainder = withoutFirst(QStringLiteral("^\\/home\\/[^\\/]*"), path);
    qCDebug(configLog) << "Removed home:" << remainder;

    // Every occurrence is replaced, also those deeper in the path: the runtime expects it so.
    const QString sharedStorage = QStringLiteral("/android_storage");
    if (remainder.startsWith(sharedStorage))
        return remainder.replace(sharedStorage, QStringLiteral("/storage/emulated/0"));

    // The volume name is the one under which the runtime image mounts the home directory.
    return QStringLiteral("/storage/8ff87de4-0b37-4799-b09a-82773e869e07") + remainder;
}

QString mediaToAndroid(const QString &path)
{
    return QStringLiteral("/storage") +
           withoutFirst(QStringLiteral("^\\/run\\/media\\/[^\\/]*"), path);
}

} // namespace

QString toAndroidPath(const QString &hostPath)
{
    qCDebug(configLog) << "Orig path: " << hostPath;

    QString path = withoutFileScheme(hostPath);
    if (path.startsWith(QLatin1String("/home")))
        path = homeToAndroid(path);
    else if (path.startsWith(QLatin1String("/run/media/")))
        path = mediaToAndroid(path);

    qCDebug(configLog) << "Final path: " << path;
    return path;
}

QUrl toAndroidUrl(const QString &hostPath)
{
    const QString path = toAndroidPath(hostPath);
    if (path.startsWith(QLatin1Char('/')))
        return QUrl::fromLocalFile(path);
    return QUrl(path, QUrl::TolerantMode);
}

} // namespace PathMapping
