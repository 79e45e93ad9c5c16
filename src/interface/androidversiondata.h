#pragma once

#include <QDBusArgument>
#include <QMetaType>
#include <QString>

/// Which Android the runtime image carries. On the bus: (iss), in this order.
struct AndroidVersionData
{
    int sdkVersion = 0;    ///< 0: not known
    QString release;       ///< empty: not known
    QString securityPatch; ///< a date; empty: not known
};

bool operator==(const AndroidVersionData &left, const AndroidVersionData &right);
QDBusArgument &operator<<(QDBusArgument &argument, const AndroidVersionData &data);
const QDBusArgument &operator>>(const QDBusArgument &argument, AndroidVersionData &data);

Q_DECLARE_METATYPE(AndroidVersionData)
