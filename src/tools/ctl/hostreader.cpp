#include "tools/ctl/hostreader.h"

#include "launcher/launcherpaths.h"
#include "platform/host/seat.h"
#include "tools/common/runtimeready.h"
#include "tools/common/runtimeunit.h"
#include "tools/ctl/context.h"
#include "tools/ctl/regularfile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cstring>
#include <optional>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace HostReader {

namespace {

/// Where the daemon looks for the bus of the user who calls; for root, of the one who sits in front
/// of the phone. Empty when nobody does: then there is nobody to show notices to.
QString sessionBusPath()
{
    const std::optional<uid_t> user =
        getuid() == 0 ? activeSeatUser() : std::optional<uid_t>(getuid());
    return user ? QStringLiteral("/run/user/%1/dbus/user_bus_socket").arg(*user) : QString();
}

bool answers(const QString &socketPath)
{
    const QByteArray name = QFile::encodeName(socketPath);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (static_cast<size_t>(name.size()) >= sizeof(address.sun_path))
        return false;
    memcpy(address.sun_path, name.constData(), static_cast<size_t>(name.size()));
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (descriptor < 0)
        return false;
    const bool isConnected =
        connect(descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof(address)) == 0;
    close(descriptor);
    return isConnected;
}

QStringList pathsIn(const QString &directory, const QStringList &filters)
{
    QStringList paths;
    const QStringList names = QDir(directory).entryList(
        filters, QDir::Files | QDir::System | QDir::CaseSensitive, QDir::Name);
    for (const QString &name : names)
        paths.append(directory + name);
    return paths;
}

QVector<HostState::File> readFiles(const QStringList &paths)
{
    QVector<HostState::File> files;
    for (const QString &path : paths) {
        const RegularFile file = RegularFile::read(path);
        files.append({path, file.state, file.content});
    }
    return files;
}

QStringList unreadableDirectories()
{
    QStringList paths;
    for (const QString &path : {LauncherPaths::applicationsDir(), LauncherPaths::iconsDir(),
                                LauncherPaths::settingsEntriesDir()}) {
        if (RegularFile::isClosedDirectory(path))
            paths.append(path);
    }
    return paths;
}

} // namespace

HostState read(Context &context)
{
    HostState host;
    const Context::DaemonState daemon = context.daemonState();
    host.systemBusReachable = daemon != Context::DaemonState::NoBus;
    host.daemonKnown = daemon != Context::DaemonState::Missing;
    host.runtimeImageThere = RuntimeReady::isInstalled();
    if (host.systemBusReachable) {
        const RuntimeUnit::State unit = context.unit().read();
        host.unitState = unit.activeState;
        host.unitComplaint = unit.outcome.sentence;
        host.unitUnstartable = unit.isUnstartable;
        host.daemonAnswer = DaemonStatus::ask(daemon);
        host.callsPermitted = host.daemonAnswer.outcome.status != ExitStatus::Refused ||
                              context.requirePermission().isDone();
    }
    host.sessionBusPath = sessionBusPath();
    host.sessionBusReachable = host.sessionBusPath.isEmpty() || answers(host.sessionBusPath);
    host.unreadableDirectories = unreadableDirectories();
    host.entries = AppEntries::readAll();
    host.icons = readFiles(pathsIn(LauncherPaths::iconsDir(), {QStringLiteral("*.png")}));
    host.settingsEntries = readFiles(
        pathsIn(LauncherPaths::settingsEntriesDir(),
                {QStringLiteral("bramd_launcher_*.json"), QStringLiteral("bramd_handler_*.json")}));
    host.targets = RegisteredTargets::read();
    return host;
}

} // namespace HostReader
