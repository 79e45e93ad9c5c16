#pragma once

#include "interface/androidversiondata.h"
#include "tools/ctl/context.h"

#include <QString>

/// The daemon, as far as it can be seen without starting it.
namespace DaemonStatus {

/// What the daemon, if it runs, says to a short question. Nobody who asks for a state wants to wait
/// for one that hangs, nor is it a reason to start one.
struct Answer
{
    Outcome outcome;            ///< done also when the daemon does not run
    AndroidVersionData android; ///< empty when it is not known

    /// It runs, but has said nothing in time.
    bool isMissing() const { return outcome.status == ExitStatus::NotConfirmed; }
};

Answer ask(Context::DaemonState state);

/// What a daemon is that does not answer, and what to do about it.
QString silence();
QString adviceOnSilence();

/// For people.
QString text(Context::DaemonState state, const Answer &answer);

/// For scripts.
QString word(Context::DaemonState state, const Answer &answer);

} // namespace DaemonStatus
