#pragma once

#include "launcher/announcedactivities.h"
#include "launcher/apklauncher.h"
#include "launcher/packageblacklist.h"
#include "launcher/sharingregistry.h"

#include <QObject>
#include <QStringList>

class DaemonConfig;

/// Makes the runtime's announcements visible on the host: desktop entries and icons, share
/// targets and settings entries. What goes wrong with one file is logged, and the rest is done.
class DesktopManager : public QObject
{
    Q_OBJECT

public:
    /// `config` is not owned and must outlive the object. Empties the sharing registry and reads
    /// the package blacklist.
    explicit DesktopManager(const DaemonConfig *config, QObject *parent = nullptr);

    /// Paths of the desktop entries of all Android apps, as they are on disk now.
    QStringList installedEntries() const;

    /// The package that a desktop entry of ours belongs to; empty for any other path.
    QString packageOfDesktopFile(const QString &path) const;

    /// The app's name as the user sees it; empty for packages without an entry.
    QString applicationName(const QString &packageName) const;

public Q_SLOTS:
    /// Creates or updates the files of one announced activity. Announcements are dropped with a
    /// warning when their names cannot be file names, their files are those of another package,
    /// or there are too many of them (one warning until there is room again).
    void onCreateLauncher(const ApkLauncher &launcher);

    /// What another runtime had announced before no longer counts: the next completion removes the
    /// files of all that is not announced again. An app that was removed when the runtime could not
    /// tell, as one that is removed while the runtime starts, goes that way.
    void onRuntimeStarting();

    /// Removes all files of one package.
    void onRemovePackage(const QString &packageName);

    /// Removes the files of every activity that was not announced.
    void onLaunchersComplete();

    /// Has the host look at the desktop entries anew. Blocks until that is done.
    void refreshDesktop();

Q_SIGNALS:
    /// An activity was announced that had no desktop entry before. Its entry is written when
    /// the receivers return.
    void newApplicationInstalled(const ApkLauncher &launcher);

private:
    bool isAdded(const ApkLauncher &launcher);

    PackageBlacklist m_blacklist;
    AnnouncedActivities m_announced;
    bool m_fullTold = false; ///< that no more activities fit
    SharingRegistry m_sharing;
    const DaemonConfig *m_config;
};
