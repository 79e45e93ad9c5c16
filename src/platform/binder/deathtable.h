#pragma once

#include "platform/binder/types.h"

#include <functional>
#include <map>

namespace Binder {

class Channel;

/// Which remote objects are watched for death, and who wants to be told.
///
/// The driver takes one request for each handle, so the first handler makes it and all share it.
/// It stays until the handle is released.
class DeathTable
{
public:
    /// `schedule` is called when handlers have become due: runDue() is then to be called from the
    /// event loop.
    DeathTable(Channel &channel, std::function<void()> schedule);

    HandlerId add(Handle handle, std::function<void()> handler);
    void remove(HandlerId id);

    /// The handle is about to be released.
    void forget(Handle handle);

    /// The driver says that the object watched under this cookie is dead.
    void onDead(quint64 cookie);

    /// The device is lost, and every object with it.
    void onAllDead();

    void runDue();

private:
    struct Watch
    {
        quint64 cookie = 0;
        bool dead = false;
    };
    struct Handler
    {
        Handle handle = 0;
        bool due = false;
        std::function<void()> run;
    };

    void markDead(Handle handle, Watch *watch);

    Channel &m_channel;
    std::function<void()> m_schedule;
    std::map<Handle, Watch> m_watches;
    std::map<HandlerId, Handler> m_handlers;
};

} // namespace Binder
