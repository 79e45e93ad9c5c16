#pragma once

#include <cstdint>
#include <list>
#include <memory>
#include <variant>

namespace SimBinder {

class Node;
struct Death;
struct Transaction;

/// A message to be delivered.
struct MessageWork
{
    std::shared_ptr<Transaction> transaction;
};

/// A return without payload: a completion, or that a call failed.
struct ReturnWork
{
    std::uint32_t code = 0;
    bool endsWriteError = false; ///< until it is read, no further command is consumed
};

/// Counts of an own node have changed.
struct AnnouncementWork
{
    std::shared_ptr<Node> node;
};

/// A death to be told, or the confirmation that its request was taken back.
struct DeathWork
{
    std::shared_ptr<Death> death;
};

using Work = std::variant<MessageWork, ReturnWork, AnnouncementWork, DeathWork>;
using WorkList = std::list<Work>;

} // namespace SimBinder
