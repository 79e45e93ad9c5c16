#pragma once

#include <QElapsedTimer>
#include <QTimer>

#include <functional>

namespace Binder {

/// Paces repeated questions to a runtime that is coming up: one a second for the first minute,
/// then one every eight seconds. A runtime that has not come up by then will probably not do so
/// soon, and must not drain the battery.
class RetryTimer
{
public:
    explicit RetryTimer(std::function<void()> attempt);

    /// The first minute begins now.
    void restartPace() { m_since.restart(); }

    /// The next attempt comes one interval from now.
    void schedule();

    void stop() { m_timer.stop(); }
    bool isScheduled() const { return m_timer.isActive(); }

private:
    QTimer m_timer;
    QElapsedTimer m_since;
};

/// The pause before the next attempt, `sinceStart` milliseconds after the first.
int retryInterval(qint64 sinceStart);

} // namespace Binder
