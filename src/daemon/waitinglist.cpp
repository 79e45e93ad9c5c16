#include "daemon/waitinglist.h"

#include "platform/host/logging.h"

bool WaitingLimit::enter(qint64 bytes)
{
    if (!hasRoomFor(bytes)) {
        if (!m_fullTold)
            qCWarning(daemonLog) << "Too many requests wait for the runtime, dropping new ones";
        m_fullTold = m_requests > 0;
        return false;
    }
    enterAgain(bytes);
    return true;
}

void WaitingLimit::enterAgain(qint64 bytes)
{
    ++m_requests;
    m_bytes += bytes;
}

void WaitingLimit::leave(qint64 bytes)
{
    --m_requests;
    m_bytes -= bytes;
    if (m_requests == 0)
        m_fullTold = false;
}
