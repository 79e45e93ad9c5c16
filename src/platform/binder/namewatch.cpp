#include "platform/binder/namewatch.h"

#include "platform/binder/contextmanager.h"
#include "platform/binder/process.h"
#include "platform/binder/remoteobject.h"
#include "platform/binder/uniquenumber.h"

#include <utility>
#include <vector>

namespace Binder {

namespace {

constexpr qint64 MinLookIntervalMs = 1000;

} // namespace

NameWatch::NameWatch(Process &process)
    : m_process(process)
    , m_nextRound([this] { m_process.runFromEventLoop([this] { look(); }); })
{
    m_firstLook.setSingleShot(true);
    m_firstLook.setInterval(0);
    QObject::connect(&m_firstLook, &QTimer::timeout, &m_firstLook,
                     [this] { m_process.runFromEventLoop([this] { look(); }); });
}

HandlerId NameWatch::add(const QByteArray &name, std::function<void()> handler)
{
    const HandlerId id = uniqueNumber();
    m_handlers[id] = {name, std::move(handler)};
    if (m_process.isLost())
        return id;

    m_nextRound.restartPace();
    // Either way a round that is already due at the patient pace would be too far away.
    if (mayBeLookedUp(name)) {
        m_nextRound.stop(); // the first look schedules it anew
        m_firstLook.start();
    } else {
        m_nextRound.schedule();
    }
    return id;
}

void NameWatch::remove(HandlerId id)
{
    m_handlers.erase(id);
    if (m_handlers.empty())
        stop();
}

void NameWatch::stop()
{
    m_firstLook.stop();
    m_nextRound.stop();
}

void NameWatch::look()
{
    for (const QByteArray &name : namesToLookUp()) {
        std::shared_ptr<RemoteObject> object;
        m_lastLooks[name].start();
        if (ContextManager::checkService(m_process, name, &object) == StatusDeadObject)
            break; // no service manager: nothing is registered
        if (object != nullptr)
            runHandlers(name);
    }
    if (!m_handlers.empty() && !m_process.isLost() && !m_nextRound.isScheduled())
        m_nextRound.schedule();
}

bool NameWatch::mayBeLookedUp(const QByteArray &name) const
{
    const auto last = m_lastLooks.find(name);
    return last == m_lastLooks.end() || last->second.elapsed() >= MinLookIntervalMs;
}

std::set<QByteArray> NameWatch::namesToLookUp() const
{
    std::set<QByteArray> names;
    for (const auto &handler : m_handlers) {
        if (mayBeLookedUp(handler.second.name))
            names.insert(handler.second.name);
    }
    return names;
}

void NameWatch::runHandlers(const QByteArray &name)
{
    // a handler may remove itself, others or everything
    std::vector<HandlerId> ids;
    for (const auto &handler : m_handlers) {
        if (handler.second.name == name)
            ids.push_back(handler.first);
    }
    for (const HandlerId id : ids) {
        const auto handler = m_handlers.find(id);
        if (handler == m_handlers.end())
            continue;
        const std::function<void()> run = handler->second.run;
        run();
    }
}

} // namespace Binder
