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
    if (host.daemonAnswer.isMissing())
        findings.append({DaemonStatus::silence(), DaemonStatus::adviceOnSilence()});
    if (!host.runtimeImageThere) {
        findings.append({QStringLiteral("The Android runtime is not installed: there is no "
                                        "/opt/umbra/system.img."),
                         QStringLiteral("Install it from the store.")});
    }
    if (!host.callsPermitted) {
        findings.append({QStringLiteral("You may not call bramd."),
                         QStringLiteral("Ask the administrator for one of the groups that bramd(8) "
                                        "names, and log in anew.")});
    }
    if (!host.unitComplaint.isEmpty()) {
        findings.append({host.unitUnstartable
                             ? QStringLiteral("The Android runtime's unit cannot be started.")
                             : QStringLiteral("The state of the Android runtime is not known."),
                         host.unitComplaint});
    }
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
    for (const QString &path : host.unreadableDirectories)
        findings.append(closedDirectory(path));
    return findings;
}

/// What keeps a file that is there from being read.
QVector<Finding> examineFile(const QString &what, const QString &path, RegularFile::State state)
{
    switch (state) {
    case RegularFile::State::Unreadable:
        return {{QStringLiteral("You cannot read the %1 %2.").arg(what, path),
                 ReadableFiles.arg(path)}};
    case RegularFile::State::Unusable:
        return {{QStringLiteral("The %1 %2 is no regular file.").arg(what, path),
                 QStringLiteral("As root, remove it, and have the apps announced anew by “bramctl "
                                "restart”.")}};
    case RegularFile::State::Read:
    case RegularFile::State::Missing:
        break;
    }
    return {};
}

bool contains(const QVector<HostState::File> &files, const QString &path)
{
    return std::any_of(files.cbegin(), files.cend(),
                       [&path](const HostState::File &file) { return file.path == path; });
}

/// Handlers have no settings entries.
QVector<Finding> examineEntry(const HostState &host, const AppEntry &entry)
{
    QVector<Finding> findings =
        examineFile(QStringLiteral("desktop entry"), entry.path, entry.state);
    if (!findings.isEmpty())
        return findings;
    if (entry.packageName.isEmpty()) {
        findings.append({QStringLiteral("The desktop entry %1 names no app.").arg(entry.path),
                         QStringLiteral("As root, remove it; bramd writes what is missing when the "
                                        "runtime announces its apps.")});
        return findings;
    }
    const QString icon = LauncherPaths::icon(entry.path);
    if (!contains(host.icons, icon) &&
        !host.unreadableDirectories.contains(LauncherPaths::iconsDir()))
        findings.append(
            {QStringLiteral("The desktop entry %1 has no icon.").arg(entry.path), Reannounce});
    if (!entry.isHandler &&
        !host.unreadableDirectories.contains(LauncherPaths::settingsEntriesDir()) &&
        !contains(host.settingsEntries, LauncherPaths::settingsEntry(entry.path))) {
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

/// Whether there is one, or may be.
bool hasEntry(const HostState &host, const QString &path, QString (*pathOf)(const QString &))
{
    return host.unreadableDirectories.contains(LauncherPaths::applicationsDir()) ||
           std::any_of(
               host.entries.cbegin(), host.entries.cend(),
               [&path, pathOf](const AppEntry &entry) { return pathOf(entry.path) == path; });
}

QVector<Finding> examineIcon(const HostState &host, const HostState::File &icon)
{
    if (!hasEntry(host, icon.path, LauncherPaths::icon)) {
        return {{QStringLiteral("The icon %1 belongs to no desktop entry.").arg(icon.path),
                 QStringLiteral("As root, remove it.")}};
    }
    if (icon.state != RegularFile::State::Read)
        return examineFile(QStringLiteral("icon"), icon.path, icon.state);
    if (!isPng(icon.content)) {
        return {{QStringLiteral("The icon %1 is no PNG file.").arg(icon.path),
                 QStringLiteral("The app's maker is to blame, unless it goes away when you remove "
                                "it as root and have the apps announced anew by “bramctl "
                                "restart”.")}};
    }
    return {};
}

QVector<Finding> examineSettingsEntry(const HostState &host, const HostState::File &settings)
{
    if (hasEntry(host, settings.path, LauncherPaths::settingsEntry))
        return examineFile(QStringLiteral("settings entry"), settings.path, settings.state);
    return {{QStringLiteral("The settings entry %1 belongs to no app.").arg(settings.path),
             QStringLiteral("As root, remove it.")}};
}

/// A handler without MIME types is there to take what is shared.
bool hasShareHandlers(const HostState &host)
{
    return std::any_of(host.entries.cbegin(), host.entries.cend(), [](const AppEntry &entry) {
        return entry.state == RegularFile::State::Read && entry.isHandler &&
               !entry.packageName.isEmpty() && entry.mimeTypes.isEmpty();
    });
}

QVector<Finding> examineTargets(const HostState &host)
{
    QVector<Finding> findings;
    for (const ShareTarget &target : host.targets.targets) {
        if (hasEntry(host, target.iconPath, LauncherPaths::icon))
            continue;
        findings.append(
            {QStringLiteral("%1 is offered for sharing, but has no desktop entry.")
                 .arg(target.component()),
             QStringLiteral("Have the registry made anew: “systemctl restart bramd”, then “bramctl "
                            "restart”.")});
    }
    return findings;
}

QVector<Finding> examineRegistry(const HostState &host)
{
    const QString path = LauncherPaths::sharingFile();
    if (host.unreadableDirectories.contains(LauncherPaths::iconsDir()))
        return {};
    switch (host.targets.state) {
    case RegisteredTargets::State::Filled:
        return examineTargets(host);
    case RegisteredTargets::State::Empty:
        if (!hasShareHandlers(host))
            return {};
        return {
            {QStringLiteral("No app is offered for sharing, though there are some that take it."),
             QStringLiteral("bramd has started since they were announced: start the runtime "
                            "with “bramctl start”, or “bramctl restart” it.")}};
    case RegisteredTargets::State::Missing:
        return {{QStringLiteral("There is no sharing registry, %1.").arg(path),
                 QStringLiteral("bramd makes it when it starts: “systemctl restart bramd”.")}};
    case RegisteredTargets::State::Unreadable:
        return {{QStringLiteral("You cannot read the sharing registry %1.").arg(path),
                 ReadableFiles.arg(path)}};
    case RegisteredTargets::State::Damaged:
        break;
    }
    return {{QStringLiteral("The sharing registry %1 is damaged.").arg(path),
             QStringLiteral("“systemctl restart bramd” makes it anew.")}};
}

} // namespace

Finding closedDirectory(const QString &path)
{
    return {QStringLiteral("You cannot read the directory %1.").arg(path),
            QStringLiteral("As root, open it for everybody: “chmod a+rx %1”.").arg(path)};
}

QVector<Finding> examine(const HostState &host)
{
    QVector<Finding> findings = examineServices(host) + examineDirectories(host);
    for (const AppEntry &entry : host.entries)
        findings += examineEntry(host, entry);
    for (const HostState::File &icon : host.icons)
        findings += examineIcon(host, icon);
    for (const HostState::File &settings : host.settingsEntries)
        findings += examineSettingsEntry(host, settings);
    return findings + examineRegistry(host);
}

} // namespace Doctor
