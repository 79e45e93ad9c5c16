#pragma once

#include <functional>

namespace Binder {

/// Gives the library the runtime's Android SDK level, which decides the layout of interface
/// tokens. It is asked anew for every token, because the runtime may be installed or replaced
/// while the process runs; the function should be cheap once it knows the answer and return 0
/// while it does not. Without a source the level is 0 (unknown).
void setSdkLevelSource(std::function<int()> source);

/// The level as the source tells it now.
int sdkLevel();

} // namespace Binder
