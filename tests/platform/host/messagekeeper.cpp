#include "platform/host/messagekeeper.h"

#include <QDBusConnection>

MessageKeeper::MessageKeeper(const QString &address, const QString &service, const QString &path)
    : m_connectionName(service)
{
    QDBusConnection bus = QDBusConnection::connectToBus(address, m_connectionName);
    bus.registerVirtualObject(path, this);
    bus.registerService(service);
}

MessageKeeper::~MessageKeeper()
{
    QDBusConnection::disconnectFromBus(m_connectionName);
}

bool MessageKeeper::handleMessage(const QDBusMessage &message, const QDBusConnection &connection)
{
    Q_UNUSED(connection)
    messages.append(message);
    return true;
}

QString MessageKeeper::introspect(const QString &path) const
{
    Q_UNUSED(path)
    return QString();
}
