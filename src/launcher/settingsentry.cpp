#include "launcher/settingsentry.h"

#include "config/runtimetext.h"
#include "launcher/launcherpaths.h"
#include "launcher/logging.h"
#include "launcher/publicfile.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace SettingsEntry {

QByteArray content(const QString &desktopFile, const QString &packageName,
                   const QString &packageVersion)
{
    const QString configurationPage = QStringLiteral(
        "/usr/share/corvo-settings/pages/apk-configuration/apkConfigurationPage.qml");
    const QJsonObject properties{
        {QStringLiteral("packageName"), packageName},
        {QStringLiteral("packageVersion"), RuntimeText::wellFormed(packageVersion)},
    };
    const QJsonObject params{
        {QStringLiteral("source"), configurationPage},
        {QStringLiteral("properties"), properties},
    };
    const QJsonObject entry{
        {QStringLiteral("path"),
         QLatin1String("applications/") + QFileInfo(desktopFile).fileName()},
        {QStringLiteral("type"), QStringLiteral("page")},
        {QStringLiteral("params"), params},
    };
    return QJsonDocument(QJsonObject{{QStringLiteral("entries"), QJsonArray{entry}}}).toJson();
}

void write(const QString &desktopFile, const QString &packageName, const QString &packageVersion)
{
    const QString path = LauncherPaths::settingsEntry(desktopFile);
    if (!PublicFile::writeIfChanged(path, content(desktopFile, packageName, packageVersion)))
        qCWarning(launcherLog) << "Unable to open json file" << path << "for writing";
}

} // namespace SettingsEntry
