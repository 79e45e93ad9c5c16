#include "tools/common/waiting.h"

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

namespace Waiting {

bool until(const std::function<bool()> &condition, int timeoutMs)
{
    constexpr int LookIntervalMs = 200;

    if (condition())
        return true;
    const QDeadlineTimer deadline(timeoutMs);
    bool isTrue = false;
    QEventLoop loop;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &loop, [&] {
        isTrue = condition();
        if (isTrue || deadline.hasExpired())
            loop.quit();
    });
    timer.start(LookIntervalMs);
    loop.exec();
    return isTrue;
}

} // namespace Waiting
