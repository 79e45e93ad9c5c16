#include "binder/payloadreader.h"

#include <cstring>

namespace SimBinder {

PayloadReader::PayloadReader(const std::uint8_t *bytes, std::size_t size,
                             std::vector<UniqueFd> *files)
    : m_bytes(bytes)
    , m_size(size)
    , m_files(files)
{
}

std::optional<Payload> PayloadReader::next(std::uint64_t dataSize, std::uint64_t offsetsSize)
{
    std::uint64_t size = 0;
    if (m_size < sizeof size)
        return std::nullopt;
    std::memcpy(&size, m_bytes, sizeof size);
    if (size > m_size - sizeof size)
        return std::nullopt;
    const std::uint8_t *bytes = m_bytes + sizeof size;
    m_bytes += sizeof size + size;
    m_size -= sizeof size + size;
    if (dataSize > size || offsetsSize != size - dataSize ||
        offsetsSize % sizeof(std::uint64_t) != 0)
        return std::nullopt;

    Payload payload;
    payload.data.assign(bytes, bytes + dataSize);
    payload.offsets.resize(offsetsSize / sizeof(std::uint64_t));
    if (offsetsSize > 0)
        std::memcpy(payload.offsets.data(), bytes + dataSize, offsetsSize);
    payload.files = m_files;
    return payload;
}

} // namespace SimBinder
