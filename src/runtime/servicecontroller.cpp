#include "runtime/servicecontroller.h"

#include "runtime/logging.h"

#include <QDBusAbstractInterface>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusReply>

#include <limits>

namespace {

const QString Service = QStringLiteral("org.freedesktop.systemd1");
const QString ManagerPath = QStringLiteral("/org/freedesktop/systemd1");
constexpr char ManagerInterface[] = "org.freedesktop.systemd1.Manager";
const QString UnitInterface = QStringLiteral("org.freedesktop.systemd1.Unit");
const QString PropertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
const QString Unit = QStringLiteral("umbravm.service");

const QString ActiveState = QStringLiteral("ActiveState");
const QString SubState = QStringLiteral("SubState");
const QString UnitFileState = QStringLiteral("UnitFileState");
const QString Enabled = QStringLiteral("enabled");

// QDBusConnection takes milliseconds; the largest number is libdbus's "wait for ever".
constexpr int NoTimeout = std::numeric_limits<int>::max();

/// systemd's manager. Unlike QDBusInterface, it does not ask systemd to describe itself first.
class SystemdManager : public QDBusAbstractInterface
{
public:
    explicit SystemdManager(QObject *parent)
        : QDBusAbstractInterface(Service, ManagerPath, ManagerInterface,
                                 QDBusConnection::systemBus(), parent)
    {
    }
};

void logState(const QVariantMap &properties)
{
    qCDebug(serviceLog) << "Umbra VM is" << properties.value(ActiveState).toString() << "("
                        << properties.value(SubState).toString() << ")";
}

} // namespace

ServiceController *ServiceController::instance()
{
    static ServiceController *controller = new ServiceController;
    return controller;
}

ServiceController::ServiceController()
    : m_manager(new SystemdManager(this))
{
    m_manager->call(QStringLiteral("Subscribe"));
    const QDBusReply<QDBusObjectPath> unit = m_manager->call(QStringLiteral("LoadUnit"), Unit);
    if (!unit.isValid()) {
        qCCritical(serviceLog) << "Could not find Umbra VM service:" << unit.error().message();
        m_serviceState = QStringLiteral("invalid");
        return;
    }
    m_unitPath = unit.value().path();

    QDBusMessage getAll = QDBusMessage::createMethodCall(Service, m_unitPath, PropertiesInterface,
                                                         QStringLiteral("GetAll"));
    getAll << UnitInterface;
    const QDBusReply<QVariantMap> reply =
        QDBusConnection::systemBus().call(getAll, QDBus::Block, NoTimeout);
    QDBusConnection::systemBus().connect(
        Service, m_unitPath, PropertiesInterface, QStringLiteral("PropertiesChanged"), this,
        SLOT(onPropertiesChanged(QString, QVariantMap, QStringList)));

    const QVariantMap properties = reply.value();
    m_serviceState = properties.value(ActiveState).toString();
    logState(properties);
    m_serviceEnabled = properties.value(UnitFileState).toString() == Enabled;
    // The first state is told like every other, even if nobody can listen yet.
    Q_EMIT serviceStateChanged(); // clazy:exclude=incorrect-emit
}

void ServiceController::onPropertiesChanged(const QString &interface, const QVariantMap &changed,
                                            const QStringList &invalidated)
{
    Q_UNUSED(invalidated)
    if (interface != UnitInterface)
        return;

    if (changed.contains(UnitFileState)) {
        const bool enabled = changed.value(UnitFileState) == QVariant(Enabled);
        if (enabled != m_serviceEnabled) {
            m_serviceEnabled = enabled;
            Q_EMIT serviceEnabledChanged();
        }
    }

    if (!changed.contains(ActiveState))
        return;
    logState(changed);
    const QString state = changed.value(ActiveState).toString();
    if (state != m_serviceState) {
        m_serviceState = state;
        Q_EMIT serviceStateChanged();
    }
}

void ServiceController::controlService(bool start)
{
    const QString done = start ? QStringLiteral("active") : QStringLiteral("inactive");
    const QString underWay = start ? QStringLiteral("activating") : QStringLiteral("deactivating");
    if (m_serviceState == done || m_serviceState == underWay)
        return;
    m_manager->asyncCall(start ? QStringLiteral("StartUnit") : QStringLiteral("StopUnit"), Unit,
                         QStringLiteral("replace"));
}

void ServiceController::controlServiceAutostart(bool enable)
{
    const QStringList units{Unit};
    const bool runtime = false;
    const bool force = true;
    if (enable)
        m_manager->asyncCall(QStringLiteral("EnableUnitFiles"), units, runtime, force);
    else
        m_manager->asyncCall(QStringLiteral("DisableUnitFiles"), units, runtime);
}
