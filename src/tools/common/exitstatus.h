#pragma once

/// How a tool ends, the same for all of them; scripts rely on the numbers, and the manual pages
/// list them.
enum class ExitStatus {
    /// The daemon has taken the request, or what was asked for has been seen to happen.
    Done = 0,
    /// The daemon, its policy or the runtime has refused the request, or it has failed.
    Refused = 1,
    /// The command line makes no sense. Nothing was asked of anybody.
    Usage = 2,
    /// Nothing was heard in time. It may have happened, or may happen yet.
    NotConfirmed = 3,
    /// There is no daemon to ask: no bus, not started, or gone during the call.
    DaemonUnreachable = 4,
    /// The Android runtime is not installed, has failed, or cannot be asked about.
    RuntimeUnavailable = 5,
};
