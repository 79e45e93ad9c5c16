#pragma once

#include "tools/common/outcome.h"
#include "tools/common/runtimeunit.h"

#include <QDeadlineTimer>

/// Tells from the states of the runtime's unit, read again and again, what has become of a start.
class StartWatch
{
public:
    /// A unit that had failed before shows so until systemd has begun, and again when the start
    /// fails at once, too fast to be seen, or systemd does not begin: after several failures in a
    /// row it refuses to. This long, in milliseconds, it may still begin.
    static constexpr int LookedFailedMs = 5000;

    /// Made when the start has just been asked for; `before` is the state until then.
    explicit StartWatch(const RuntimeUnit::State &before);

    /// Whether it is known what has become of it: the unit is active, it has failed, or nothing can
    /// be known.
    bool hasEnded(const RuntimeUnit::State &now);

    /// What is said of a start that ended in failure.
    static Outcome failure();

private:
    bool m_hasBegun;
    QDeadlineTimer m_looksFailed{LookedFailedMs};
};
