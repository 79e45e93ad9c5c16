#include "daemon/intentqueue.h"

void IntentQueue::workThrough(const std::function<bool(const Intent &)> &start)
{
    if (m_busy)
        return;
    m_busy = true;
    while (!m_waiting.isEmpty()) {
        const Intent intent = m_waiting.takeFirst();
        if (start(intent))
            continue;
        m_waiting.putBack(intent);
        break;
    }
    m_busy = false;
}
