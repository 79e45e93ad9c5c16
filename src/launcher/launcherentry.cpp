#include "launcher/launcherentry.h"

#include "config/runtimetext.h"
#include "launcher/apklauncher.h"
#include "launcher/desktopfile.h"

namespace {

/// %U is left for the desktop environment, which puts the opened URLs there.
QString execLine(const ApkLauncher &launcher)
{
    const QString pattern = launcher.mimeTypes.isEmpty() ? QStringLiteral("%1 %2.apk %2/%3")
                                                         : QStringLiteral("%1 -d %U %2.apk %2/%3");
    return pattern.arg(QStringLiteral("bramd-launcher"), launcher.packageName, launcher.className);
}

} // namespace

void fillLauncherEntry(DesktopFile &entry, const ApkLauncher &launcher, const QString &appsDir,
                       const QString &iconPath, Visibility visibility)
{
    const auto set = [&entry](const QString &key, const QString &value) {
        entry.setValue(key, DesktopFile::escaped(RuntimeText::singleLine(value)));
    };

    set(QStringLiteral("Version"), QStringLiteral("1.0"));
    set(QStringLiteral("Type"), QStringLiteral("Application"));
    set(QStringLiteral("Name"), launcher.label);

    if (visibility == Visibility::Shown)
        entry.remove(QStringLiteral("NoDisplay"));
    else
        set(QStringLiteral("NoDisplay"), QStringLiteral("true"));

    // The directory ends in a slash already: readers of the key know the doubled one.
    set(QStringLiteral("X-bramd-apkfile"),
        QStringLiteral("%1/%2.apk").arg(appsDir, launcher.packageName));
    set(QStringLiteral("X-bramd-packageName"), launcher.packageName);

    // What is no MIME type stays among them: the host's cache of types leaves it out by itself, and
    // what a new release of Android calls a type is not ours to know.
    if (launcher.mimeTypes.isEmpty())
        entry.remove(QStringLiteral("MimeType"));
    else
        set(QStringLiteral("MimeType"), launcher.mimeTypes.join(QLatin1Char(';')));

    entry.remove(QStringLiteral("X-Orca-Single-Instance"));
    set(QStringLiteral("X-Orca-Application-Type"), QStringLiteral("no-invoker"));
    set(QStringLiteral("Exec"), execLine(launcher));
    set(QStringLiteral("Icon"), iconPath);

    if (visibility == Visibility::PartnerSpace)
        set(QStringLiteral("Categories"), QStringLiteral("X-TidewaterPartnerSpace"));
}
