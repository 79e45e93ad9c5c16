#include "tools/ctl/daemonstatus.h"

#include "tools/common/daemonclient.h"

namespace DaemonStatus {

QString text(Context::DaemonState state)
{
    switch (state) {
    case Context::DaemonState::Running:
        return QStringLiteral("running");
    case Context::DaemonState::Startable:
        return QStringLiteral("not running; starts with the next request");
    case Context::DaemonState::Missing:
        return QStringLiteral("not installed, or not known to the bus");
    case Context::DaemonState::NoBus:
        break;
    }
    return QStringLiteral("not known, because the system bus cannot be reached");
}

QString word(Context::DaemonState state)
{
    switch (state) {
    case Context::DaemonState::Running:
        return QStringLiteral("running");
    case Context::DaemonState::Startable:
        return QStringLiteral("startable");
    case Context::DaemonState::Missing:
        return QStringLiteral("missing");
    case Context::DaemonState::NoBus:
        break;
    }
    return QStringLiteral("unknown");
}

AndroidVersionData androidVersion(Context &context, Context::DaemonState state)
{
    if (state != Context::DaemonState::Running)
        return {};
    QDBusPendingReply<AndroidVersionData> reply = context.daemon().proxy().getAndroidVersionData();
    return context.daemon().finish(reply).isDone() ? reply.value() : AndroidVersionData();
}

} // namespace DaemonStatus
