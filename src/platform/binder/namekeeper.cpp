#include "platform/binder/namekeeper.h"

#include "platform/binder/contextmanager.h"
#include "platform/binder/drivercategory.h"
#include "platform/binder/process.h"
#include "platform/binder/remoteobject.h"
#include "platform/binder/uniquenumber.h"

namespace Binder {

NameKeeper::NameKeeper(Process &process)
    : m_process(process)
    , m_retry([this] { m_process.runFromEventLoop([this] { attempt(); }); })
{
}

quint64 NameKeeper::keep(const QByteArray &name, quint64 object)
{
    const quint64 id = uniqueNumber();
    m_registrations[id] = {name, object, false};
    m_retry.restartPace();
    attempt();
    return id;
}

void NameKeeper::release(quint64 registration)
{
    m_registrations.erase(registration);
    letGoWhenUnused();
}

void NameKeeper::forgetObject(quint64 object)
{
    for (auto entry = m_registrations.begin(); entry != m_registrations.end();) {
        if (entry->second.object == object)
            entry = m_registrations.erase(entry);
        else
            ++entry;
    }
    letGoWhenUnused();
}

void NameKeeper::attempt()
{
    bool complete = findManager();
    if (complete) {
        // calls back into this process may add and end registrations meanwhile
        std::vector<quint64> open;
        for (const auto &entry : m_registrations) {
            if (!entry.second.settled)
                open.push_back(entry.first);
        }
        for (const quint64 id : open)
            complete = registerName(id) && complete;
    }
    if (!complete && !m_registrations.empty() && !m_process.isLost())
        m_retry.schedule();
    letGoWhenUnused();
}

bool NameKeeper::findManager()
{
    if (m_manager != nullptr)
        return true;
    // The driver silently ignores a reference to a context manager that is not there, and then
    // its death would never be reported.
    const Status status = ContextManager::ping(m_process);
    if (status != StatusOk) {
        // other than dead: the kernel may refuse every call for lack of a security context
        if (status != StatusDeadObject)
            qCDebug(lcBinderDriver) << "Service manager cannot be called, status" << status;
        return false;
    }
    // cppcheck-suppress knownConditionTrueFalse
    if (m_manager == nullptr) { // found meanwhile, by a call back into this process
        m_manager = m_process.remoteObject(ContextManagerHandle);
        m_manager->addDeathHandler([this] { onManagerDied(); });
    }
    return true;
}

void NameKeeper::onManagerDied()
{
    // The dead reference must go, or a reference to the successor would get another handle.
    m_manager.reset();
    for (auto &entry : m_registrations)
        entry.second.settled = false;
    if (!m_registrations.empty() && !m_process.isLost()) {
        m_retry.restartPace();
        m_retry.schedule();
    }
}

/// False when it has to be tried again.
bool NameKeeper::registerName(quint64 id)
{
    const auto entry = m_registrations.find(id);
    if (entry == m_registrations.end())
        return true;
    const Registration registration = entry->second;
    const Status status =
        ContextManager::addService(m_process, registration.name, registration.object);
    if (status == StatusDeadObject || status == StatusFailedTransaction)
        return false;

    if (status != StatusOk) {
        qCWarning(lcBinderDriver) << "Service manager refused the name" << registration.name
                                  << "with status" << status;
    }
    const auto settled = m_registrations.find(id);
    if (settled != m_registrations.end())
        settled->second.settled = true;
    return true;
}

void NameKeeper::letGoWhenUnused()
{
    if (!m_registrations.empty())
        return;
    m_retry.stop();
    m_manager.reset();
}

} // namespace Binder
