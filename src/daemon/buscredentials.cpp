#include "daemon/buscredentials.h"

#include <QDBusArgument>

namespace {

std::optional<uint> number(const QVariant &value)
{
    if (value.userType() != QMetaType::UInt)
        return std::nullopt;
    return value.toUInt();
}

} // namespace

BusCredentials BusCredentials::fromReply(const QVariantMap &reply)
{
    BusCredentials credentials;
    credentials.processId = number(reply.value(QStringLiteral("ProcessID")));
    credentials.user = number(reply.value(QStringLiteral("UnixUserID")));
    credentials.groups =
        qdbus_cast<QList<uint>>(reply.value(QStringLiteral("UnixGroupIDs"))).toVector();
    return credentials;
}
