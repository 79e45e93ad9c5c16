// usage: floor_qtservice NAME [login]
// The least that a Qt service on the system bus can be: an object with one adaptor of one method.
// It is linked with the same libraries as the daemon. With "login" it first sees that somebody is
// logged in, as the daemon does.

#include "floors/qtservice.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMetaType>

#include <cstdlib>
#include <systemd/sd-login.h>

namespace {

/// Nothing is waited for but the end of the watch, for which the kernel takes its time.
bool isLoggedIn()
{
    sd_login_monitor *monitor = nullptr;
    uid_t user = 0;
    const bool known = sd_login_monitor_new("seat", &monitor) >= 0 &&
                       sd_seat_get_active("seat0", nullptr, &user) >= 0;
    sd_login_monitor_unref(monitor);
    return known;
}

} // namespace

AndroidVersionData VersionAdaptor::getAndroidVersionData() const
{
    return {28, QStringLiteral("9"), QStringLiteral("2021-05-05")};
}

int main(int argc, char *argv[])
{
    if (argc == 3 && !isLoggedIn())
        return EXIT_FAILURE;
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
