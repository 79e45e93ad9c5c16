#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <vector>

/// Says what `work` took, as one line of JSON on standard output: {"items", "wall_ns", "cpu_ns"}.
/// `items` is what the work is divided by when its cost is told. Processor time is that of all
/// threads of the process, in the kernel too.
template <typename Work>
void printCost(int items, Work work)
{
    const auto processorTime = [] {
        timespec time = {};
        ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
        return static_cast<long long>(time.tv_sec) * 1000000000 + time.tv_nsec;
    };
    const auto begin = std::chrono::steady_clock::now();
    const long long beginProcessor = processorTime();
    work();
    const long long processor = processorTime() - beginProcessor;
    const std::chrono::nanoseconds wall = std::chrono::steady_clock::now() - begin;
    std::printf("{\"items\": %d, \"wall_ns\": %lld, \"cpu_ns\": %lld}\n", items,
                static_cast<long long>(wall.count()), processor);
    std::fflush(stdout);
}

/// The same for the median of `count` times of the same work, which is a single item then.
template <typename Work>
void printMedianCost(int count, Work work)
{
    std::vector<long long> times;
    for (int i = 0; i < count; ++i) {
        const auto begin = std::chrono::steady_clock::now();
        work(i);
        const std::chrono::nanoseconds taken = std::chrono::steady_clock::now() - begin;
        times.push_back(static_cast<long long>(taken.count()));
    }
    std::nth_element(times.begin(), times.begin() + count / 2, times.end());
    std::printf("{\"items\": 1, \"wall_ns\": %lld, \"cpu_ns\": 0}\n",
                times[static_cast<std::size_t>(count / 2)]);
    std::fflush(stdout);
}
