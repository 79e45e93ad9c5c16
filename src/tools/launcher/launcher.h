#pragma once

#include "tools/common/daemonclient.h"
#include "tools/common/runtimeunit.h"

struct LaunchRequest;

/// Has the daemon start an activity. Done means that the daemon has taken all of the request;
/// nobody is told whether the app started.
class Launcher
{
public:
    explicit Launcher(const QDBusConnection &bus = QDBusConnection::systemBus());

    /// One call per file or URL, in their order, up to the first that fails. Blocks meanwhile; the
    /// daemon itself answers only when the app's window is there, or does not come.
    Outcome launch(const LaunchRequest &request);

private:
    Outcome start(const LaunchRequest &request, const QString &action, const QString &data,
                  const QString &type);

    DaemonClient m_daemon;
    RuntimeUnit m_unit;
};
