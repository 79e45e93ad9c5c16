#pragma once

#include <QtGlobal>

#include <cstddef>
#include <cstring>
#include <linux/ioctl.h>

namespace Binder {

/// Goes through what one read from the driver gave: returns (BR_...), each a code with its
/// payload at once behind it. The code tells the payload's size, so unknown ones can be skipped.
class ReturnStream
{
public:
    ReturnStream(const char *bytes, std::size_t size)
        : m_next(bytes)
        , m_end(bytes + size)
    {
    }

    /// Goes on to the next return. False at the end, also when the rest is too short for it.
    bool next()
    {
        quint32 code = 0;
        if (static_cast<std::size_t>(m_end - m_next) < sizeof code)
            return false;
        std::memcpy(&code, m_next, sizeof code);
        const std::size_t payloadSize = _IOC_SIZE(code);
        if (static_cast<std::size_t>(m_end - m_next) - sizeof code < payloadSize)
            return false;
        m_code = code;
        m_payload = m_next + sizeof code;
        m_next = m_payload + payloadSize;
        return true;
    }

    quint32 code() const { return m_code; }

    /// The payload of a code that has one of at least this type's size.
    template <typename Payload>
    Payload payload() const
    {
        Payload payload;
        std::memcpy(&payload, m_payload, sizeof payload);
        return payload;
    }

private:
    const char *m_next;
    const char *m_end;
    const char *m_payload = nullptr;
    quint32 m_code = 0;
};

} // namespace Binder
