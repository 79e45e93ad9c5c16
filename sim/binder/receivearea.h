#pragma once

#include "binder/bufferallocator.h"
#include "binder/transaction.h"
#include "binder/uniquefd.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace SimBinder {

/// One client's mapping and the received messages in it. The memory is shared with the client,
/// so nothing in it is ever read here: what the router needs to know of a buffer is kept apart.
class ReceiveArea
{
public:
    /// Makes the memory, which the client maps at `address`. Returns 0 or a negative errno value;
    /// a second time −EBUSY. Beyond the driver's largest mapping the size does not count.
    int create(std::uint64_t size, std::uint64_t address);

    bool isMapped() const { return m_memory.isValid(); }
    int memory() const { return m_memory.get(); }

    /// Null when there is no room.
    Buffer *reserve(std::uint64_t dataSize, std::uint64_t offsetsSize, bool oneWay);

    /// False when the memory cannot be had.
    bool fill(const Buffer &buffer, const std::vector<std::uint8_t> &data,
              const std::vector<std::uint64_t> &offsets);

    std::uint64_t dataAddress(const Buffer &buffer) const { return m_address + buffer.offset; }
    std::uint64_t offsetsAddress(const Buffer &buffer) const;

    /// The buffer whose data lies at that address, or null.
    Buffer *find(std::uint64_t dataAddress) const;

    void release(const Buffer &buffer);

    /// Messages that the client has read and not freed.
    std::size_t deliveredCount() const;

private:
    UniqueFd m_memory;
    std::uint64_t m_address = 0;
    std::optional<BufferAllocator> m_space;
    std::map<std::uint64_t, std::unique_ptr<Buffer>> m_buffers; // by offset
};

} // namespace SimBinder
