#pragma once

#include <QByteArray>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

/// Takes the decisions of one run, front to back, from the bytes that the fuzzer made up. At their
/// end every number is 0 and every sequence of bytes empty.
class Input
{
public:
    Input(const std::uint8_t *bytes, std::size_t size)
        : m_next(bytes)
        , m_end(bytes + size)
    {
    }

    bool isEmpty() const { return m_next == m_end; }
    std::size_t remaining() const { return static_cast<std::size_t>(m_end - m_next); }

    /// A number in the order of the bytes in messages.
    template <typename Number>
    Number number()
    {
        Number value = 0;
        const std::size_t size = std::min(sizeof value, remaining());
        std::memcpy(&value, m_next, size);
        m_next += size;
        return value;
    }

    /// A number from 0 to `count` - 1, from one byte.
    int below(int count) { return number<std::uint8_t>() % count; }

    bool yes() { return below(2) == 1; }

    QByteArray bytes(std::size_t size)
    {
        const std::size_t taken = std::min(size, remaining());
        QByteArray value(reinterpret_cast<const char *>(m_next), static_cast<int>(taken));
        m_next += taken;
        return value;
    }

    /// So many bytes as a number of one byte in front of them says.
    QByteArray shortBytes() { return bytes(number<std::uint8_t>()); }

    /// The bytes up to the next one of this value, which is skipped.
    QByteArray bytesBefore(char terminator)
    {
        const std::uint8_t *found = std::find(m_next, m_end, static_cast<std::uint8_t>(terminator));
        QByteArray value = bytes(static_cast<std::size_t>(found - m_next));
        number<std::uint8_t>();
        return value;
    }

    QByteArray rest() { return bytes(remaining()); }

private:
    const std::uint8_t *m_next;
    const std::uint8_t *m_end;
};
