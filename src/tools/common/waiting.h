#pragma once

#include <functional>

/// Waiting for what the daemon or the runtime brings about, with the event loop running.
namespace Waiting {

/// Looks several times a second until the condition holds; false when the time was up before.
bool until(const std::function<bool()> &condition, int timeoutMs);

} // namespace Waiting
