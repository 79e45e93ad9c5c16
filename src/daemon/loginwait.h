#pragma once

#include <optional>
#include <sys/types.h>

class LoginMonitor;

/// Blocks until a user is active on "seat0" and returns that user's id. Nothing, after a warning,
/// when logins cannot be watched; the daemon is of no use then.
std::optional<uid_t> waitForUser(LoginMonitor &monitor);
