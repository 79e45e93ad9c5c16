#pragma once

#include "binder/objecttranslator.h"
#include "binder/transaction.h"

#include <cstdint>
#include <memory>

struct binder_transaction_data;

namespace SimBinder {

class Client;

/// Carries out BC_TRANSACTION and BC_REPLY of one client (binder_transaction() in Linux,
/// drivers/android/binder.c): finds who receives it, puts it into the receiver's mapping and
/// queues it, or queues the failure.
class MessageSender
{
public:
    explicit MessageSender(Client &sender)
        : m_sender(sender)
    {
    }

    /// `payload` is null when the message is too large for any receiver.
    void sendCall(const binder_transaction_data &call, Payload *payload);
    void sendReply(const binder_transaction_data &reply, Payload *payload);

private:
    std::shared_ptr<Node> findTarget(std::uint32_t handle, std::uint32_t *error) const;
    bool mayCall(const Node &target, bool oneWay) const;
    std::shared_ptr<Transaction> compose(const binder_transaction_data &message, Payload *payload,
                                         Client &receiver, const std::shared_ptr<Node> &target,
                                         bool filesAllowed, std::uint32_t *error) const;
    bool refuse(const char *reason) const;

    Client &m_sender;
};

} // namespace SimBinder
