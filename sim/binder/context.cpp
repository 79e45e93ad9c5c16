#include "binder/context.h"

#include "binder/client.h"

#include <cerrno>
#include <linux/android/binder.h>

namespace SimBinder {

int Context::setContextManager(Client &client, const flat_binder_object &object)
{
    if (m_contextManager != nullptr)
        return -EBUSY;
    if (m_contextManagerEuid.value_or(client.euid()) != client.euid())
        return -EPERM;
    if (client.findNode(object.binder) != nullptr)
        return -EINVAL;
    m_contextManagerEuid = client.euid();
    m_contextManager = Node::forContextManager(&client, object.binder, object.cookie, object.flags);
    client.addNode(m_contextManager);
    return 0;
}

void Context::forgetContextManager(const Client &client)
{
    if (m_contextManager != nullptr && m_contextManager->owner() == &client)
        m_contextManager.reset();
}

} // namespace SimBinder
