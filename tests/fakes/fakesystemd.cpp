#include "fakes/fakesystemd.h"

#include <QDBusError>
#include <QDBusObjectPath>

namespace {

const QString ConnectionName = QStringLiteral("fake systemd");
const QString ServiceName = QStringLiteral("org.freedesktop.systemd1");
const QString ManagerPath = QStringLiteral("/org/freedesktop/systemd1");
const QString Properties = QStringLiteral("org.freedesktop.DBus.Properties");

QString text(const QVariant &argument)
{
    if (argument.userType() == QMetaType::QStringList)
        return QLatin1Char('[') + argument.toStringList().join(QLatin1Char(' ')) + QLatin1Char(']');
    return argument.toString();
}

QString text(const QDBusMessage &call)
{
    QStringList arguments;
    for (const QVariant &argument : call.arguments())
        arguments.append(text(argument));
    return QStringLiteral("%1 %2.%3 %4 (%5)")
        .arg(call.path(), call.interface(), call.member(), call.signature(),
             arguments.join(QStringLiteral(", ")));
}

} // namespace

QVariantMap FakeSystemd::properties(const QString &activeState, const QString &subState,
                                    const QString &unitFileState)
{
    return {{QStringLiteral("LoadState"), QStringLiteral("loaded")},
            {QStringLiteral("ActiveState"), activeState},
            {QStringLiteral("SubState"), subState},
            {QStringLiteral("UnitFileState"), unitFileState}};
}

QString FakeSystemd::unitPath()
{
    return QStringLiteral("/org/freedesktop/systemd1/unit/umbravm_2eservice");
}

FakeSystemd::FakeSystemd(const QString &busAddress, const Unit &unit)
    : m_object(unit)
    , m_connection(QDBusConnection::connectToBus(busAddress, ConnectionName))
{
    m_up = m_connection.registerVirtualObject(ManagerPath, &m_object, QDBusConnection::SubPath);
    m_object.moveToThread(&m_thread);
    m_thread.start();
    m_up = m_up && m_connection.registerService(ServiceName);
}

FakeSystemd::~FakeSystemd()
{
    m_connection.unregisterObject(ManagerPath, QDBusConnection::UnregisterTree);
    m_thread.quit();
    m_thread.wait();
    QDBusConnection::disconnectFromBus(ConnectionName);
}

QStringList FakeSystemd::calls() const
{
    const QMutexLocker lock(&m_object.mutex);
    return m_object.calls;
}

void FakeSystemd::clearCalls()
{
    const QMutexLocker lock(&m_object.mutex);
    m_object.calls.clear();
}

void FakeSystemd::changeProperties(const QVariantMap &changed, const QString &interface)
{
    QDBusMessage signal =
        QDBusMessage::createSignal(unitPath(), Properties, QStringLiteral("PropertiesChanged"));
    signal << interface << changed << QStringList();
    m_connection.send(signal);
}

FakeSystemd::Object::Object(const Unit &unit)
    : m_unit(unit)
{
}

QString FakeSystemd::Object::introspect(const QString &path) const
{
    Q_UNUSED(path)
    return QString();
}

bool FakeSystemd::Object::handleMessage(const QDBusMessage &message,
                                        const QDBusConnection &connection)
{
    {
        const QMutexLocker lock(&mutex);
        calls.append(text(message));
    }
    connection.send(answer(message));
    return true;
}

QDBusMessage FakeSystemd::Object::answer(const QDBusMessage &message)
{
    if (message.member() == QStringLiteral("LoadUnit")) {
        if (!m_unit.loadable) {
            return message.createErrorReply(QStringLiteral("org.freedesktop.systemd1.UnitMasked"),
                                            QStringLiteral("Unit is masked."));
        }
        return message.createReply(QVariant::fromValue(QDBusObjectPath(unitPath())));
    }
    if (message.member() == QStringLiteral("GetAll")) {
        if (!m_unit.readable)
            return message.createErrorReply(QDBusError::AccessDenied, QStringLiteral("No."));
        const QVariantMap now = m_unit.properties;
        if (!m_unit.next.isEmpty())
            m_unit.properties = m_unit.next.takeFirst();
        return message.createReply(now);
    }
    if (message.member() == QStringLiteral("GetUnitFileState") && !m_unit.fileState.isEmpty())
        return message.createReply(m_unit.fileState);
    return message.createReply();
}
