#include "daemon/callercheck.h"

#include "platform/host/devicepolicy.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusContext>
#include <QDBusMessage>
#include <QFileInfo>

bool isPrivileged(const QString &group, const QString &owner)
{
    return group == QLatin1String("privileged") || group == QLatin1String("disk") ||
           owner == QLatin1String("root");
}

CallerCheck::CallerCheck(DevicePolicy *policy)
    : m_policy(policy)
{
}

bool CallerCheck::passes(const QDBusContext &context) const
{
    if (!context.calledFromDBus())
        return true;
    const QDBusReply<uint> processId =
        context.connection().interface()->servicePid(context.message().service());
    return processPasses(processId.value());
}

bool CallerCheck::processPasses(uint processId) const
{
    const QFileInfo process(QStringLiteral("/proc/%1").arg(processId));
    return isPrivileged(process.group(), process.owner()) || m_policy->mayInstallApps();
}
