#pragma once

/// The host's cache of which desktop entry opens which MIME type.
namespace DesktopDatabase {

constexpr int RefreshTimeoutMs = 30000;

/// Has the cache built anew and blocks until that is done; usually some milliseconds. What the
/// program answers does not matter, and a host without it has no cache. A program that does not
/// end in time is ended, with a warning, so that it cannot stop the daemon for ever.
void refresh(int timeoutMs = RefreshTimeoutMs);

} // namespace DesktopDatabase
