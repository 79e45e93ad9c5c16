#include "tools/ctl/installwatch.h"

#include "launcher/launcherpaths.h"
#include "tools/ctl/appentry.h"
#include "tools/ctl/regularfile.h"

InstallWatch::InstallWatch(const QString &packageName)
    : m_packageName(packageName)
    , m_before(files())
{
}

bool InstallWatch::hasChanged() const
{
    const QMap<QString, QByteArray> now = files();
    return !now.isEmpty() && now != m_before;
}

QMap<QString, QByteArray> InstallWatch::files() const
{
    QMap<QString, QByteArray> contents;
    const QVector<AppEntry> entries = AppEntries::readAll();
    for (const AppEntry &entry : entries) {
        if (entry.packageName != m_packageName)
            continue;
        for (const QString &path : {entry.path, LauncherPaths::icon(entry.path),
                                    LauncherPaths::settingsEntry(entry.path)})
            contents.insert(path, RegularFile::read(path).content);
    }
    return contents;
}
