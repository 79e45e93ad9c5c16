// usage: floor_qtservice NAME
// The least that a Qt service on the system bus can be: an object with one adaptor of one method.
// It is linked with the same libraries as the daemon.

#include "floors/qtservice.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMetaType>

#include <cstdlib>

AndroidVersionData VersionAdaptor::getAndroidVersionData() const
{
    return {28, QStringLiteral("9"), QStringLiteral("2021-05-05")};
}

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    qDBusRegisterMetaType<AndroidVersionData>();
    QObject service;
    new VersionAdaptor(&service);
    QDBusConnection bus = QDBusConnection::systemBus();
    if (!bus.registerObject(QStringLiteral("/com/corvo/bramd"), &service) ||
        !bus.registerService(QCoreApplication::arguments().value(1)))
        return EXIT_FAILURE;
    return QCoreApplication::exec();
}
