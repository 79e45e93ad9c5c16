#pragma once

#include <QDBusArgument>
#include <QMetaType>

/// What an app takes on disk, in bytes. On the bus: (xxx), in this order.
struct AppSizeInfo
{
    qint64 codeSize = 0;
    qint64 dataSize = 0; ///< without the cache
    qint64 cacheSize = 0;
};

bool operator==(const AppSizeInfo &left, const AppSizeInfo &right);
QDBusArgument &operator<<(QDBusArgument &argument, const AppSizeInfo &info);
const QDBusArgument &operator>>(const QDBusArgument &argument, AppSizeInfo &info);

Q_DECLARE_METATYPE(AppSizeInfo)
