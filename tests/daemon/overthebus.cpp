#include "daemon/overthebus.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QtTest>

namespace {

const char client[] = "client";
const char service[] = "service";

} // namespace

OverTheBus::~OverTheBus()
{
    QDBusConnection::disconnectFromBus(QLatin1String(client));
    QDBusConnection::disconnectFromBus(QLatin1String(service));
}

bool OverTheBus::start()
{
    if (!m_bus.start())
        return false;
    QDBusConnection bus = QDBusConnection::connectToBus(m_bus.address(), QLatin1String(service));
    return bus.registerObject(QStringLiteral("/"), this, QDBusConnection::ExportAllSlots) &&
           QDBusConnection::connectToBus(m_bus.address(), QLatin1String(client)).isConnected();
}

QVariantMap OverTheBus::carry(const QVariantMap &values)
{
    m_taken.clear();
    QDBusMessage message =
        QDBusMessage::createMethodCall(QDBusConnection(QLatin1String(service)).baseService(),
                                       QStringLiteral("/"), QString(), QStringLiteral("take"));
    message.setArguments({values});
    const QDBusPendingCall call = QDBusConnection(QLatin1String(client)).asyncCall(message);
    if (!QTest::qWaitFor([&call] { return call.isFinished(); }, 30000) || call.isError())
        qWarning() << "Not carried:" << call.error().message();
    return m_taken;
}

QVariant OverTheBus::carryValue(const QVariant &value)
{
    const QString key = QStringLiteral("value");
    return carry(QVariantMap{{key, value}}).value(key);
}

void OverTheBus::take(const QVariantMap &values)
{
    m_taken = values;
}
