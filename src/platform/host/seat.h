#pragma once

#include <optional>
#include <sys/types.h>

/// The user of the active session on "seat0", asked from sd-login each time; nothing when nobody
/// is logged in there or sd-login cannot tell.
std::optional<uid_t> activeSeatUser();
