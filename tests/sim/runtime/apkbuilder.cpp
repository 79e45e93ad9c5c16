#include "sim/runtime/apkbuilder.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>

bool ApkBuilder::write(const QString &path, const QByteArray &content) const
{
    QFile file(path);
    return QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly) &&
           file.write(content) == content.size();
}

void ApkBuilder::addResource(const QString &path, const QByteArray &content)
{
    write(m_directory.filePath(QStringLiteral("res/") + path), content);
}

QString ApkBuilder::build(const QByteArray &manifest)
{
    const QString manifestPath = m_directory.filePath(QStringLiteral("AndroidManifest.xml"));
    const QString apk = m_directory.filePath(QStringLiteral("%1.apk").arg(++m_built));
    const QString resources = m_directory.filePath(QStringLiteral("res"));
    if (!write(manifestPath, manifest) || !QDir().mkpath(resources))
        return {};
    QProcess aapt;
    aapt.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    aapt.start(QStringLiteral("aapt"),
               {QStringLiteral("package"), QStringLiteral("-f"), QStringLiteral("-M"), manifestPath,
                QStringLiteral("-S"), resources, QStringLiteral("-I"),
                QStringLiteral("/usr/share/android-framework-res/framework-res.apk"),
                QStringLiteral("-F"), apk});
    return aapt.waitForFinished() && aapt.exitCode() == 0 ? apk : QString();
}

QByteArray manifestOf(const char *package, int versionCode, const QByteArray &components,
                      const QByteArray &applicationAttributes)
{
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>"
           "<manifest xmlns:android=\"http://schemas.android.com/apk/res/android\" package=\"" +
           QByteArray(package) + "\" android:versionCode=\"" + QByteArray::number(versionCode) +
           "\" android:versionName=\"1.0\"><application " + applicationAttributes + ">" +
           components + "</application></manifest>";
}

QByteArray launcherActivity(const QByteArray &className)
{
    return "<activity android:name=\"" + className +
           "\"><intent-filter><action android:name=\"android.intent.action.MAIN\" />"
           "<category android:name=\"android.intent.category.LAUNCHER\" />"
           "</intent-filter></activity>";
}
