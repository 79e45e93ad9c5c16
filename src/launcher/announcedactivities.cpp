#include "launcher/announcedactivities.h"

#include "launcher/apklauncher.h"
#include "launcher/launcherpaths.h"

#include <algorithm>

namespace {

/// How much dearer a character is than a byte of an icon. Icons lie on the disk; texts are read
/// back from all entries whenever the daemon looks for one, with everybody waiting for it.
constexpr qint64 TextWeight = 16;

/// About what the files of an activity take.
qint64 bytesOf(const ApkLauncher &launcher)
{
    qint64 characters = launcher.label.size() + launcher.caption.size() +
                        launcher.packageVersion.size() + launcher.packageName.size() +
                        launcher.className.size();
    for (const QStringList &types : {launcher.mimeTypes, launcher.shareMimeTypes}) {
        for (const QString &type : types)
            characters += type.size() + 1;
    }
    return launcher.icon.size() + characters * static_cast<qint64>(sizeof(QChar)) * TextWeight;
}

QString ownedName(const QString &packageName, const QString &className)
{
    return LauncherPaths::escapedComponent(packageName, className);
}

} // namespace

AnnouncedActivities::Result AnnouncedActivities::add(const ApkLauncher &launcher)
{
    const QString fileName = ownedName(launcher.packageName, launcher.className);
    const auto owner = m_owners.constFind(fileName);
    if (owner != m_owners.constEnd() && owner.value() != launcher.packageName)
        return Result::BelongsToOther;

    const Name name(launcher.packageName, launcher.className);
    const Activity known = m_activities.value(name);
    const qint64 bytes = std::max(known.bytes, bytesOf(launcher));
    const bool isNew = !m_activities.contains(name);
    if ((isNew && m_activities.size() == MaxActivities) || m_bytes - known.bytes + bytes > MaxBytes)
        return Result::Full;

    m_activities.insert(name, {LauncherPaths::desktopFile(launcher), bytes});
    m_owners.insert(fileName, launcher.packageName);
    m_bytes += bytes - known.bytes;
    return Result::Added;
}

void AnnouncedActivities::drop(const ApkLauncher &launcher)
{
    const auto activity = m_activities.find(Name(launcher.packageName, launcher.className));
    if (activity != m_activities.end())
        activity->desktopFile.clear();
}

void AnnouncedActivities::dropAll()
{
    for (Activity &activity : m_activities)
        activity.desktopFile.clear();
}

void AnnouncedActivities::removePackage(const QString &packageName)
{
    removeIf(
        [&packageName](const Name &name, const Activity &) { return name.first == packageName; });
}

QSet<QString> AnnouncedActivities::desktopFiles() const
{
    QSet<QString> paths;
    for (const Activity &activity : m_activities) {
        if (!activity.desktopFile.isEmpty())
            paths.insert(activity.desktopFile);
    }
    return paths;
}

void AnnouncedActivities::purge()
{
    removeIf([](const Name &, const Activity &activity) { return activity.desktopFile.isEmpty(); });
}

template <typename Predicate>
void AnnouncedActivities::removeIf(Predicate matches)
{
    m_owners.clear();
    for (auto activity = m_activities.begin(); activity != m_activities.end();) {
        const Name &name = activity.key();
        if (matches(name, activity.value())) {
            m_bytes -= activity->bytes;
            activity = m_activities.erase(activity);
        } else {
            m_owners.insert(ownedName(name.first, name.second), name.first);
            ++activity;
        }
    }
}
