#include "platform/host/polltimeout.h"

#include <time.h>

int pollTimeoutMs(quint64 timeoutUs, quint64 nowUs)
{
    if (timeoutUs == NoTimeoutUs)
        return -1;
    if (timeoutUs <= nowUs)
        return 0;
    constexpr quint64 longestMs = std::numeric_limits<int>::max();
    return static_cast<int>(qMin((timeoutUs - nowUs) / 1000, longestMs));
}

quint64 monotonicTimeUs()
{
    timespec clock{};
    clock_gettime(CLOCK_MONOTONIC, &clock);
    return static_cast<quint64>(clock.tv_sec) * 1000000 +
           static_cast<quint64>(clock.tv_nsec) / 1000;
}
