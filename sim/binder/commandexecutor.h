#pragma once

#include "binder/commandstream.h"
#include "binder/node.h"
#include "binder/payloadreader.h"

#include <cstddef>
#include <cstdint>

namespace SimBinder {

class Client;

/// The write half of BINDER_WRITE_READ: carries out a client's commands, one after the other.
///
/// A wrong command is mostly ignored and only noted, as the kernel does. A message that cannot be
/// sent stops the writing until the client has read why.
class CommandExecutor
{
public:
    CommandExecutor(Client &client, const PayloadReader &payloads);

    /// Returns 0, or −EINVAL at something that is no command of ours; `consumed` counts the bytes
    /// of the commands that were carried out.
    int run(CommandStream commands, std::size_t *consumed);

private:
    int execute(const Command &command);
    void note(const char *misuse) const;

    void sendMessage(const Command &command);
    void freeBuffer(std::uint64_t address);
    void hold(std::uint32_t handle, Strength strength);
    void letGo(std::uint32_t handle, Strength strength);
    void answerAnnouncement(const Command &command, Strength strength);

    Client &m_client;
    PayloadReader m_payloads;
};

} // namespace SimBinder
