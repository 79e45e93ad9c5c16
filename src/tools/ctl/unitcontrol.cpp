#include "tools/ctl/unitcontrol.h"

#include "tools/common/daemonclient.h"
#include "tools/common/runtimeunit.h"
#include "tools/common/startwatch.h"
#include "tools/ctl/context.h"
#include "tools/ctl/waiting.h"

#include <QDeadlineTimer>

namespace UnitControl {

namespace {

constexpr int AutostartTimeoutMs = 10000;

Outcome notInTime(const QString &wanted, const RuntimeUnit::State &state)
{
    return {ExitStatus::NotConfirmed,
            QStringLiteral("The Android runtime was not %1 in time; it is %2. “bramctl status” "
                           "shows when that changes, and “journalctl -u umbravm” what it does.")
                .arg(wanted, state.activeState)};
}

/// The unit as it is, or why nothing can be asked of the daemon.
RuntimeUnit::State stateBefore(Context &context)
{
    RuntimeUnit::State state;
    state.outcome = context.requireDaemon();
    return state.outcome.isDone() ? context.unit().read() : state;
}

bool hasStopped(const RuntimeUnit::State &state)
{
    return state.activeState == QLatin1String("inactive") || state.hasFailed();
}

/// Done when it has stopped, in order or not: `state` tells.
Outcome waitUntilStopped(Context &context, int timeoutMs, RuntimeUnit::State &state)
{
    const Outcome taken = context.daemon().finish(context.daemon().proxy().controlService(false));
    if (!taken.isDone())
        return taken;
    const auto hasEnded = [&context, &state] {
        state = context.unit().read();
        return !state.outcome.isDone() || hasStopped(state);
    };
    const bool inTime = Waiting::until(hasEnded, timeoutMs);
    if (!state.outcome.isDone())
        return state.outcome;
    return inTime ? Outcome() : notInTime(QStringLiteral("stopped"), state);
}

} // namespace

Outcome start(Context &context, int timeoutMs)
{
    RuntimeUnit::State state = stateBefore(context);
    if (!state.outcome.isDone())
        return state.outcome;
    if (state.isActive()) {
        context.out().line(QStringLiteral("The Android runtime runs already."));
        return {};
    }

    const Outcome taken = context.daemon().finish(context.daemon().proxy().controlService(true));
    if (!taken.isDone())
        return taken;
    StartWatch watch(state);
    const auto hasEnded = [&] {
        state = context.unit().read();
        return watch.hasEnded(state);
    };
    const bool inTime = Waiting::until(hasEnded, timeoutMs);
    if (!state.outcome.isDone())
        return state.outcome;
    if (!inTime)
        return notInTime(QStringLiteral("active"), state);
    if (state.hasFailed())
        return StartWatch::failure();
    context.out().line(QStringLiteral("The Android runtime runs."));
    return {};
}

Outcome stop(Context &context, int timeoutMs)
{
    const RuntimeUnit::State before = stateBefore(context);
    if (!before.outcome.isDone())
        return before.outcome;
    if (hasStopped(before)) {
        context.out().line(
            QStringLiteral("The Android runtime does not run (%1).").arg(before.activeState));
        return {};
    }
    RuntimeUnit::State state;
    const Outcome stopped = waitUntilStopped(context, timeoutMs, state);
    if (stopped.isDone() && state.hasFailed()) {
        return {ExitStatus::Refused,
                QStringLiteral("The Android runtime has stopped, but not in order. “journalctl -u "
                               "umbravm” tells why.")};
    }
    if (stopped.isDone())
        context.out().line(QStringLiteral("The Android runtime has stopped."));
    return stopped;
}

Outcome restart(Context &context, int timeoutMs)
{
    const QDeadlineTimer deadline(timeoutMs);
    const RuntimeUnit::State before = stateBefore(context);
    if (!before.outcome.isDone())
        return before.outcome;
    if (!hasStopped(before)) {
        RuntimeUnit::State state;
        const Outcome stopped = waitUntilStopped(context, timeoutMs, state);
        if (!stopped.isDone())
            return stopped;
        context.out().line(
            state.hasFailed() ? QStringLiteral("The Android runtime has stopped, but not in order.")
                              : QStringLiteral("The Android runtime has stopped."));
    }
    return start(context, static_cast<int>(deadline.remainingTime()));
}

Outcome setAutostart(Context &context, bool enable)
{
    RuntimeUnit::State state = stateBefore(context);
    if (!state.outcome.isDone())
        return state.outcome;
    const Outcome taken =
        context.daemon().finish(context.daemon().proxy().controlServiceAutostart(enable));
    if (!taken.isDone())
        return taken;

    const auto isSet = [&] {
        state = context.unit().read();
        return !state.outcome.isDone() || state.isEnabled() == enable;
    };
    const bool inTime = Waiting::until(isSet, AutostartTimeoutMs);
    if (!state.outcome.isDone())
        return state.outcome;
    if (!inTime) {
        return {ExitStatus::NotConfirmed,
                QStringLiteral("systemd still says “%1” of umbravm.service. “systemctl is-enabled "
                               "umbravm” shows when that changes.")
                    .arg(state.unitFileState)};
    }
    context.out().line(enable
                           ? QStringLiteral("The Android runtime starts at boot.")
                           : QStringLiteral("The Android runtime starts only when it is needed."));
    return {};
}

} // namespace UnitControl
