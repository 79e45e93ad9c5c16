#include "binder/messagesender.h"

#include "binder/calls.h"
#include "binder/client.h"
#include "binder/context.h"

#include <linux/android/binder.h>

namespace SimBinder {

namespace {

// Two programs can call each other back for ever; only there to bound what that costs.
constexpr unsigned MaxDepth = 1000;

} // namespace

void MessageSender::sendCall(const binder_transaction_data &call, Payload *payload)
{
    std::uint32_t error = BR_FAILED_REPLY;
    const std::shared_ptr<Node> target = findTarget(call.target.handle, &error);
    const bool oneWay = (call.flags & TF_ONE_WAY) != 0;
    if (target == nullptr || !mayCall(*target, oneWay))
        return m_sender.stopWriting(error);

    Client &receiver = *target->owner();
    const std::shared_ptr<Transaction> message =
        compose(call, payload, receiver, target, target->acceptsFiles(), &error);
    if (message == nullptr)
        return m_sender.stopWriting(error);

    if (oneWay) {
        m_sender.queueForThread(ReturnWork{BR_TRANSACTION_COMPLETE});
        if (target->admitOneWay(message))
            receiver.queueForProcess(MessageWork{message});
        return;
    }

    const std::shared_ptr<Transaction> outer = m_sender.innermostCall();
    message->from = &m_sender;
    message->callersOuter = outer;
    message->depth = outer == nullptr ? 1 : outer->depth + 1;
    message->expectsReply = true;
    m_sender.setInnermostCall(message);
    // The completion comes together with the reply: waking the caller for it would be in vain.
    m_sender.queueForThreadQuietly(ReturnWork{BR_TRANSACTION_COMPLETE});
    if (isWaitingFor(receiver, outer.get()))
        receiver.queueForThread(MessageWork{message});
    else
        receiver.queueForProcess(MessageWork{message});
}

void MessageSender::sendReply(const binder_transaction_data &reply, Payload *payload)
{
    const std::shared_ptr<Transaction> answered = m_sender.innermostCall();
    if (answered == nullptr || answered->to != &m_sender) {
        refuse("BC_REPLY with no call to answer");
        return m_sender.stopWriting(BR_FAILED_REPLY);
    }
    m_sender.setInnermostCall(answered->calleesOuter);
    answered->to = nullptr;

    std::uint32_t error = BR_DEAD_REPLY;
    std::shared_ptr<Transaction> message;
    Client *caller = answered->from;
    if (caller != nullptr) {
        const bool filesAllowed = (answered->flags & TF_ACCEPT_FDS) != 0;
        message = compose(reply, payload, *caller, nullptr, filesAllowed, &error);
    }
    if (message == nullptr) {
        m_sender.stopWriting(BR_TRANSACTION_COMPLETE);
        return failCall(answered, error);
    }
    m_sender.queueForThread(ReturnWork{BR_TRANSACTION_COMPLETE});
    endCall(*answered);
    caller->queueForThread(MessageWork{message});
}

std::shared_ptr<Node> MessageSender::findTarget(std::uint32_t handle, std::uint32_t *error) const
{
    if (handle == 0) {
        std::shared_ptr<Node> manager = m_sender.context().contextManager();
        if (manager == nullptr) {
            *error = BR_DEAD_REPLY;
            return nullptr;
        }
        const pid_t managerPid = manager->owner()->pid();
        if (manager->owner() == &m_sender || (managerPid != 0 && managerPid == m_sender.pid())) {
            refuse("the context manager's process calls handle 0");
            return nullptr;
        }
        return manager;
    }
    const Reference *reference = m_sender.references().find(handle);
    if (reference == nullptr || reference->strong == 0) {
        refuse("BC_TRANSACTION to a handle without a strong reference");
        return nullptr;
    }
    if (reference->node->owner() == nullptr) {
        *error = BR_DEAD_REPLY;
        return nullptr;
    }
    return reference->node;
}

bool MessageSender::mayCall(const Node &target, bool oneWay) const
{
    if (target.owner() == &m_sender)
        return refuse("BC_TRANSACTION to an own object");
    const Transaction *innermost = m_sender.innermostCall().get();
    if (oneWay || innermost == nullptr)
        return true;
    if (innermost->to != &m_sender)
        return refuse("BC_TRANSACTION while waiting for a reply");
    if (innermost->depth >= MaxDepth)
        return refuse("more nested calls than the simulated device keeps");
    return true;
}

std::shared_ptr<Transaction> MessageSender::compose(const binder_transaction_data &message,
                                                    Payload *payload, Client &receiver,
                                                    const std::shared_ptr<Node> &target,
                                                    bool filesAllowed, std::uint32_t *error) const
{
    ReceiveArea &area = receiver.area();
    if (!area.isMapped()) {
        *error = BR_DEAD_REPLY;
        return nullptr;
    }
    *error = BR_FAILED_REPLY;
    if (message.offsets_size % sizeof(binder_size_t) != 0) {
        refuse("a message whose offsets are no whole numbers");
        return nullptr;
    }
    if (payload == nullptr)
        return nullptr;
    const bool oneWay = target != nullptr && (message.flags & TF_ONE_WAY) != 0;
    Buffer *buffer = area.reserve(message.data_size, message.offsets_size, oneWay);
    if (buffer == nullptr)
        return nullptr;
    if (target != nullptr) {
        target->hold(Strength::Strong, Holder::Owner);
        buffer->target = target;
    }

    auto transaction = std::make_shared<Transaction>();
    ObjectTranslator translator(m_sender, receiver, *buffer, filesAllowed);
    if (!translator.translate(*payload, &transaction->files) ||
        !area.fill(*buffer, payload->data, payload->offsets)) {
        receiver.discardBuffer(*buffer);
        return nullptr;
    }
    transaction->code = message.code;
    transaction->flags = message.flags;
    transaction->senderEuid = m_sender.euid();
    transaction->buffer = buffer;
    return transaction;
}

bool MessageSender::refuse(const char *reason) const
{
    m_sender.context().misuse().report(m_sender.pid(), reason);
    return false;
}

} // namespace SimBinder
