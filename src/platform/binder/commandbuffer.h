#pragma once

#include <QtGlobal>

#include <cstddef>
#include <cstring>
#include <vector>

namespace Binder {

/// Commands (BC_...) waiting to be written to the driver, each a code with its payload at once
/// behind it (linux/android/binder.h).
class CommandBuffer
{
public:
    void append(quint32 command) { appendBytes(&command, sizeof command); }

    template <typename Payload>
    void append(quint32 command, const Payload &payload)
    {
        append(command);
        appendBytes(&payload, sizeof payload);
    }

    /// Removes what the driver has taken from the front.
    void consume(std::size_t size)
    {
        m_bytes.erase(m_bytes.begin(), m_bytes.begin() + static_cast<std::ptrdiff_t>(size));
    }

    void clear() { m_bytes.clear(); }
    bool isEmpty() const { return m_bytes.empty(); }
    const char *data() const { return m_bytes.data(); }
    std::size_t size() const { return m_bytes.size(); }

private:
    void appendBytes(const void *bytes, std::size_t size)
    {
        const char *first = static_cast<const char *>(bytes);
        m_bytes.insert(m_bytes.end(), first, first + size);
    }

    std::vector<char> m_bytes;
};

} // namespace Binder
