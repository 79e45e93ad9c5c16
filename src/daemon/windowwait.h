#pragma once

#include <QString>

/// Blocks until the runtime's compositor shows a window of the package, but for no more than about
/// five seconds: ten looks, half a second apart. So the next launch does not overtake this one.
/// Returns at once when there is no compositor.
void waitForWindow(const QString &packageName);
