#include "tools/ctl/context.h"

#include "tools/common/callfailure.h"
#include "tools/common/daemonclient.h"
#include "tools/common/runtimeunit.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>

namespace {

const QString Service = QStringLiteral("com.corvo.bramd");

Outcome failed()
{
    return {ExitStatus::RuntimeUnavailable,
            QStringLiteral("The Android runtime has failed. Start it with “bramctl start”; "
                           "“journalctl -u umbravm” tells why it failed.")};
}

} // namespace

Context::Context() = default;
Context::~Context() = default;

DaemonClient &Context::daemon()
{
    if (!m_daemon)
        m_daemon = std::make_unique<DaemonClient>();
    return *m_daemon;
}

RuntimeUnit &Context::unit()
{
    if (!m_unit)
        m_unit = std::make_unique<RuntimeUnit>();
    return *m_unit;
}

Context::DaemonState Context::daemonState() const
{
    const QDBusConnection bus = QDBusConnection::systemBus();
    if (!bus.isConnected())
        return DaemonState::NoBus;
    if (bus.interface()->isServiceRegistered(Service))
        return DaemonState::Running;
    const QDBusReply<QStringList> startable =
        bus.interface()->call(QStringLiteral("ListActivatableNames"));
    return startable.value().contains(Service) ? DaemonState::Startable : DaemonState::Missing;
}

QString Context::daemonOwner() const
{
    const QDBusConnection bus = QDBusConnection::systemBus();
    return bus.isConnected() ? bus.interface()->serviceOwner(Service).value() : QString();
}

Outcome Context::requireDaemon() const
{
    switch (daemonState()) {
    case DaemonState::Running:
    case DaemonState::Startable:
        return {};
    case DaemonState::Missing:
        return callFailure(QDBusError(QDBusError::ServiceUnknown,
                                      QStringLiteral("the bus knows no service %1").arg(Service)),
                           false, DaemonClient::CallTimeoutMs);
    case DaemonState::NoBus:
        break;
    }
    return callFailure(
        QDBusError(QDBusError::Disconnected, QDBusConnection::systemBus().lastError().message()),
        false, DaemonClient::CallTimeoutMs);
}

Outcome Context::requirePermission() const
{
    constexpr int AnswerTimeoutMs = 2000; // a daemon that is busy later than that admits us

    QDBusMessage ping = QDBusMessage::createMethodCall(Service, QStringLiteral("/"),
                                                       QStringLiteral("org.freedesktop.DBus.Peer"),
                                                       QStringLiteral("Ping"));
    ping.setAutoStartService(false);
    const QDBusError error(QDBusConnection::systemBus().call(ping, QDBus::Block, AnswerTimeoutMs));
    return error.type() == QDBusError::AccessDenied ? callFailure(error, true, AnswerTimeoutMs)
                                                    : Outcome();
}

Outcome Context::requireStartableRuntime()
{
    Outcome reachable = requireDaemon();
    if (!reachable.isDone())
        return reachable;
    const RuntimeUnit::State state = unit().read();
    return state.hasFailed() ? failed() : state.outcome;
}

Outcome Context::requireRunningRuntime()
{
    Outcome reachable = requireDaemon();
    if (!reachable.isDone())
        return reachable;
    const RuntimeUnit::State state = unit().read();
    if (!state.outcome.isDone() || state.isActive())
        return state.outcome;
    if (state.hasFailed())
        return failed();
    return {ExitStatus::RuntimeUnavailable,
            QStringLiteral("The Android runtime does not run (it is %1). Start it with “bramctl "
                           "start”.")
                .arg(state.activeState)};
}
