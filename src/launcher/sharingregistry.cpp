#include "launcher/sharingregistry.h"

#include "config/runtimetext.h"
#include "launcher/apklauncher.h"
#include "launcher/launcherpaths.h"
#include "launcher/logging.h"
#include "launcher/publicfile.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonObject>

namespace {

QString sharingFile()
{
    return LauncherPaths::iconsDir() + QLatin1String("sharing.json");
}

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

void write(const QByteArray &content)
{
    if (PublicFile::write(sharingFile(), content) != PublicFile::WriteResult::Written)
        qCWarning(launcherLog) << "Unable to write sharing file";
}

} // namespace

QJsonDocument withShareTarget(const QJsonDocument &document, const ApkLauncher &launcher)
{
    const QString icon = LauncherPaths::icon(LauncherPaths::desktopFile(launcher));
    QJsonArray mimeTypes;
    for (const QString &type : launcher.shareMimeTypes)
        mimeTypes.append(RuntimeText::wellFormed(type));
    const QJsonObject target{
        {QStringLiteral("label"), RuntimeText::wellFormed(launcher.label)},
        {QStringLiteral("caption"), RuntimeText::wellFormed(launcher.caption)},
        {QStringLiteral("icon"), icon},
        {QStringLiteral("mimetypes"), mimeTypes},
        {QStringLiteral("multi"), launcher.multi},
    };

    QJsonObject root = document.object();
    QJsonObject package = root.value(launcher.packageName).toObject();
    package.insert(launcher.className, target);
    root.insert(launcher.packageName, package);
    return QJsonDocument(root);
}

QJsonDocument withoutPackage(const QJsonDocument &document, const QString &packageName)
{
    QJsonObject root = document.object();
    root.remove(packageName);
    return QJsonDocument(root);
}

SharingRegistry::SharingRegistry()
{
    makeDirectory(LauncherPaths::iconsDir());
    write(m_document.toJson());
}

void SharingRegistry::add(const ApkLauncher &launcher)
{
    qCDebug(launcherLog) << "Adding" << launcher.packageName << launcher.className
                         << "to sharing plugins";

    const QJsonDocument document = withShareTarget(m_document, launcher);
    const QByteArray content = document.toJson();
    if (content.size() > MaxBytes) {
        if (!m_fullTold)
            qCWarning(launcherLog) << "Too many share targets, leaving out this and what follows:"
                                   << launcher.packageName << launcher.className;
        m_fullTold = true;
        return;
    }
    m_document = document;
    if (!PublicFile::hasContent(sharingFile(), content))
        write(content);
}

void SharingRegistry::removePackage(const QString &packageName)
{
    if (m_document.isNull())
        return;

    m_document = withoutPackage(m_document, packageName);
    m_fullTold = false;
    const QByteArray content = m_document.toJson();
    if (PublicFile::hasContent(sharingFile(), content))
        return;
    qCDebug(launcherLog) << "Package" << packageName << "removed from sharing file. Writing.";
    write(content);
}
