#pragma once

#include "tools/common/bramdproxy.h"
#include "tools/common/outcome.h"

#include <QDBusConnection>

/// A caller of the daemon, which a call starts if the bus knows how:
///
///     DaemonClient daemon;
///     const QDBusPendingReply<bool> reply = daemon.proxy().installFile(path);
///     const Outcome outcome = daemon.finish(reply);
///
/// The reply's value is for use only when the outcome is done.
class DaemonClient
{
public:
    /// The daemon may be busy for half a minute with one request and serves them in order.
    static constexpr int CallTimeoutMs = 60000;

    explicit DaemonClient(const QDBusConnection &bus = QDBusConnection::systemBus(),
                          int timeoutMs = CallTimeoutMs);

    /// One function for every method of com.corvo.bramd, and its signals.
    BramdProxy &proxy() { return m_proxy; }

    /// Blocks until the call has been answered or the time is up.
    Outcome finish(QDBusPendingCall call) const;

private:
    QDBusConnection m_bus;
    int m_timeoutMs;
    BramdProxy m_proxy;
};
