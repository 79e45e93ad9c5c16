// The other processes of the library's tests. usage:
//   library_peer service-manager DEVICE
//   library_peer service DEVICE NAME
// Says "ready" on standard output and serves until it is killed.

#include "sim/peer/servicemanagerloop.h"
#include "sim/peer/testservice.h"

#include <QCoreApplication>

#include <csignal>
#include <cstdio>
#include <sys/prctl.h>

namespace {

void sayReady()
{
    std::puts("ready");
    std::fflush(stdout);
}

} // namespace

int main(int argc, char **argv)
{
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const QByteArray device = arguments.value(2).toLocal8Bit();
    if (arguments.value(1) == QLatin1String("service-manager")) {
        ServiceManagerLoop loop(Binder::Driver::open(device.constData()));
        if (!loop.begin())
            return EXIT_FAILURE;
        sayReady();
        loop.run();
        return EXIT_FAILURE;
    }
    const TestService service(device.constData(), arguments.value(3).toLocal8Bit().constData());
    if (!service.isReady())
        return EXIT_FAILURE;
    sayReady();
    return QCoreApplication::exec();
}
