#pragma once

#include "binder/transaction.h"
#include "binder/work.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace SimBinder {

class Client;

/// The read half of BINDER_WRITE_READ: turns a client's queued work into returns.
///
/// A read begins with BR_NOOP and ends when there is no more work or no more room, or after one
/// message or one BR_DEAD_BINDER, since handling these can change what is to be read next.
class ReturnWriter
{
public:
    ReturnWriter(Client &client, std::size_t room);

    /// `begins`: the read buffer is empty so far. Returns 0, or −EAGAIN when no work waits.
    int run(bool begins);

    /// A read that found no work but returns all the same, as after a flush of the open file.
    void writeNothing();

    const std::vector<std::uint8_t> &bytes() const { return m_bytes; }
    std::vector<PassedFile> takeFiles() { return std::move(m_files); }

private:
    enum class Then { ReadOn, End };
    Then write(const MessageWork &work);
    Then write(const ReturnWork &work);
    Then write(const AnnouncementWork &work);
    Then write(const DeathWork &work);

    void append(std::uint32_t code);
    template <typename T>
    void append(std::uint32_t code, const T &payload);
    bool hasRoom() const;

    Client &m_client;
    std::size_t m_room;
    std::vector<std::uint8_t> m_bytes;
    std::vector<PassedFile> m_files;
};

} // namespace SimBinder
