#include "tools/ctl/waiting.h"

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

int timeoutMs(const Invocation &invocation, int defaultSeconds)
{
    constexpr int MaxSeconds = 24 * 60 * 60;
    constexpr int MsPerSecond = 1000;

    const QString option = QStringLiteral("--timeout");
    if (!invocation.has(option))
        return defaultSeconds * MsPerSecond;
    bool isNumber = false;
    const int seconds = invocation.value(option).toInt(&isNumber);
    return isNumber && seconds > 0 && seconds <= MaxSeconds ? seconds * MsPerSecond : -1;
}

} // namespace Waiting
