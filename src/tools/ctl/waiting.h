#pragma once

#include "tools/common/waiting.h"
#include "tools/ctl/invocation.h"

namespace Waiting {

/// The milliseconds of the option "--timeout", or of its default; nothing below one second.
/// A value that is no such number of seconds gives -1.
int timeoutMs(const Invocation &invocation, int defaultSeconds);

} // namespace Waiting
