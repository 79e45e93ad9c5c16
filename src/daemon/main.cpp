#include "config/catalogues.h"
#include "config/daemonconfig.h"
#include "daemon/bramdaemon.h"
#include "daemon/loginwait.h"
#include "daemon/sessionaddress.h"
#include "daemon/systembuswatch.h"
#include "daemon/terminationsignals.h"
#include "platform/host/sdloginmonitor.h"

#include <QCoreApplication>
#include <QTextCodec>

#include <cstdio>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int exitNotRoot = 2;
constexpr int exitNoLogins = 3;

/// Users' programs and the runtime read what is written here and by the programs that are run, and
/// only root writes it, whoever started the daemon.
constexpr mode_t umaskForPublicFiles = 0022;

std::optional<uid_t> waitForLoggedInUser()
{
    SdLoginMonitor monitor;
    return waitForUser(monitor);
}

} // namespace

int main(int argc, char *argv[])
{
    if (::getuid() != 0) {
        std::fprintf(stderr, "%s: Not running as root, exiting.\n", argv[0]);
        return exitNotRoot;
    }
    ::umask(umaskForPublicFiles);
    const std::optional<uid_t> user = waitForLoggedInUser();
    if (!user)
        return exitNoLogins;
    qputenv("DBUS_SESSION_BUS_ADDRESS", sessionBusAddress(*user));

    QCoreApplication application(argc, argv);
    // D-Bus names files in UTF-8. A system service may run in the "C" locale, in which Qt would
    // not find those that are not plain ASCII.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    const TerminationSignals terminationSignals;
    const Catalogues catalogues;
    const DaemonConfig config;
    const SystemBusWatch systemBusWatch; // before anybody hears of the daemon
    const BramDaemon daemon(&config);
    return QCoreApplication::exec();
}
