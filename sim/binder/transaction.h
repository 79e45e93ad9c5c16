#pragma once

#include "binder/uniquefd.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace SimBinder {

class Client;
class Node;

/// An object inside a received message, kept alive by that message's buffer.
struct HeldObject
{
    std::shared_ptr<Node> node;
    bool isOwn = false; ///< the receiver's own node; otherwise held through its reference
    bool isStrong = true;
};

/// One received message in the receiver's mapping, from sending until BC_FREE_BUFFER.
struct Buffer
{
    std::uint64_t offset = 0; ///< in the mapping
    std::uint64_t dataSize = 0;
    std::uint64_t offsetsSize = 0;
    bool isOneWay = false;
    bool isDelivered = false;
    std::shared_ptr<Node> target; ///< null for replies
    std::vector<HeldObject> objects;
};

/// A descriptor on its way: installed in the receiver when the message is read.
struct PassedFile
{
    std::uint64_t position = 0; ///< of its number, in the receiver's mapping
    UniqueFd file;
};

/// One message under way (struct binder_transaction), and, for a two-way call, what remains of it
/// until the reply.
///
/// A two-way call lies on two stacks: on the caller's until the reply comes, and, once delivered,
/// on the callee's until BC_REPLY. Each stack is a chain of these, the innermost call first.
struct Transaction
{
    Client *from = nullptr; ///< null for replies and one-way calls, and when the caller is gone
    std::shared_ptr<Transaction> callersOuter;
    Client *to = nullptr; ///< null until delivered, and when the callee is gone
    std::shared_ptr<Transaction> calleesOuter;
    unsigned depth = 1; ///< of nested calls
    bool expectsReply = false;

    std::uint32_t code = 0;
    std::uint32_t flags = 0;
    std::uint32_t senderEuid = 0;
    Buffer *buffer = nullptr; ///< valid until delivered
    std::vector<PassedFile> files;
};

} // namespace SimBinder
