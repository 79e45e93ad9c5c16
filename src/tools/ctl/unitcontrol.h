#pragma once

#include "tools/common/outcome.h"

class Context;

/// Starts and stops the runtime's unit through the daemon, and looks at systemd for what became of
/// it: the daemon's calls have no result.
namespace UnitControl {

/// Done when the unit is active.
Outcome start(Context &context, int timeoutMs);

/// Done when the unit is inactive, or has failed before.
Outcome stop(Context &context, int timeoutMs);

/// stop(), unless it has stopped, and start(), both in that time. One that did not stop in order,
/// as when it had to be killed, is started all the same.
Outcome restart(Context &context, int timeoutMs);

/// Done when systemd says that the unit starts at boot, or does not.
Outcome setAutostart(Context &context, bool enable);

} // namespace UnitControl
