#pragma once

#include "tools/common/runtimeunit.h"

#include <QString>

#include <functional>

class Context;

/// Waits until the host shows that a request has been carried out which the daemon has taken, or
/// until it no longer can be: the daemon keeps requests in its memory, and the runtime carries them
/// out.
class RequestWait
{
public:
    enum class End {
        Seen,
        RuntimeUnknown, ///< unit() tells why
        RuntimeFailed,
        DaemonGone, ///< or another one is there, which knows of nothing
        TimeUp
    };

    /// Made when the daemon has taken the request.
    RequestWait(Context &context, bool tellsStates);

    /// Each new state of the runtime is told meanwhile, if that is wanted.
    End until(const std::function<bool()> &isSeen, int timeoutMs);

    /// The runtime's unit, as it was last.
    const RuntimeUnit::State &unit() const { return m_unit; }

private:
    void lookAtUnit();

    Context &m_context;
    QString m_daemon; ///< what the bus calls it
    bool m_tellsStates;
    RuntimeUnit::State m_unit;
    QString m_toldState;
};
