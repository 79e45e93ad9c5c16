#include "tools/common/daemonclient.h"

#include "tools/common/callfailure.h"

#include <QDBusConnectionInterface>
#include <QDBusMetaType>

namespace {

const QString Service = QStringLiteral("com.corvo.bramd");
const QString Path = QStringLiteral("/com/corvo/bramd");

} // namespace

DaemonClient::DaemonClient(const QDBusConnection &bus, int timeoutMs)
    : m_bus(bus)
    , m_timeoutMs(timeoutMs)
    , m_proxy(Service, Path, bus)
{
    qDBusRegisterMetaType<AppSizeInfo>();
    qDBusRegisterMetaType<AndroidVersionData>();
    m_proxy.setTimeout(timeoutMs);
}

Outcome DaemonClient::finish(QDBusPendingCall call) const
{
    call.waitForFinished();
    if (!call.isError())
        return {};
    // Calls that are under way when the bus goes end like those that were never answered.
    if (!m_bus.isConnected())
        return busFailure(m_bus.lastError().isValid() ? m_bus.lastError() : call.error());
    const bool daemonRuns = m_bus.interface()->isServiceRegistered(Service);
    return callFailure(call.error(), daemonRuns, m_timeoutMs);
}
