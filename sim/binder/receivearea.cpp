#include "binder/receivearea.h"

#include "binder/protocol.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace SimBinder {

namespace {

bool writeAt(int fd, const void *bytes, std::size_t size, std::uint64_t offset)
{
    const auto *position = static_cast<const std::uint8_t *>(bytes);
    while (size > 0) {
        const ssize_t written = ::pwrite(fd, position, size, static_cast<off_t>(offset));
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        position += written;
        offset += static_cast<std::uint64_t>(written);
        size -= static_cast<std::size_t>(written);
    }
    return true;
}

std::uint64_t offsetsPosition(const Buffer &buffer)
{
    return buffer.offset + ((buffer.dataSize + 7) & ~std::uint64_t(7));
}

} // namespace

int ReceiveArea::create(std::uint64_t size, std::uint64_t address)
{
    if (isMapped())
        return -EBUSY;
    const std::uint64_t used = std::min<std::uint64_t>(size, MaxMappingSize);
    const auto pageSize = static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
    if (used == 0 || used % pageSize != 0 || address % pageSize != 0)
        return -EINVAL;

    UniqueFd memory(::memfd_create("binder", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    if (!memory.isValid() || ::ftruncate(memory.get(), static_cast<off_t>(used)) != 0 ||
        ::fcntl(memory.get(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL) != 0)
        return -ENOMEM;
    m_memory = std::move(memory);
    m_address = address;
    m_space.emplace(used);
    return 0;
}

Buffer *ReceiveArea::reserve(std::uint64_t dataSize, std::uint64_t offsetsSize, bool oneWay)
{
    if (!m_space)
        return nullptr;
    const std::optional<std::uint64_t> offset = m_space->take(dataSize, offsetsSize, oneWay);
    if (!offset)
        return nullptr;
    auto buffer = std::make_unique<Buffer>();
    buffer->offset = *offset;
    buffer->dataSize = dataSize;
    buffer->offsetsSize = offsetsSize;
    buffer->isOneWay = oneWay;
    return m_buffers.emplace(*offset, std::move(buffer)).first->second.get();
}

bool ReceiveArea::fill(const Buffer &buffer, const std::vector<std::uint8_t> &data,
                       const std::vector<std::uint64_t> &offsets)
{
    return writeAt(m_memory.get(), data.data(), data.size(), buffer.offset) &&
           writeAt(m_memory.get(), offsets.data(), offsets.size() * sizeof offsets[0],
                   offsetsPosition(buffer));
}

std::uint64_t ReceiveArea::offsetsAddress(const Buffer &buffer) const
{
    return m_address + offsetsPosition(buffer);
}

Buffer *ReceiveArea::find(std::uint64_t dataAddress) const
{
    const auto found = m_buffers.find(dataAddress - m_address);
    return found == m_buffers.end() ? nullptr : found->second.get();
}

void ReceiveArea::release(const Buffer &buffer)
{
    const std::uint64_t offset = buffer.offset;
    m_space->giveBack(offset);
    m_buffers.erase(offset);
}

std::size_t ReceiveArea::deliveredCount() const
{
    return static_cast<std::size_t>(
        std::count_if(m_buffers.begin(), m_buffers.end(),
                      [](const auto &entry) { return entry.second->isDelivered; }));
}

} // namespace SimBinder
