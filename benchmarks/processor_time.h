#pragma once

#include <ctime>

/// A rival that uses up a fixed amount of processor time and nothing else, for claims about a share
/// of a budget.
inline void spendProcessorTime(long nanoseconds) {
    const auto used = [] {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return time.tv_sec * 1'000'000'000L + time.tv_nsec;
    };
    const long end = used() + nanoseconds;
    while (used() < end) {
    }
}
