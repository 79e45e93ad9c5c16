#pragma once

#include "binder/intent.h"

#include <QVector>

#include <functional>

/// Intents that wait to be started, oldest first. They live in memory only.
class IntentQueue
{
public:
    void add(const Intent &intent) { m_waiting.append(intent); }

    /// Hands each intent to `start`, in order and one at a time, those included that are added
    /// meanwhile. A call from inside `start` does nothing: the outer one gets there.
    void workThrough(const std::function<void(const Intent &)> &start);

private:
    QVector<Intent> m_waiting;
    bool m_busy = false;
};
