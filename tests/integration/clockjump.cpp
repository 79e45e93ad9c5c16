// A clock that jumps, for a program that this is preloaded into: what it is told of the time of day
// is as many seconds off as the file CLOCKJUMP_FILE says (one 64-bit number, which may change). The
// clocks that only measure time are left alone, as they are when somebody sets the real clock.

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

const volatile std::int64_t *mapOffset()
{
    const char *path = std::getenv("CLOCKJUMP_FILE");
    const int file = path ? ::open(path, O_RDONLY | O_CLOEXEC) : -1;
    void *offset = ::mmap(nullptr, sizeof(std::int64_t), PROT_READ, MAP_SHARED, file, 0);
    ::close(file);
    if (offset == MAP_FAILED)
        std::abort();
    return static_cast<const volatile std::int64_t *>(offset);
}

std::int64_t offsetSeconds()
{
    static const volatile std::int64_t *offset = mapOffset();
    return *offset;
}

bool isTimeOfDay(clockid_t clock)
{
    return clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE || clock == CLOCK_TAI;
}

} // namespace

extern "C" int clock_gettime(clockid_t clock, timespec *result) noexcept
{
    using Function = int (*)(clockid_t, timespec *);
    static const auto next = reinterpret_cast<Function>(::dlsym(RTLD_NEXT, "clock_gettime"));
    const int status = next(clock, result);
    if (status == 0 && isTimeOfDay(clock))
        result->tv_sec += offsetSeconds();
    return status;
}

extern "C" int gettimeofday(timeval *result, void *) noexcept
{
    timespec now = {};
    ::clock_gettime(CLOCK_REALTIME, &now);
    *result = {now.tv_sec, now.tv_nsec / 1000};
    return 0;
}

extern "C" time_t time(time_t *result) noexcept
{
    timespec now = {};
    ::clock_gettime(CLOCK_REALTIME, &now);
    if (result)
        *result = now.tv_sec;
    return now.tv_sec;
}
