#pragma once

#include "tools/common/outcome.h"
#include "tools/ctl/output.h"

#include <memory>

class DaemonClient;
class RuntimeUnit;

/// What the handlers of commands work with. Nothing is connected before it is asked for.
class Context
{
public:
    Context();
    ~Context();

    Output &out() { return m_output; }
    DaemonClient &daemon();
    RuntimeUnit &unit();

    /// How the daemon could be reached, without starting it.
    enum class DaemonState {
        Running,
        Startable, ///< the bus starts it for the next request
        Missing,
        NoBus
    };
    DaemonState daemonState() const;

    /// What the bus calls the daemon that runs, another name for each; empty when none does.
    QString daemonOwner() const;

    /// Done when a request would find a daemon.
    Outcome requireDaemon() const;

    /// Done unless the bus says that this user may not call the daemon, nor hear its signals. It
    /// says so only while the daemon runs.
    Outcome requirePermission() const;

    /// Done when there is a daemon and the runtime is started by the request, if it does not run:
    /// the daemon leaves a unit alone that has failed, and would keep the request for ever.
    Outcome requireStartableRuntime();

    /// Done when there is a daemon and the runtime runs: some requests are only asked of it, and
    /// answered with nothing when it does not run.
    Outcome requireRunningRuntime();

private:
    Output m_output;
    std::unique_ptr<DaemonClient> m_daemon;
    std::unique_ptr<RuntimeUnit> m_unit;
};
