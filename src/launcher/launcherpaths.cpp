#include "launcher/launcherpaths.h"

#include "launcher/apklauncher.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

namespace LauncherPaths {

namespace {

QString launcherPrefix()
{
    return QStringLiteral("bramd_launcher_");
}

QString handlerPrefix()
{
    return QStringLiteral("bramd_handler_");
}

QString desktopSuffix()
{
    return QStringLiteral(".desktop");
}

QString entryName(const QString &prefix, const QString &component)
{
    return QStringLiteral("%1%2%3").arg(prefix, component, desktopSuffix());
}

QString escaped(QString name)
{
    return name.replace(QLatin1Char('_'), QLatin1String("__"))
        .replace(QLatin1Char('.'), QLatin1Char('_'));
}

} // namespace

QString applicationsDir()
{
    return QStringLiteral("/usr/share/applications/");
}

QString iconsDir()
{
    return QStringLiteral("/var/lib/bramd/");
}

QString settingsEntriesDir()
{
    return QStringLiteral("/usr/share/corvo-settings/entries/");
}

QString partnerSpaceDir()
{
    return QStringLiteral("/usr/share/bramd/partnerspace/");
}

QString escapedComponent(const QString &packageName, const QString &className)
{
    return escaped(packageName) + QLatin1Char('-') + escaped(className);
}

QString desktopFile(const ApkLauncher &launcher)
{
    return applicationsDir() +
           entryName(launcher.isHandler() ? handlerPrefix() : launcherPrefix(),
                     escapedComponent(launcher.packageName, launcher.className));
}

QString launcherFilter()
{
    return entryName(launcherPrefix(), QStringLiteral("*"));
}

QString handlerFilter()
{
    return entryName(handlerPrefix(), QStringLiteral("*"));
}

QString icon(const QString &desktopFile)
{
    return QString(desktopFile)
        .replace(applicationsDir(), iconsDir())
        .replace(desktopSuffix(), QLatin1String(".png"));
}

QString settingsEntry(const QString &desktopFile)
{
    return settingsEntriesDir() + QFileInfo(desktopFile).completeBaseName() +
           QLatin1String(".json");
}

QString partnerSpaceMarker(const QString &packageName)
{
    const QRegularExpression versionSuffix(QStringLiteral("-\\d+\\.apk$"));
    return partnerSpaceDir() +
           QStringLiteral("%1.apk").arg(packageName).replace(versionSuffix, QStringLiteral(".apk"));
}

bool isApkPath(const QString &path)
{
    return path.endsWith(QLatin1String(".apk"), Qt::CaseInsensitive) ||
           (QFileInfo(path).isDir() && QDir(path).exists(QStringLiteral("base.apk")));
}

} // namespace LauncherPaths
