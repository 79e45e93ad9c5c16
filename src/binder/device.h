#pragma once

namespace UmbraBinder {

/// The runtime's binder device on the host. The runtime has a driver instance of its own, so that
/// nothing else on the host speaks on it.
constexpr char Device[] = "/dev/marshhopper";

} // namespace UmbraBinder
