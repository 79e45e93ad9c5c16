#pragma once

#include "binder/misuselog.h"

#include <memory>
#include <optional>
#include <sys/types.h>

struct flat_binder_object;

namespace SimBinder {

class Client;
class Node;

/// What all open files of one device share (struct binder_context): the context manager's node,
/// and the list of misuse.
class Context
{
public:
    explicit Context(MisuseLog &misuse)
        : m_misuse(misuse)
    {
    }

    MisuseLog &misuse() const { return m_misuse; }

    /// Null while there is none.
    const std::shared_ptr<Node> &contextManager() const { return m_contextManager; }

    /// Makes the client's object the one that everybody's handle 0 means. Returns 0, −EBUSY while
    /// there is one, −EPERM when an earlier one had another user id.
    int setContextManager(Client &client, const flat_binder_object &object);

    /// The client closes its file. Whoever holds its node keeps a dead handle.
    void forgetContextManager(const Client &client);

private:
    MisuseLog &m_misuse;
    std::shared_ptr<Node> m_contextManager;
    std::optional<uid_t> m_contextManagerEuid;
};

} // namespace SimBinder
