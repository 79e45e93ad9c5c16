#include "tools/ctl/hostreader.h"

#include "launcher/launcherpaths.h"
#include "tools/common/runtimeunit.h"
#include "tools/ctl/context.h"
#include "tools/ctl/regularfile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace HostReader {

namespace {

/// Where the daemon looks for the bus of the user who calls; for root, of every user who is logged
/// in.
QStringList sessionBusPaths()
{
    const QString path = QStringLiteral("/run/user/%1/dbus/user_bus_socket");
    if (getuid() != 0)
        return {path.arg(getuid())};
    QStringList paths;
    const QStringList users =
        QDir(QStringLiteral("/run/user")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &user : users)
        paths.append(path.arg(user));
    return paths.isEmpty() ? QStringList(path.arg(QStringLiteral("UID"))) : paths;
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

QVector<HostState::Icon> readIcons()
{
    QVector<HostState::Icon> icons;
    for (const QString &path : pathsIn(LauncherPaths::iconsDir(), {QStringLiteral("*.png")})) {
        const RegularFile file = RegularFile::read(path);
        icons.append({path, file.state != RegularFile::State::Unreadable, file.content});
    }
    return icons;
}

QStringList unreadableDirectories()
{
    QStringList paths;
    for (const QString &path : {LauncherPaths::applicationsDir(), LauncherPaths::iconsDir(),
                                LauncherPaths::settingsEntriesDir()}) {
        const QFileInfo info(path);
        if (info.isDir() && !(info.isReadable() && info.isExecutable()))
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
    host.runtimeImageThere = QFileInfo::exists(QStringLiteral("/opt/umbra/system.img"));
    if (host.systemBusReachable) {
        const RuntimeUnit::State unit = context.unit().read();
        host.unitState = unit.activeState;
        host.unitComplaint = unit.outcome.sentence;
    }
    const QStringList busPaths = sessionBusPaths();
    host.sessionBusPath = busPaths.join(QLatin1String(", "));
    host.sessionBusReachable = std::any_of(busPaths.cbegin(), busPaths.cend(), answers);
    host.unreadableDirectories = unreadableDirectories();
    host.entries = AppEntries::readAll();
    host.icons = readIcons();
    host.settingsEntries =
        pathsIn(LauncherPaths::settingsEntriesDir(),
                {QStringLiteral("bramd_launcher_*.json"), QStringLiteral("bramd_handler_*.json")});
    host.targets = ShareTargets::read();
    return host;
}

} // namespace HostReader
