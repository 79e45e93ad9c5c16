#pragma once

#include "binder/objecttranslator.h"
#include "binder/uniquefd.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace SimBinder {

/// Hands out, in order, the data and offsets that a driver sent along with its commands.
class PayloadReader
{
public:
    PayloadReader(const std::uint8_t *bytes, std::size_t size, std::vector<UniqueFd> *files);

    /// The next message's, which has these sizes. Nothing when it was not sent in full.
    std::optional<Payload> next(std::uint64_t dataSize, std::uint64_t offsetsSize);

private:
    const std::uint8_t *m_bytes;
    std::size_t m_size;
    std::vector<UniqueFd> *m_files;
};

} // namespace SimBinder
