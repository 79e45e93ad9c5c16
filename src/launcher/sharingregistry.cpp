#include "launcher/sharingregistry.h"

#include "launcher/apklauncher.h"
#include "launcher/launcherpaths.h"
#include "launcher/logging.h"
#include "launcher/publicfile.h"

#include <QDir>
#include <QFile>

namespace {

/// The logged-in user's programs read what is in it, whatever umask the daemon was started with.
void makeDirectory(const QString &path)
{
    if (QDir(path).exists())
        return;
    if (!QDir().mkpath(path)) {
        qCWarning(launcherLog) << "Cannot create directory:" << path;
        return;
    }
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner |
                                    QFile::ReadGroup | QFile::ExeGroup | QFile::ReadOther |
                                    QFile::ExeOther);
}

} // namespace

SharingRegistry::SharingRegistry()
{
    makeDirectory(LauncherPaths::iconsDir());
    write();
}

void SharingRegistry::add(const ApkLauncher &launcher)
{
    qCDebug(launcherLog) << "Adding" << launcher.packageName << launcher.className
                         << "to sharing plugins";

    ShareTargets targets = m_targets;
    if (targets.set(launcher)) {
        const QByteArray content = targets.toJson();
        if (content.size() > MaxBytes) {
            if (!m_fullTold)
                qCWarning(launcherLog)
                    << "Too many share targets, leaving out this and what follows:"
                    << launcher.packageName << launcher.className;
            m_fullTold = true;
            return;
        }
        m_targets = targets;
        m_content = content;
    }
    if (!PublicFile::hasContent(LauncherPaths::sharingFile(), m_content))
        write();
}

void SharingRegistry::removePackage(const QString &packageName)
{
    if (m_content.isEmpty())
        return;

    m_targets.removePackage(packageName);
    m_content = m_targets.toJson();
    m_fullTold = false;
    if (PublicFile::hasContent(LauncherPaths::sharingFile(), m_content))
        return;
    qCDebug(launcherLog) << "Package" << packageName << "removed from sharing file. Writing.";
    write();
}

void SharingRegistry::retry()
{
    if (!m_isWritten)
        write();
}

void SharingRegistry::write()
{
    m_isWritten = PublicFile::write(LauncherPaths::sharingFile(), m_content) ==
                  PublicFile::WriteResult::Written;
    if (!m_isWritten)
        qCWarning(launcherLog) << "Unable to write sharing file";
}
