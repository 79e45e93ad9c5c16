#pragma once

/// Whether the Android runtime's image is on this host.
bool isRuntimeInstalled();

/// Offers the user to install the Android runtime: opens its page in the store client, in the
/// session of the seat's user. Blocks until the launcher of the store client has done its work.
///
/// Returns the launcher's exit status, 1 on failure. When the child process that is to become the
/// launcher cannot, it does not end: it returns from this function as well, with 1.
int offerRuntime(const char *invoker = "/usr/bin/invoker");
