#pragma once

#include "tools/common/outcome.h"

#include <QString>

class DaemonClient;
class RuntimeUnit;

/// Whether the Android runtime is there, can run, and takes what the daemon is asked for.
namespace RuntimeReady {

/// Whether there is a runtime at all: its system image, which the store brings.
bool isInstalled();

/// Done when a request has the daemon start the runtime, if it does not run. One that has failed is
/// started here: after a crash the daemon leaves the unit alone, lest it start what fails again and
/// again, and this is for when somebody wants to use it. Blocks for a few seconds then, to see
/// whether it fails again; what starts for longer is left to it. When systemd does not tell how the
/// unit is, the daemon may know better.
Outcome makeStartable(const RuntimeUnit &unit, DaemonClient &daemon);

/// Why the daemon did not take the file for installing: it answers false, without a reason.
Outcome installRefusal(const RuntimeUnit &unit, const QString &path);

} // namespace RuntimeReady
