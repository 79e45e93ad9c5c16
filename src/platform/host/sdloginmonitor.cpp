#include "platform/host/sdloginmonitor.h"

#include "platform/host/polltimeout.h"
#include "platform/host/seat.h"

#include <poll.h>

bool SdLoginMonitor::open()
{
    sd_login_monitor *monitor = nullptr;
    if (sd_login_monitor_new("seat", &monitor) < 0)
        return false;
    m_monitor.reset(monitor);
    return true;
}

int SdLoginMonitor::descriptor() const
{
    return sd_login_monitor_get_fd(m_monitor.get());
}

int SdLoginMonitor::events() const
{
    return sd_login_monitor_get_events(m_monitor.get());
}

quint64 SdLoginMonitor::timeout() const
{
    uint64_t timeout = NoTimeoutUs;
    if (sd_login_monitor_get_timeout(m_monitor.get(), &timeout) < 0)
        return NoTimeoutUs;
    return timeout;
}

void SdLoginMonitor::flush()
{
    sd_login_monitor_flush(m_monitor.get());
}

std::optional<uid_t> SdLoginMonitor::activeUser() const
{
    return activeSeatUser();
}

int SdLoginMonitor::poll(int descriptor, short events, int timeoutMs)
{
    pollfd polled{descriptor, events, 0};
    return ::poll(&polled, 1, timeoutMs);
}

quint64 SdLoginMonitor::now() const
{
    return monotonicTimeUs();
}
