#include "daemon/callercheck.h"

#include "daemon/buscredentials.h"
#include "daemon/processowner.h"
#include "platform/host/devicepolicy.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusReply>

namespace {

constexpr uint superuser = 0;

bool isSameProcess(const ProcessOwner &process, const BusCredentials &connection)
{
    const bool groupsAreKnown = !connection.groups.isEmpty();
    return connection.user == process.userId &&
           (!groupsAreKnown || connection.groups.contains(process.groupId));
}

bool isPrivileged(const BusCredentials &connection)
{
    if (!connection.processId)
        return false;
    const std::optional<ProcessOwner> process = ProcessOwner::of(*connection.processId);
    return process && isPrivileged(*process, connection);
}

} // namespace

bool isPrivileged(const ProcessOwner &process, const BusCredentials &connection)
{
    return isSameProcess(process, connection) &&
           (process.group == QLatin1String("privileged") ||
            process.group == QLatin1String("disk") || process.user == QLatin1String("root"));
}

UserRights rightsOf(const BusCredentials &connection)
{
    if (!connection.user || *connection.user == superuser)
        return UserRights();
    return {*connection.user, connection.groups};
}

CallerCheck::CallerCheck(DevicePolicy *policy)
    : m_policy(policy)
{
}

CallerVerdict CallerCheck::verdict(const QDBusContext &context) const
{
    if (!context.calledFromDBus())
        return {true, std::nullopt};
    // One question for everything, so that the answers are about one connection.
    const QDBusReply<QVariantMap> reply = context.connection().interface()->call(
        QStringLiteral("GetConnectionCredentials"), context.message().service());
    return verdict(BusCredentials::fromReply(reply.value()));
}

CallerVerdict CallerCheck::verdict(const BusCredentials &connection) const
{
    if (isPrivileged(connection))
        return {true, std::nullopt};
    return {m_policy->mayInstallApps(), rightsOf(connection)};
}
