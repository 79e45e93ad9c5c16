#pragma once

#include "binder/intent.h"
#include "daemon/waitinglist.h"

#include <functional>

/// Intents that wait to be started, oldest first. They live in memory only.
class IntentQueue
{
public:
    /// False, with a warning now and then, when too many wait already. Extras of a type that is the
    /// bus's own are kept as that type only, without their content.
    bool add(const Intent &intent);

    bool isEmpty() const { return m_waiting.isEmpty(); }

    /// Hands each intent to `start`, in order and one at a time, those included that are added
    /// meanwhile. A call from inside `start` does nothing: the outer one gets there. When `start`
    /// returns false nobody was there to take the intent, which waits on with those behind it.
    void workThrough(const std::function<bool(const Intent &)> &start);

private:
    WaitingList<Intent> m_waiting;
    bool m_busy = false;
};
