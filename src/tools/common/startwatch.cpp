#include "tools/common/startwatch.h"

StartWatch::StartWatch(const RuntimeUnit::State &before)
    : m_hasBegun(!before.hasFailed())
{
}

bool StartWatch::hasEnded(const RuntimeUnit::State &now)
{
    m_hasBegun = m_hasBegun || !now.hasFailed();
    return !now.outcome.isDone() || now.isActive() ||
           (now.hasFailed() && (m_hasBegun || m_looksFailed.hasExpired()));
}

Outcome StartWatch::failure()
{
    return {ExitStatus::RuntimeUnavailable,
            QStringLiteral("The Android runtime has failed to start. “journalctl -u umbravm” tells "
                           "why.")};
}
