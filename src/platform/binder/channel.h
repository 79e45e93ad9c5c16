#pragma once

#include "platform/binder/commandbuffer.h"

#include <QByteArray>

#include <cstddef>
#include <memory>

namespace Binder {

class Driver;

/// One open binder device: the commands waiting for it and the exchange with it.
///
/// A device that fails in a way that no retry can mend is lost: every later operation does
/// nothing, and the commands are dropped.
class Channel
{
public:
    /// Opens the device and makes it ready to receive on this thread. Null, with one debug line,
    /// when it cannot be opened or mapped or does not speak the 64-bit protocol.
    static std::unique_ptr<Channel> open(const QByteArray &device);
    ~Channel();
    Channel(const Channel &) = delete;
    Channel &operator=(const Channel &) = delete;

    template <typename... Payload>
    void queue(quint32 command, const Payload &...payload)
    {
        if (!m_lost)
            m_commands.append(command, payload...);
    }

    bool hasCommands() const { return !m_commands.isEmpty(); }

    /// How many bytes of commands have been queued so far, and how many of them the driver took.
    quint64 bytesQueued() const { return m_bytesTaken + m_commands.size(); }
    quint64 bytesTaken() const { return m_bytesTaken; }

    /// Writes the commands without reading. The driver leaves what follows a failed transaction
    /// until the failure has been read; such commands stay queued.
    void flush();

    /// Writes the commands and reads what is there now: the number of bytes put into `buffer`,
    /// 0 when nothing waits.
    std::size_t exchange(char *buffer, std::size_t size);

    /// Blocks until there is something to read.
    void wait();

    /// Whether there is something to read. A kernel logs every read that finds nothing, which takes
    /// longer than the read, and crowds its log.
    bool isReadable() const;

    int descriptor() const;
    bool isLost() const { return m_lost; }

private:
    Channel(const QByteArray &device, std::unique_ptr<Driver> driver);

    void lose(int error);

    QByteArray m_device;
    std::unique_ptr<Driver> m_driver;
    CommandBuffer m_commands;
    quint64 m_bytesTaken = 0;
    bool m_lost = false;
};

} // namespace Binder
