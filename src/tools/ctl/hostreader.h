#pragma once

#include "tools/ctl/doctor.h"

class Context;

namespace HostReader {

/// The host as the user of this program finds it. Starts nothing.
HostState read(Context &context);

} // namespace HostReader
