#include "tools/ctl/doctor.h"

#include "launcher/launcherpaths.h"

#include <algorithm>

bool operator==(const Finding &left, const Finding &right)
{
    return left.what == right.what && left.advice == right.advice;
}

namespace Doctor {

namespace {

const QString Reannounce =
    QStringLiteral("Have the runtime announce its apps anew: “bramctl restart”.");
const QString ReadableFiles =
    QStringLiteral("As root, make it readable for everybody: “chmod a+r %1”, and its directories "
                   "accessible: “chmod a+rx”.");

QVector<Finding> examineServices(const HostState &host)
{
    QVector<Finding> findings;
    if (!host.systemBusReachable) {
        findings.append({QStringLiteral("The system bus cannot be reached."),
                         QStringLiteral("Look at “systemctl status dbus”.")});
        return findings;
    }
    if (!host.daemonKnown) {
        findings.append({QStringLiteral("bramd does not run, and the bus cannot start it."),
                         QStringLiteral("Look at “systemctl status bramd”; is the package bramd "
                                        "installed?")});
    }
    if (!host.runtimeImageThere) {
        findings.append({QStringLiteral("The Android runtime is not installed: there is no "
                                        "/opt/umbra/system.img."),
                         QStringLiteral("Install it from the store.")});
    }
    if (!host.unitComplaint.isEmpty())
        findings.append({host.unitComplaint, QStringLiteral("Nothing works before that does.")});
    if (host.unitState == QLatin1String("failed")) {
        findings.append({QStringLiteral("The Android runtime has failed; bramd leaves it alone."),
                         QStringLiteral("Start it with “bramctl start”; “journalctl -u umbravm” "
                                        "tells why it failed.")});
    }
    if (!host.sessionBusReachable) {
        findings.append(
            {QStringLiteral("The session bus cannot be reached at %1, so no notices are shown.")
                 .arg(host.sessionBusPath),
             QStringLiteral("Log out and in again; the package's files count from the next login "
                            "on. “systemctl --user status dbus.socket” tells more.")});
    }
    return findings;
}

QVector<Finding> examineDirectories(const HostState &host)
{
    QVector<Finding> findings;
    for (const QString &path : host.unreadableDirectories) {
        findings.append(
            {QStringLiteral("You cannot read the directory %1.").arg(path),
             QStringLiteral("As root, open it for everybody: “chmod a+rx %1”.").arg(path)});
    }
    return findings;
}

/// Handlers have no settings entries.
QVector<Finding> examineEntry(const HostState &host, const AppEntry &entry)
{
    QVector<Finding> findings;
    if (!entry.isReadable) {
        findings.append({QStringLiteral("You cannot read the desktop entry %1.").arg(entry.path),
                         ReadableFiles.arg(entry.path)});
        return findings;
    }
    if (entry.packageName.isEmpty()) {
        findings.append({QStringLiteral("The desktop entry %1 names no app.").arg(entry.path),
                         QStringLiteral("As root, remove it; bramd writes what is missing when the "
                                        "runtime announces its apps.")});
        return findings;
    }
    const QString icon = LauncherPaths::icon(entry.path);
    const bool hasIcon =
        std::any_of(host.icons.cbegin(), host.icons.cend(),
                    [&icon](const HostState::Icon &candidate) { return candidate.path == icon; });
    if (!hasIcon && !host.unreadableDirectories.contains(LauncherPaths::iconsDir()))
        findings.append(
            {QStringLiteral("The desktop entry %1 has no icon.").arg(entry.path), Reannounce});
    if (!entry.isHandler &&
        !host.unreadableDirectories.contains(LauncherPaths::settingsEntriesDir()) &&
        !host.settingsEntries.contains(LauncherPaths::settingsEntry(entry.path))) {
        findings.append(
            {QStringLiteral("The app %1 has no page in the settings.").arg(entry.packageName),
             Reannounce});
    }
    return findings;
}

bool isPng(const QByteArray &content)
{
    return content.startsWith(QByteArrayLiteral("\x89PNG\r\n\x1a\n"));
}

QVector<Finding> examineIcon(const HostState &host, const HostState::Icon &icon)
{
    const auto belongs = [&icon](const AppEntry &entry) {
        return LauncherPaths::icon(entry.path) == icon.path;
    };
    if (std::none_of(host.entries.cbegin(), host.entries.cend(), belongs)) {
        return {{QStringLiteral("The icon %1 belongs to no desktop entry.").arg(icon.path),
                 QStringLiteral("As root, remove it.")}};
    }
    if (!icon.isReadable) {
        return {{QStringLiteral("You cannot read the icon %1.").arg(icon.path),
                 ReadableFiles.arg(icon.path)}};
    }
    if (!isPng(icon.content)) {
        return {{QStringLiteral("The icon %1 is no PNG file.").arg(icon.path),
                 QStringLiteral("The app's maker is to blame, unless it goes away when you remove "
                                "it as root and have the apps announced anew by “bramctl "
                                "restart”.")}};
    }
    return {};
}

QVector<Finding> examineSettingsEntry(const HostState &host, const QString &path)
{
    const auto belongs = [&path](const AppEntry &entry) {
        return LauncherPaths::settingsEntry(entry.path) == path;
    };
    if (std::any_of(host.entries.cbegin(), host.entries.cend(), belongs))
        return {};
    return {{QStringLiteral("The settings entry %1 belongs to no app.").arg(path),
             QStringLiteral("As root, remove it.")}};
}

/// A handler without MIME types is there to take what is shared.
bool hasShareHandlers(const HostState &host)
{
    return std::any_of(host.entries.cbegin(), host.entries.cend(), [](const AppEntry &entry) {
        return entry.isReadable && entry.isHandler && !entry.packageName.isEmpty() &&
               entry.mimeTypes.isEmpty();
    });
}

QVector<Finding> examineRegistry(const HostState &host)
{
    const QString path = LauncherPaths::iconsDir() + QLatin1String("sharing.json");
    switch (host.targets.state) {
    case ShareTargets::State::Filled:
        return {};
    case ShareTargets::State::Empty:
        if (!hasShareHandlers(host))
            return {};
        return {
            {QStringLiteral("No app is offered for sharing, though there are some that take it."),
             QStringLiteral("bramd has started since they were announced: start the runtime "
                            "with “bramctl start”, or “bramctl restart” it.")}};
    case ShareTargets::State::Missing:
        if (host.unreadableDirectories.contains(LauncherPaths::iconsDir()))
            return {};
        return {{QStringLiteral("There is no sharing registry, %1.").arg(path),
                 QStringLiteral("bramd makes it when it starts: “systemctl restart bramd”.")}};
    case ShareTargets::State::Unreadable:
        return {{QStringLiteral("You cannot read the sharing registry %1.").arg(path),
                 ReadableFiles.arg(path)}};
    case ShareTargets::State::Damaged:
        break;
    }
    return {{QStringLiteral("The sharing registry %1 is damaged.").arg(path),
             QStringLiteral("“systemctl restart bramd” makes it anew.")}};
}

} // namespace

QVector<Finding> examine(const HostState &host)
{
    QVector<Finding> findings = examineServices(host) + examineDirectories(host);
    for (const AppEntry &entry : host.entries)
        findings += examineEntry(host, entry);
    for (const HostState::Icon &icon : host.icons)
        findings += examineIcon(host, icon);
    for (const QString &path : host.settingsEntries)
        findings += examineSettingsEntry(host, path);
    return findings + examineRegistry(host);
}

} // namespace Doctor
