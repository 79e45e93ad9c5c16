#include "launcher/desktopmanager.h"

#include "config/daemonconfig.h"
#include "config/runtimetext.h"
#include "launcher/desktopdatabase.h"
#include "launcher/desktopfile.h"
#include "launcher/installedentries.h"
#include "launcher/launcherentry.h"
#include "launcher/launcherpaths.h"
#include "launcher/leftovers.h"
#include "launcher/logging.h"
#include "launcher/publicfile.h"
#include "launcher/settingsentry.h"

#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <cerrno>
#include <optional>
#include <unistd.h>

namespace {

/// Whether the announcement can have files, beginning with the desktop entry; if not, says why.
bool isUsable(const ApkLauncher &launcher, const QString &desktopFile)
{
    if (!RuntimeText::isUsableName(launcher.packageName) ||
        !RuntimeText::isUsableName(launcher.className)) {
        qCWarning(launcherLog) << "Dropping launcher with unusable name:"
                               << RuntimeText::excerpt(launcher.packageName)
                               << RuntimeText::excerpt(launcher.className);
        return false;
    }
    const QString fileName = QFileInfo(desktopFile).fileName();
    if (fileName.toUtf8().size() > PublicFile::maxNameBytes()) {
        qCWarning(launcherLog) << "Dropping launcher whose name is too long for a file:"
                               << RuntimeText::excerpt(launcher.packageName)
                               << RuntimeText::excerpt(launcher.className);
        return false;
    }
    return true;
}

void writeIcon(const QString &path, const QByteArray &icon, bool entryExisted)
{
    qCDebug(launcherLog) << "iconfilename:" << path;
    if (entryExisted && PublicFile::hasContent(path, icon))
        return;
    if (PublicFile::write(path, icon) != PublicFile::WriteResult::Written)
        qCWarning(launcherLog) << "Unable to write icon:" << path;
}

void deleteFile(const QString &path)
{
    qCDebug(launcherLog) << "Deleting:" << path;
    if (!QFile::remove(path))
        qCWarning(launcherLog) << "Could not remove:" << path;
}

void deleteEntry(const QString &desktopFile)
{
    deleteFile(desktopFile);
    deleteFile(LauncherPaths::icon(desktopFile));
    deleteFile(LauncherPaths::settingsEntry(desktopFile));
}

bool isOfPartnerSpace(const QString &packageName)
{
    const QString marker = LauncherPaths::partnerSpaceMarker(packageName);
    if (::access(QFile::encodeName(marker).constData(), F_OK) == 0)
        return true;
    if (errno != ENOENT && errno != ENOTDIR)
        qCWarning(launcherLog) << "Could not look for:" << marker;
    return false;
}

Visibility visibilityOf(const ApkLauncher &launcher, bool blacklisted)
{
    if (isOfPartnerSpace(launcher.packageName))
        return Visibility::PartnerSpace;
    return launcher.isHandler() || blacklisted ? Visibility::Hidden : Visibility::Shown;
}

} // namespace

DesktopManager::DesktopManager(const DaemonConfig *config, QObject *parent)
    : QObject(parent)
    , m_config(config)
{
}

QStringList DesktopManager::installedEntries() const
{
    return InstalledEntries().all();
}

QString DesktopManager::packageOfDesktopFile(const QString &path) const
{
    const std::optional<QString> package = InstalledEntries().packageOf(path);
    if (!package)
        return QString();
    qCDebug(launcherLog) << "Resolved:" << path << "-> " << *package;
    return *package;
}

QString DesktopManager::applicationName(const QString &packageName) const
{
    const QStringList paths = InstalledEntries().ofPackage(packageName);
    if (paths.isEmpty())
        return QString();
    return DesktopFile::unescaped(DesktopFile(paths.first()).value(QStringLiteral("Name")));
}

void DesktopManager::onCreateLauncher(const ApkLauncher &launcher)
{
    const QString path = LauncherPaths::desktopFile(launcher);
    if (!isUsable(launcher, path))
        return;

    const bool existed = QFile::exists(path);
    qCDebug(launcherLog) << "onCreateLauncher:" << path;

    const bool blacklisted = m_blacklist.contains(launcher.packageName);
    if (blacklisted && launcher.isHandler()) {
        m_announced.drop(launcher);
        return;
    }
    if (!isAdded(launcher))
        return;

    DesktopFile entry(path);
    const QString iconPath = LauncherPaths::icon(path);
    writeIcon(iconPath, launcher.icon, existed);
    fillLauncherEntry(entry, launcher, m_config->path(DaemonConfig::AppsDir), iconPath,
                      visibilityOf(launcher, blacklisted));

    if (!launcher.isHandler())
        SettingsEntry::write(path, launcher.packageName, launcher.packageVersion);
    if (!launcher.shareMimeTypes.isEmpty())
        m_sharing.add(launcher);

    if (!existed)
        Q_EMIT newApplicationInstalled(launcher);
}

void DesktopManager::onRuntimeStarting()
{
    m_announced.dropAll();
}

void DesktopManager::onRemovePackage(const QString &packageName)
{
    qCDebug(launcherLog) << "onRemovePackage:" << packageName;

    const QStringList paths = InstalledEntries().ofPackage(packageName);
    for (const QString &path : paths)
        deleteEntry(path);
    m_announced.removePackage(packageName);
    m_fullTold = false;
    m_sharing.removePackage(packageName);
    refreshDesktop();
}

void DesktopManager::onLaunchersComplete()
{
    qCDebug(launcherLog) << "Launchers complete. Removing orphans";

    const QSet<QString> announced = m_announced.desktopFiles();
    const QStringList paths = InstalledEntries().all();
    const QSet<QString> present(paths.cbegin(), paths.cend());
    const QStringList leftovers = Leftovers::find(announced + present);
    for (const QString &leftover : leftovers)
        deleteFile(leftover);
    for (const QString &path : paths) {
        if (announced.contains(path))
            continue;
        qCDebug(launcherLog) << "Removing " << path;
        deleteEntry(path);
    }
    m_announced.purge();
    m_fullTold = false;
    m_sharing.retry();
    refreshDesktop();
}

bool DesktopManager::isAdded(const ApkLauncher &launcher)
{
    switch (m_announced.add(launcher)) {
    case AnnouncedActivities::Result::Added:
        return true;
    case AnnouncedActivities::Result::BelongsToOther:
        qCWarning(launcherLog) << "Dropping launcher whose files are those of another app:"
                               << launcher.packageName << launcher.className;
        break;
    case AnnouncedActivities::Result::Full:
        if (!m_fullTold)
            qCWarning(launcherLog)
                << "Too many launchers, dropping this and what follows:" << launcher.packageName
                << launcher.className;
        m_fullTold = true;
        break;
    }
    return false;
}

void DesktopManager::refreshDesktop()
{
    DesktopDatabase::refresh();
}
