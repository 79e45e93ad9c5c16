#include "launcher/settingsentry.h"

#include "config/runtimetext.h"
#include "launcher/jsontext.h"
#include "launcher/launcherpaths.h"
#include "launcher/logging.h"
#include "launcher/publicfile.h"

#include <QFileInfo>
#include <QStringBuilder>

namespace SettingsEntry {

QByteArray content(const QString &desktopFile, const QString &packageName,
                   const QString &packageVersion)
{
    const QString path = QLatin1String("applications/") + QFileInfo(desktopFile).fileName();
    return "{\n"
           "    \"entries\": [\n"
           "        {\n"
           "            \"params\": {\n"
           "                \"properties\": {\n"
           "                    \"packageName\": " %
           JsonText::string(packageName) %
           ",\n"
           "                    \"packageVersion\": " %
           JsonText::string(RuntimeText::wellFormed(packageVersion)) %
           "\n"
           "                },\n"
           "                \"source\": \"/usr/share/corvo-settings/pages/apk-configuration/"
           "apkConfigurationPage.qml\"\n"
           "            },\n"
           "            \"path\": " %
           JsonText::string(path) %
           ",\n"
           "            \"type\": \"page\"\n"
           "        }\n"
           "    ]\n"
           "}\n";
}

void write(const QString &desktopFile, const QString &packageName, const QString &packageVersion)
{
    const QString path = LauncherPaths::settingsEntry(desktopFile);
    if (!PublicFile::writeIfChanged(path, content(desktopFile, packageName, packageVersion)))
        qCWarning(launcherLog) << "Unable to open json file" << path << "for writing";
}

} // namespace SettingsEntry
