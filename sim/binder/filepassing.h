#pragma once

#include "binder/uniquefd.h"

#include <cstddef>
#include <sys/types.h>
#include <vector>

/// send() and recv() on a Unix stream socket with file descriptors going along (SCM_RIGHTS).
/// Interrupted calls are repeated, a broken socket raises no signal. Both return what the system
/// call returns: a count of bytes, or −1 with errno.
namespace SimBinder {

ssize_t sendWithFiles(int socket, const void *bytes, std::size_t size,
                      const std::vector<int> &files);

/// Received descriptors are appended to `files`. Those that this process has no room for are
/// lost: it then gets fewer than were sent.
ssize_t receiveWithFiles(int socket, void *bytes, std::size_t size, std::vector<UniqueFd> *files);

} // namespace SimBinder
