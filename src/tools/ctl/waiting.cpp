#include "tools/ctl/waiting.h"

namespace Waiting {

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
