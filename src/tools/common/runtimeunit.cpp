#include "tools/common/runtimeunit.h"

#include "tools/common/callfailure.h"

#include <QDBusMessage>

namespace {

const QString Systemd = QStringLiteral("org.freedesktop.systemd1");
const QString ManagerPath = QStringLiteral("/org/freedesktop/systemd1");
const QString ManagerInterface = QStringLiteral("org.freedesktop.systemd1.Manager");
const QString PropertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
const QString UnitInterface = QStringLiteral("org.freedesktop.systemd1.Unit");
const QString Unit = QStringLiteral("umbravm.service");

RuntimeUnit::State unstartable(const QString &why)
{
    RuntimeUnit::State state;
    state.isUnstartable = true;
    state.outcome = {ExitStatus::RuntimeUnavailable, why};
    return state;
}

RuntimeUnit::State missing()
{
    return unstartable(QStringLiteral("The Android runtime is not installed: systemd knows no unit "
                                      "umbravm.service. Install the runtime first."));
}

RuntimeUnit::State masked()
{
    return unstartable(
        QStringLiteral("The Android runtime may not be started: its unit is masked. “systemctl "
                       "unmask umbravm.service” as root changes that."));
}

RuntimeUnit::State broken(const QString &loadState)
{
    return unstartable(
        QStringLiteral("The Android runtime cannot be started: systemd cannot use its unit (%1). "
                       "“systemctl status umbravm.service” tells why.")
            .arg(loadState));
}

RuntimeUnit::State notKnown(const QDBusError &error)
{
    if (error.name() == QLatin1String("org.freedesktop.systemd1.NoSuchUnit"))
        return missing();
    RuntimeUnit::State state;
    if (error.type() == QDBusError::Disconnected) {
        state.outcome = busFailure(error);
    } else {
        state.outcome = {ExitStatus::RuntimeUnavailable,
                         QStringLiteral("systemd does not tell the state of the Android runtime "
                                        "(%1). Look at “systemctl status umbravm.service”.")
                             .arg(oneLine(error))};
    }
    return state;
}

QDBusMessage managerCall(const QString &method)
{
    return QDBusMessage::createMethodCall(Systemd, ManagerPath, ManagerInterface, method);
}

} // namespace

RuntimeUnit::RuntimeUnit(const QDBusConnection &bus, int timeoutMs, QObject *parent)
    : QObject(parent)
    , m_bus(bus)
    , m_timeoutMs(timeoutMs)
{
}

QDBusReply<QDBusObjectPath> RuntimeUnit::load() const
{
    // A unit that is not running need not be in systemd's memory; this has it looked for.
    return m_bus.call(managerCall(QStringLiteral("LoadUnit")) << Unit, QDBus::Block, m_timeoutMs);
}

RuntimeUnit::State RuntimeUnit::read() const
{
    const QDBusReply<QDBusObjectPath> unit = load();
    if (!unit.isValid())
        return notKnown(unit.error());

    QDBusMessage getAll = QDBusMessage::createMethodCall(
        Systemd, unit.value().path(), PropertiesInterface, QStringLiteral("GetAll"));
    getAll << UnitInterface;
    const QDBusReply<QVariantMap> reply = m_bus.call(getAll, QDBus::Block, m_timeoutMs);
    if (!reply.isValid())
        return notKnown(reply.error());

    const QVariantMap properties = reply.value();
    const QString loadState = properties.value(QStringLiteral("LoadState")).toString();
    // systemd has an object for every name that it was ever asked about.
    if (loadState == QLatin1String("not-found"))
        return missing();
    State state;
    state.activeState = properties.value(QStringLiteral("ActiveState")).toString();
    // What ran before its unit was masked or spoilt goes on.
    if (state.activeState != QLatin1String("active")) {
        if (loadState == QLatin1String("masked"))
            return masked();
        if (loadState != QLatin1String("loaded"))
            return broken(loadState);
    }
    state.subState = properties.value(QStringLiteral("SubState")).toString();
    // A unit that is loaded keeps the property as it was, until somebody reloads systemd, which the
    // daemon does not do after it has enabled the unit. The manager looks at the files.
    const QDBusReply<QString> fileState = m_bus.call(
        managerCall(QStringLiteral("GetUnitFileState")) << Unit, QDBus::Block, m_timeoutMs);
    state.unitFileState = fileState.isValid()
                              ? fileState.value()
                              : properties.value(QStringLiteral("UnitFileState")).toString();
    return state;
}

Outcome RuntimeUnit::watch()
{
    const QDBusReply<QDBusObjectPath> unit = load();
    if (!unit.isValid())
        return notKnown(unit.error()).outcome;
    // Without a subscriber, systemd keeps its news to itself.
    const QDBusReply<void> subscribed =
        m_bus.call(managerCall(QStringLiteral("Subscribe")), QDBus::Block, m_timeoutMs);
    if (!subscribed.isValid())
        return notKnown(subscribed.error()).outcome;
    m_bus.connect(Systemd, unit.value().path(), PropertiesInterface,
                  QStringLiteral("PropertiesChanged"), this,
                  SLOT(onPropertiesChanged(QString, QVariantMap)));
    return {};
}

void RuntimeUnit::onPropertiesChanged(const QString &interface, const QVariantMap &changed)
{
    const QString activeState = changed.value(QStringLiteral("ActiveState")).toString();
    if (interface == UnitInterface && !activeState.isEmpty())
        Q_EMIT activeStateChanged(activeState);
}
