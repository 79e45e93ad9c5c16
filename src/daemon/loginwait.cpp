#include "daemon/loginwait.h"

#include "platform/host/loginmonitor.h"
#include "platform/host/polltimeout.h"

#include <QDebug>

#include <poll.h>

namespace {

int remainingMs(const LoginMonitor &monitor)
{
    const quint64 timeout = monitor.timeout();
    return timeout == NoTimeoutUs ? -1 : pollTimeoutMs(timeout, monitor.now());
}

} // namespace

std::optional<uid_t> waitForUser(LoginMonitor &monitor)
{
    if (!monitor.open()) {
        qWarning() << "Failed to monitor for seat changes";
        return std::nullopt;
    }
    const int descriptor = monitor.descriptor();
    const int events = monitor.events();
    if (descriptor < 0 || events < 0 || (events & POLLIN) == 0) {
        qWarning() << "Unable to poll for systemd login events";
        return std::nullopt;
    }
    std::optional<uid_t> user = monitor.activeUser();
    while (!user) {
        if (monitor.poll(descriptor, static_cast<short>(events), remainingMs(monitor)) < 0)
            qWarning() << "poll failed";
        monitor.flush();
        user = monitor.activeUser();
    }
    return user;
}
