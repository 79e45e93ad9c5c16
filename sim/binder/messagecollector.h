#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace SimBinder {

/// Gathers from a program's memory what its BC_TRANSACTION and BC_REPLY commands point to, in the
/// form of WriteReadRequest: data, offsets, and the files that the data names.
class MessageCollector
{
public:
    /// Walks the commands of a write buffer.
    void collect(const std::uint8_t *commands, std::size_t size);

    const std::vector<std::uint8_t> &bytes() const { return m_bytes; }
    const std::vector<int> &files() const { return m_files; }

private:
    void collectMessage(const std::uint8_t *command);
    void replaceFiles(std::size_t begin, std::uint64_t dataSize, std::uint64_t offsetsSize);

    std::vector<std::uint8_t> m_bytes;
    std::vector<int> m_files;
};

} // namespace SimBinder
