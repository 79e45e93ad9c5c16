#include "platform/binder/servicemanager.h"

#include "platform/binder/contextmanager.h"
#include "platform/binder/namekeeper.h"
#include "platform/binder/namewatch.h"
#include "platform/binder/process.h"
#include "platform/binder/remoteobject.h"
#include "platform/binder/servicename.h"

#include <utility>

namespace Binder {

std::unique_ptr<ServiceManager> ServiceManager::open(const char *device)
{
    std::shared_ptr<Process> process = Process::open(device);
    if (process == nullptr)
        return nullptr;
    return std::unique_ptr<ServiceManager>(new ServiceManager(std::move(process)));
}

ServiceManager::ServiceManager(std::shared_ptr<Process> process)
    : m_process(std::move(process))
{
}

ServiceManager::~ServiceManager()
{
    for (const HandlerId id : m_handlers)
        m_process->nameWatch().remove(id);
}

bool ServiceManager::isLost() const
{
    return m_process->isLost();
}

std::shared_ptr<RemoteObject> ServiceManager::getService(const char *name)
{
    const std::shared_ptr<Process> process = m_process;
    std::shared_ptr<RemoteObject> object;
    ContextManager::checkService(*process, name, &object);
    return object;
}

HandlerId ServiceManager::addRegistrationHandler(const char *name, std::function<void()> handler)
{
    const HandlerId id = m_process->nameWatch().add(name, std::move(handler));
    m_handlers.insert(id);
    return id;
}

void ServiceManager::removeHandler(HandlerId id)
{
    if (m_handlers.erase(id) > 0)
        m_process->nameWatch().remove(id);
}

std::unique_ptr<LocalObject> ServiceManager::createLocalObject(const char *descriptor,
                                                               IncomingCall call)
{
    if (m_process->isLost() || call == nullptr)
        return nullptr;
    return std::make_unique<LocalObject>(m_process, descriptor, std::move(call));
}

std::unique_ptr<ServiceName> ServiceManager::registerName(const char *name,
                                                          const LocalObject &object)
{
    const std::shared_ptr<Process> process = m_process;
    const quint64 registration = process->nameKeeper().keep(name, object.id());
    return std::make_unique<ServiceName>(process, registration);
}

} // namespace Binder
