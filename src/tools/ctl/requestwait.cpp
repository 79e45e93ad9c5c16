#include "tools/ctl/requestwait.h"

#include "tools/ctl/context.h"
#include "tools/ctl/waiting.h"

RequestWait::RequestWait(Context &context, bool tellsStates)
    : m_context(context)
    , m_daemon(context.daemonOwner())
    , m_tellsStates(tellsStates)
{
}

RequestWait::End RequestWait::until(const std::function<bool()> &isSeen, int timeoutMs)
{
    End end = End::TimeUp;
    const auto hasEnded = [&] {
        if (isSeen())
            end = End::Seen;
        else if (lookAtUnit(); !m_unit.outcome.isDone())
            end = End::RuntimeUnknown;
        else if (m_unit.hasFailed())
            end = End::RuntimeFailed;
        else if (m_daemon.isEmpty() || m_context.daemonOwner() != m_daemon)
            end = End::DaemonGone;
        return end != End::TimeUp;
    };
    Waiting::until(hasEnded, timeoutMs);
    return end;
}

void RequestWait::lookAtUnit()
{
    m_unit = m_context.unit().read();
    if (!m_tellsStates || !m_unit.outcome.isDone() || m_unit.activeState == m_toldState)
        return;
    m_toldState = m_unit.activeState;
    m_context.out().line(QStringLiteral("  The Android runtime is %1.").arg(m_toldState));
}
