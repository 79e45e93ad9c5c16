#include "tools/ctl/installwatch.h"

#include "launcher/launcherpaths.h"
#include "tools/ctl/appentry.h"
#include "tools/ctl/regularfile.h"

#include <algorithm>

InstallWatch::InstallWatch(const QString &packageName, const QString &versionName)
    : m_packageName(packageName)
    , m_versionName(versionName)
    , m_before(files())
{
}

bool InstallWatch::hadThisVersion() const
{
    return haveThisVersion(m_before);
}

bool InstallWatch::hasChanged() const
{
    const Files now = files();
    if (now.isEmpty() || now == m_before)
        return false;
    return m_before.isEmpty() || m_versionName.isEmpty() || haveThisVersion(now);
}

InstallWatch::Files InstallWatch::files() const
{
    Files contents;
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

bool InstallWatch::haveThisVersion(const Files &files) const
{
    return !m_versionName.isEmpty() &&
           std::any_of(files.cbegin(), files.cend(), [this](const QByteArray &content) {
               return AppEntries::versionOf(content) == m_versionName;
           });
}
