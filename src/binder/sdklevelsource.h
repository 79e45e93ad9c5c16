#pragma once

namespace UmbraBinder {

/// Tells the binder client library to ask DaemonConfig for the runtime's SDK level. Whoever opens
/// the first connection or registers the first service gets here, so that no call can go out
/// without the level being asked for.
void provideSdkLevel();

} // namespace UmbraBinder
