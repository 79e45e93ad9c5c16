#include "platform/binder/retrytimer.h"

#include <utility>

namespace Binder {

namespace {

constexpr qint64 EagerPeriodMs = qint64(60) * 1000;
constexpr int EagerIntervalMs = 1000;
constexpr int PatientIntervalMs = 8 * 1000;

} // namespace

RetryTimer::RetryTimer(std::function<void()> attempt)
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer); // a coarse one may fire early
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer, std::move(attempt));
    m_since.start();
}

void RetryTimer::schedule()
{
    m_timer.start(retryInterval(m_since.elapsed()));
}

int retryInterval(qint64 sinceStart)
{
    return sinceStart < EagerPeriodMs ? EagerIntervalMs : PatientIntervalMs;
}

} // namespace Binder
