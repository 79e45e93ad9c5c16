#include "daemon/systembuswatch.h"

#include "platform/host/logging.h"

#include <QCoreApplication>
#include <QDBusConnection>

#include <cstdlib>

SystemBusWatch::SystemBusWatch()
{
    // A message that the bus library makes for itself.
    QDBusConnection::systemBus().connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                                         QStringLiteral("org.freedesktop.DBus.Local"),
                                         QStringLiteral("Disconnected"), this,
                                         SLOT(onDisconnected()));
}

void SystemBusWatch::onDisconnected()
{
    qCCritical(daemonLog) << "The system bus is gone, ending";
    QCoreApplication::exit(EXIT_FAILURE);
}
