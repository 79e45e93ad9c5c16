#include "tools/ctl/appentry.h"

#include "launcher/desktopfile.h"
#include "launcher/launcherpaths.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>

#include <algorithm>

namespace AppEntries {

namespace {

/// The command line ends in "PKG.apk PKG/CLASS".
QString classInCommand(const QString &command, const QString &packageName)
{
    const QString beforeClass = QStringLiteral(" %1.apk %1/").arg(packageName);
    const int position = command.indexOf(beforeClass);
    return position < 0 ? QString() : command.mid(position + beforeClass.size());
}

void addTo(App &app, const AppEntry &entry)
{
    if (entry.isHandler) {
        for (const QString &type : entry.mimeTypes) {
            if (!app.opens.contains(type))
                app.opens.append(type);
        }
    } else if (!entry.className.isEmpty()) {
        app.launchers.append(entry.className);
    }
    // A name in the grid counts more than that of a handler.
    if (app.name.isEmpty() || (app.isHidden && !entry.isHidden))
        app.name = entry.name;
    app.isHidden = app.isHidden && entry.isHidden;
}

} // namespace

AppEntry parse(const QString &path, const QByteArray &content)
{
    const QMap<QString, QString> keys = DesktopFile::parse(content);
    AppEntry entry;
    entry.path = path;
    entry.packageName = keys.value(QStringLiteral("X-bramd-packageName"));
    entry.className = classInCommand(keys.value(QStringLiteral("Exec")), entry.packageName);
    entry.name = DesktopFile::unescaped(keys.value(QStringLiteral("Name")));
    entry.iconPath = keys.value(QStringLiteral("Icon"));
    entry.mimeTypes = DesktopFile::unescaped(keys.value(QStringLiteral("MimeType")))
                          .split(QLatin1Char(';'), Qt::SkipEmptyParts);
    entry.isHandler = QDir::match(LauncherPaths::handlerFilter(), QFileInfo(path).fileName());
    entry.isHidden = keys.value(QStringLiteral("NoDisplay")) == QLatin1String("true");
    return entry;
}

QVector<AppEntry> readAll()
{
    const QDir directory(LauncherPaths::applicationsDir());
    const QStringList names =
        directory.entryList({LauncherPaths::launcherFilter(), LauncherPaths::handlerFilter()},
                            QDir::Files | QDir::System | QDir::CaseSensitive, QDir::Name);
    QVector<AppEntry> entries;
    for (const QString &name : names) {
        const QString path = directory.filePath(name);
        const RegularFile file = RegularFile::read(path);
        entries.append(parse(path, file.content));
        entries.last().state = file.state;
    }
    return entries;
}

QVector<App> appsOf(const QVector<AppEntry> &entries)
{
    QMap<QString, App> apps;
    for (const AppEntry &entry : entries) {
        if (entry.packageName.isEmpty())
            continue;
        auto app = apps.find(entry.packageName);
        if (app == apps.end()) {
            app = apps.insert(entry.packageName, App());
            app->packageName = entry.packageName;
            app->isHidden = true;
        }
        addTo(*app, entry);
    }
    return QVector<App>(apps.cbegin(), apps.cend());
}

QVector<App> installedApps()
{
    const QVector<AppEntry> entries = readAll();
    QVector<App> apps = appsOf(entries);
    for (App &app : apps) {
        for (const AppEntry &entry : entries) {
            if (entry.packageName == app.packageName && app.version.isEmpty()) {
                app.version =
                    versionOf(RegularFile::read(LauncherPaths::settingsEntry(entry.path)).content);
            }
        }
    }
    return apps;
}

bool isInstalled(const QString &packageName)
{
    const QVector<AppEntry> entries = readAll();
    return !packageName.isEmpty() &&
           std::any_of(entries.cbegin(), entries.cend(), [&packageName](const AppEntry &entry) {
               return entry.packageName == packageName;
           });
}

QJsonObject inJson(const App &app)
{
    return {
        {QStringLiteral("package"), app.packageName},
        {QStringLiteral("name"), app.name},
        {QStringLiteral("version"), app.version},
        {QStringLiteral("hidden"), app.isHidden},
        {QStringLiteral("launchers"), QJsonArray::fromStringList(app.launchers)},
        {QStringLiteral("opens"), QJsonArray::fromStringList(app.opens)},
    };
}

QString versionOf(const QByteArray &settingsEntry)
{
    const QJsonObject root = QJsonDocument::fromJson(settingsEntry).object();
    const QJsonArray entries = root.value(QLatin1String("entries")).toArray();
    return entries.at(0)
        .toObject()
        .value(QLatin1String("params"))
        .toObject()
        .value(QLatin1String("properties"))
        .toObject()
        .value(QLatin1String("packageVersion"))
        .toString();
}

} // namespace AppEntries
