#pragma once

#include "interface/androidversiondata.h"
#include "tools/ctl/context.h"

#include <QString>

/// The daemon, as far as it can be seen without starting it.
namespace DaemonStatus {

/// For people.
QString text(Context::DaemonState state);

/// For scripts.
QString word(Context::DaemonState state);

/// Empty when the daemon does not run, or does not know: asking for a state is no reason to start
/// it.
AndroidVersionData androidVersion(Context &context, Context::DaemonState state);

} // namespace DaemonStatus
