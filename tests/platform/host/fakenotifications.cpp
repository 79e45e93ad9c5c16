#include "platform/host/fakenotifications.h"

#include <QDBusConnection>

namespace {

const char connectionName[] = "notifications";

} // namespace

FakeNotifications::FakeNotifications(const QString &address)
{
    QDBusConnection bus = QDBusConnection::connectToBus(address, QLatin1String(connectionName));
    bus.registerVirtualObject(QStringLiteral("/org/freedesktop/Notifications"), this);
    bus.registerService(QStringLiteral("org.freedesktop.Notifications"));
}

FakeNotifications::~FakeNotifications()
{
    QDBusConnection::disconnectFromBus(QLatin1String(connectionName));
}

bool FakeNotifications::handleMessage(const QDBusMessage &message,
                                      const QDBusConnection &connection)
{
    Q_UNUSED(connection)
    messages.append(message);
    return true;
}

QString FakeNotifications::introspect(const QString &path) const
{
    Q_UNUSED(path)
    return QString();
}
