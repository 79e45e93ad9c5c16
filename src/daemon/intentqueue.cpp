#include "daemon/intentqueue.h"

void IntentQueue::workThrough(const std::function<void(const Intent &)> &start)
{
    if (m_busy)
        return;
    m_busy = true;
    while (!m_waiting.isEmpty())
        start(m_waiting.takeFirst());
    m_busy = false;
}
