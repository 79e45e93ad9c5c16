#include "launcher/launcherpaths.h"

#include "launcher/apklauncher.h"

#include <QDir>
#include <QFileInfo>

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

bool isDigit(QChar character)
{
    return character >= QLatin1Char('0') && character <= QLatin1Char('9');
}

/// Without the "-" and digits at its end, if that is how it ends.
QString withoutVersion(const QString &name)
{
    int end = name.size();
    while (end > 0 && isDigit(name.at(end - 1)))
        --end;
    const bool hasVersion = end > 0 && end < name.size() && name.at(end - 1) == QLatin1Char('-');
    return hasVersion ? name.left(end - 1) : name;
}

QString escaped(const QString &name)
{
    QString escapedName(name.size() + name.count(QLatin1Char('_')), Qt::Uninitialized);
    QChar *end = escapedName.data();
    for (const QChar character : name) {
        *end++ = character == QLatin1Char('.') ? QLatin1Char('_') : character;
        if (character == QLatin1Char('_'))
            *end++ = character;
    }
    return escapedName;
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

bool isEntryName(const QString &name)
{
    const auto matches = [&name](const QString &prefix) {
        return name.size() >= prefix.size() + desktopSuffix().size() && name.startsWith(prefix);
    };
    return name.endsWith(desktopSuffix()) &&
           (matches(launcherPrefix()) || matches(handlerPrefix()));
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

QString entryOfFile(const QString &name, QLatin1String suffix)
{
    return name.endsWith(suffix) ? name.chopped(suffix.size()) + desktopSuffix() : QString();
}

QString sharingFile()
{
    return iconsDir() + QLatin1String("sharing.json");
}

QString partnerSpaceMarker(const QString &packageName)
{
    return partnerSpaceDir() + withoutVersion(packageName) + QLatin1String(".apk");
}

bool isApkPath(const QString &path)
{
    return path.endsWith(QLatin1String(".apk"), Qt::CaseInsensitive) ||
           (QFileInfo(path).isDir() && QDir(path).exists(QStringLiteral("base.apk")));
}

} // namespace LauncherPaths
