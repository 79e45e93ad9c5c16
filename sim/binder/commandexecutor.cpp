#include "binder/commandexecutor.h"

#include "binder/client.h"
#include "binder/context.h"
#include "binder/messagesender.h"

#include <cerrno>
#include <linux/android/binder.h>

namespace SimBinder {

namespace {

// A client that writes on and on without reading; only there to bound what it costs.
constexpr std::size_t MaxThreadWork = 65536;

} // namespace

CommandExecutor::CommandExecutor(Client &client, const PayloadReader &payloads)
    : m_client(client)
    , m_payloads(payloads)
{
}

int CommandExecutor::run(CommandStream commands, std::size_t *consumed)
{
    *consumed = 0;
    while (!commands.atEnd() && !m_client.isWritingStopped()) {
        const std::optional<Command> command = commands.next();
        if (!command)
            return -EINVAL;
        if (m_client.threadWorkCount() >= MaxThreadWork)
            return -ENOMEM;
        const int result = execute(*command);
        if (result != 0)
            return result;
        *consumed = commands.position();
    }
    return 0;
}

int CommandExecutor::execute(const Command &command)
{
    switch (command.code) {
    case BC_TRANSACTION:
    case BC_REPLY:
        sendMessage(command);
        return 0;
    case BC_FREE_BUFFER:
        freeBuffer(command.payloadAs<binder_uintptr_t>());
        return 0;
    case BC_INCREFS:
    case BC_ACQUIRE: {
        const auto handle = command.payloadAs<std::uint32_t>();
        const std::shared_ptr<Node> &manager = m_client.context().contextManager();
        if (handle == 0 && manager != nullptr && manager->owner() == &m_client) {
            note("the context manager holds handle 0");
            return -EINVAL;
        }
        hold(handle, command.code == BC_ACQUIRE ? Strength::Strong : Strength::Weak);
        return 0;
    }
    case BC_RELEASE:
        letGo(command.payloadAs<std::uint32_t>(), Strength::Strong);
        return 0;
    case BC_DECREFS:
        letGo(command.payloadAs<std::uint32_t>(), Strength::Weak);
        return 0;
    case BC_INCREFS_DONE:
        answerAnnouncement(command, Strength::Weak);
        return 0;
    case BC_ACQUIRE_DONE:
        answerAnnouncement(command, Strength::Strong);
        return 0;
    case BC_REGISTER_LOOPER:
    case BC_ENTER_LOOPER:
        m_client.setLooper(true);
        return 0;
    case BC_EXIT_LOOPER:
        m_client.setLooper(false);
        return 0;
    case BC_REQUEST_DEATH_NOTIFICATION: {
        const auto request = command.payloadAs<binder_handle_cookie>();
        note(m_client.deaths().request(request.handle, request.cookie));
        return 0;
    }
    case BC_CLEAR_DEATH_NOTIFICATION: {
        const auto request = command.payloadAs<binder_handle_cookie>();
        note(m_client.deaths().clear(request.handle, request.cookie));
        return 0;
    }
    case BC_DEAD_BINDER_DONE:
        note(m_client.deaths().done(command.payloadAs<binder_uintptr_t>()));
        return 0;
    default:
        note("an unknown command");
        return -EINVAL;
    }
}

void CommandExecutor::note(const char *misuse) const
{
    if (misuse != nullptr)
        m_client.context().misuse().report(m_client.pid(), misuse);
}

void CommandExecutor::sendMessage(const Command &command)
{
    const auto message = command.payloadAs<binder_transaction_data>();
    std::optional<Payload> payload = m_payloads.next(message.data_size, message.offsets_size);
    Payload *sent = payload ? &*payload : nullptr;
    MessageSender sender(m_client);
    if (command.code == BC_REPLY)
        sender.sendReply(message, sent);
    else
        sender.sendCall(message, sent);
}

void CommandExecutor::freeBuffer(std::uint64_t address)
{
    const Buffer *buffer = m_client.area().find(address);
    if (buffer == nullptr || !buffer->isDelivered)
        return note("BC_FREE_BUFFER of what is no received message");
    m_client.freeBuffer(*buffer);
}

void CommandExecutor::hold(std::uint32_t handle, Strength strength)
{
    const std::shared_ptr<Node> manager = m_client.context().contextManager();
    if (handle == 0 && manager != nullptr) {
        if (m_client.holdNode(manager, strength, nullptr) != nullptr)
            return;
    }
    Reference *reference = m_client.references().find(handle);
    // A client cannot know that the context manager has just gone, so that is no misuse.
    if (reference == nullptr && handle == 0)
        return;
    if (reference == nullptr)
        return note("a reference is added to a handle that it does not have");
    if (!m_client.hold(*reference, strength))
        note("a strong reference is added to a handle that is only weak");
}

void CommandExecutor::letGo(std::uint32_t handle, Strength strength)
{
    Reference *reference = m_client.references().find(handle);
    if (reference == nullptr)
        return note("a reference is released on a handle that it does not have");
    if (!m_client.letGo(*reference, strength))
        note("a reference is released more often than it was added");
}

void CommandExecutor::answerAnnouncement(const Command &command, Strength strength)
{
    const auto object = command.payloadAs<binder_ptr_cookie>();
    const std::shared_ptr<Node> node = m_client.findNode(object.ptr);
    if (node == nullptr || node->cookie() != object.cookie)
        return note("BC_INCREFS_DONE or BC_ACQUIRE_DONE for an unknown object");
    if (!node->answerAnnouncement(strength))
        note("BC_INCREFS_DONE or BC_ACQUIRE_DONE that is not due");
}

} // namespace SimBinder
