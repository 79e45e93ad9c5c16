#include "binder/commandstream.h"

#include <linux/android/binder.h>

namespace SimBinder {

std::optional<Command> CommandStream::next()
{
    Command command;
    if (m_size - m_position < sizeof command.code)
        return std::nullopt;
    std::memcpy(&command.code, m_bytes + m_position, sizeof command.code);
    const std::size_t begin = m_position + sizeof command.code;
    const std::size_t payloadSize = _IOC_SIZE(command.code);
    if (m_size - begin < payloadSize)
        return std::nullopt;
    command.payload = m_bytes + begin;
    m_position = begin + payloadSize;
    return command;
}

bool carriesMessage(std::uint32_t commandCode)
{
    return commandCode == BC_TRANSACTION || commandCode == BC_REPLY;
}

} // namespace SimBinder
