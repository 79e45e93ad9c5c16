#pragma once

#include "tools/common/outcome.h"

class DaemonClient;
class RuntimeUnit;

/// Has the runtime started anew if its unit has failed. After a crash the daemon leaves the unit
/// alone, lest it start what fails again and again; this is for when somebody wants to use it.
/// What is wrong with a unit that is not there, or cannot be asked about, is for others to say.
Outcome reviveFailedRuntime(const RuntimeUnit &unit, DaemonClient &daemon);
