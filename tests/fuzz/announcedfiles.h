#pragma once

#include "launcher/apklauncher.h"

#include <QMap>
#include <QPair>
#include <QString>

/// Which files the runtime's announcements have to leave on the host, kept beside the daemon that
/// writes them, and compared with what it wrote.
class AnnouncedFiles
{
public:
    /// An empty host, but for a package on the blacklist, "blacklisted.app", one of the partner
    /// space, "partner.app", and the entry of a program of its own.
    static void makeHost();

    /// Removes all files of apps.
    static void clearHost();

    void onDaemonStarted();
    void onAnnounced(const ApkLauncher &launcher);
    void onPackageRemoved(const QString &packageName);
    void onComplete();

    /// Ends the process when any file is not what it should be. `budget` is the size that all
    /// together may have, in bytes.
    void expectOnHost(qint64 budget) const;

private:
    void expectSharing() const;

    using Activity = QPair<QString, QString>; // package and class

    QMap<QString, ApkLauncher> m_entries; // by path
    QMap<Activity, QString> m_received;   // their paths
    QMap<QString, QString> m_owners;      // packages, by what the names of their files have
    QMap<Activity, ApkLauncher> m_shareTargets;
    bool m_sharingStarted = false; // before the first target the file is empty
};
