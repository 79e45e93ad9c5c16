#pragma once

#include "tools/ctl/invocation.h"

#include <functional>

/// Waiting for what the daemon or the runtime brings about, with the event loop running.
namespace Waiting {

/// Looks several times a second until the condition holds; false when the time was up before.
bool until(const std::function<bool()> &condition, int timeoutMs);

/// The milliseconds of the option "--timeout", or of its default; nothing below one second.
/// A value that is no such number of seconds gives -1.
int timeoutMs(const Invocation &invocation, int defaultSeconds);

} // namespace Waiting
