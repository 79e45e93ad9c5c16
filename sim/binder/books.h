#pragma once

#include <cstddef>
#include <sys/types.h>

namespace SimBinder {

/// What the device keeps for one open file, as the kernel tells it of each process in debugfs.
struct Books
{
    pid_t pid = 0;
    std::size_t nodes = 0;      ///< its own objects that others hold
    std::size_t references = 0; ///< what it holds of others
    std::size_t deaths = 0;     ///< notifications that it has asked for
    std::size_t buffers = 0;    ///< messages that it has read and not freed
};

} // namespace SimBinder
