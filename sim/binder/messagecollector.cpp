#include "binder/messagecollector.h"

#include "binder/commandstream.h"
#include "binder/protocol.h"

#include <cstring>
#include <fcntl.h>
#include <linux/android/binder.h>

namespace SimBinder {

namespace {

// Stands for a descriptor that is not open, or for one more than can be passed at once.
constexpr std::uint32_t NoFile = 0xffffffff;

} // namespace

void MessageCollector::collect(const std::uint8_t *commands, std::size_t size)
{
    CommandStream stream(commands, size);
    while (const std::optional<Command> command = stream.next()) {
        if (carriesMessage(command->code))
            collectMessage(command->payload);
    }
}

void MessageCollector::collectMessage(const std::uint8_t *command)
{
    binder_transaction_data message;
    std::memcpy(&message, command, sizeof message);
    std::uint64_t size = 0;
    if (message.data_size <= MaxMappingSize && message.offsets_size <= MaxMappingSize)
        size = message.data_size + message.offsets_size;
    const auto *count = reinterpret_cast<const std::uint8_t *>(&size);
    m_bytes.insert(m_bytes.end(), count, count + sizeof size);
    if (size == 0)
        return;
    const std::size_t begin = m_bytes.size();
    const auto append = [this](std::uint64_t address, std::uint64_t length) {
        // The driver's structures carry addresses as numbers.
        const auto *bytes =
            reinterpret_cast<const std::uint8_t *>( // NOLINT(performance-no-int-to-ptr)
                address);
        m_bytes.insert(m_bytes.end(), bytes, bytes + length);
    };
    append(message.data.ptr.buffer, message.data_size);
    append(message.data.ptr.offsets, message.offsets_size);
    replaceFiles(begin, message.data_size, message.offsets_size);
}

void MessageCollector::replaceFiles(std::size_t begin, std::uint64_t dataSize,
                                    std::uint64_t offsetsSize)
{
    std::uint8_t *data = m_bytes.data() + begin;
    const std::uint8_t *offsets = data + dataSize;
    for (std::uint64_t position = 0; offsetsSize - position >= sizeof(binder_size_t);
         position += sizeof(binder_size_t)) {
        binder_size_t offset = 0;
        std::memcpy(&offset, offsets + position, sizeof offset);
        binder_fd_object object;
        if (dataSize < sizeof object || offset > dataSize - sizeof object)
            continue;
        std::memcpy(&object, data + offset, sizeof object);
        if (object.hdr.type != BINDER_TYPE_FD)
            continue;
        const int fd = static_cast<int>(object.fd);
        if (::fcntl(fd, F_GETFD) < 0 || m_files.size() >= MaxFiles) {
            object.fd = NoFile;
        } else {
            object.fd = static_cast<std::uint32_t>(m_files.size());
            m_files.push_back(fd);
        }
        std::memcpy(data + offset, &object, sizeof object);
    }
}

} // namespace SimBinder
