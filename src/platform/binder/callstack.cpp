#include "platform/binder/callstack.h"

#include <algorithm>
#include <utility>

namespace Binder {

void CallStack::begin(OutgoingCall *call)
{
    m_waiting.push_back(call);
    m_unconfirmed.push_back(call);
}

void CallStack::end(OutgoingCall *call)
{
    m_waiting.erase(std::remove(m_waiting.begin(), m_waiting.end(), call), m_waiting.end());
    // a call that failed at once is never confirmed
    m_unconfirmed.erase(std::remove(m_unconfirmed.begin(), m_unconfirmed.end(), call),
                        m_unconfirmed.end());
}

void CallStack::replySent()
{
    m_unconfirmed.push_back(nullptr);
}

void CallStack::onCompleted()
{
    if (m_unconfirmed.empty())
        return;
    OutgoingCall *call = m_unconfirmed.front();
    if (call != nullptr && !isTaken(*call))
        return;
    m_unconfirmed.pop_front();
    if (call == nullptr)
        return;
    call->confirmed = true;
    if (call->oneWay)
        call->done = true;
}

void CallStack::onDead()
{
    if (!isAwaited())
        return;
    m_waiting.back()->refused = !m_waiting.back()->confirmed;
    onAnswered(StatusDeadObject, nullptr);
}

void CallStack::onAnswered(Status status, std::unique_ptr<IncomingData> reply)
{
    if (!isAwaited())
        return;
    OutgoingCall *call = m_waiting.back();
    call->done = true;
    call->status = status;
    call->reply = std::move(reply);
}

bool CallStack::isAwaited() const
{
    return !m_waiting.empty() && !m_waiting.back()->done && isTaken(*m_waiting.back());
}

} // namespace Binder
