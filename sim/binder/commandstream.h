#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>

namespace SimBinder {

/// One command of a write buffer; the payload points into the buffer.
struct Command
{
    std::uint32_t code = 0;
    const std::uint8_t *payload = nullptr;

    template <typename T>
    T payloadAs() const
    {
        T value;
        std::memcpy(&value, payload, sizeof value);
        return value;
    }
};

/// Walks the commands of a write buffer: a u32 code and, with nothing between, the payload whose
/// size is part of the code. Used on both sides, so that both see the same commands.
class CommandStream
{
public:
    CommandStream(const std::uint8_t *bytes, std::size_t size)
        : m_bytes(bytes)
        , m_size(size)
    {
    }

    /// The command at the current position, which moves behind it. Nothing at the end, or when
    /// the rest is too short for a command.
    std::optional<Command> next();

    std::size_t position() const { return m_position; }
    void rewindTo(std::size_t position) { m_position = position; }
    bool atEnd() const { return m_position == m_size; }

private:
    const std::uint8_t *m_bytes;
    std::size_t m_size;
    std::size_t m_position = 0;
};

/// Whether the command carries a message: data and offsets.
bool carriesMessage(std::uint32_t commandCode);

} // namespace SimBinder
