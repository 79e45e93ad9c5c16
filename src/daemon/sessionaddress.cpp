#include "daemon/sessionaddress.h"

#include <QString>

QByteArray sessionBusAddress(uid_t user)
{
    return QStringLiteral("unix:path=/run/user/%1/dbus/user_bus_socket").arg(user).toUtf8();
}
