#include "platform/binder/deathtable.h"

#include "platform/binder/channel.h"
#include "platform/binder/uniquenumber.h"

#include <algorithm>
#include <linux/android/binder.h>
#include <utility>
#include <vector>

namespace Binder {

namespace {

binder_handle_cookie handleCookie(Handle handle, quint64 cookie)
{
    binder_handle_cookie pair = {};
    pair.handle = handle;
    pair.cookie = cookie;
    return pair;
}

} // namespace

DeathTable::DeathTable(Channel &channel, std::function<void()> schedule)
    : m_channel(channel)
    , m_schedule(std::move(schedule))
{
}

HandlerId DeathTable::add(Handle handle, std::function<void()> handler)
{
    Watch &watch = m_watches[handle];
    if (watch.cookie == 0) {
        watch.cookie = uniqueNumber();
        watch.dead = m_channel.isLost();
        m_channel.queue(BC_REQUEST_DEATH_NOTIFICATION, handleCookie(handle, watch.cookie));
    }
    const HandlerId id = uniqueNumber();
    m_handlers[id] = {handle, watch.dead, std::move(handler)};
    if (watch.dead)
        m_schedule();
    return id;
}

void DeathTable::remove(HandlerId id)
{
    m_handlers.erase(id);
}

void DeathTable::forget(Handle handle)
{
    const auto watch = m_watches.find(handle);
    if (watch == m_watches.end())
        return;
    if (!watch->second.dead)
        m_channel.queue(BC_CLEAR_DEATH_NOTIFICATION, handleCookie(handle, watch->second.cookie));
    m_watches.erase(watch);
    for (auto handler = m_handlers.begin(); handler != m_handlers.end();) {
        if (handler->second.handle == handle)
            handler = m_handlers.erase(handler);
        else
            ++handler;
    }
}

void DeathTable::onDead(quint64 cookie)
{
    // owed even when the handle was released while the notice was under way
    m_channel.queue(BC_DEAD_BINDER_DONE, cookie);

    const auto watch =
        std::find_if(m_watches.begin(), m_watches.end(),
                     [cookie](const auto &entry) { return entry.second.cookie == cookie; });
    if (watch == m_watches.end() || watch->second.dead)
        return;
    m_channel.queue(BC_CLEAR_DEATH_NOTIFICATION, handleCookie(watch->first, cookie));
    markDead(watch->first, &watch->second);
}

void DeathTable::onAllDead()
{
    for (auto &watch : m_watches)
        markDead(watch.first, &watch.second);
}

void DeathTable::markDead(Handle handle, Watch *watch)
{
    watch->dead = true;
    for (auto &handler : m_handlers) {
        if (handler.second.handle == handle)
            handler.second.due = true;
    }
    m_schedule();
}

void DeathTable::runDue()
{
    // handlers may add and remove handlers: what becomes due meanwhile has its own turn
    std::vector<HandlerId> due;
    for (const auto &handler : m_handlers) {
        if (handler.second.due)
            due.push_back(handler.first);
    }
    for (const HandlerId id : due) {
        const auto handler = m_handlers.find(id);
        if (handler == m_handlers.end())
            continue;
        const std::function<void()> run = std::move(handler->second.run);
        m_handlers.erase(handler);
        run();
    }
}

} // namespace Binder
