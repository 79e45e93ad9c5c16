#pragma once

#include <QString>

#include <functional>

/// Blocks until the runtime's compositor shows a window of the package, but for no more than about
/// five seconds: ten looks, half a second apart. So the next launch does not overtake this one.
/// Returns at once when there is no compositor. `sleep` passes the time between two looks.
void waitForWindow(const QString &packageName,
                   const std::function<void(unsigned long milliseconds)> &sleep);
