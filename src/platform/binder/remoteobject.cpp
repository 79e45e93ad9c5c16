#include "platform/binder/remoteobject.h"

#include "platform/binder/process.h"

#include <utility>

namespace Binder {

RemoteObject::RemoteObject(std::shared_ptr<Process> process, Handle handle)
    : m_process(std::move(process))
    , m_handle(handle)
{
}

RemoteObject::~RemoteObject()
{
    m_process->releaseRemoteObject(m_handle);
}

HandlerId RemoteObject::addDeathHandler(std::function<void()> handler)
{
    return m_process->addDeathHandler(m_handle, std::move(handler));
}

void RemoteObject::removeHandler(HandlerId id)
{
    m_process->removeDeathHandler(id);
}

} // namespace Binder
