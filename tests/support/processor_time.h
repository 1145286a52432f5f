#pragma once

#include <QtGlobal>
#include <ctime>

/// Processor time that the calling thread has used, in nanoseconds. Unlike the clock it does not go
/// on while a busy machine runs something else.
inline qint64 processorNs() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return qint64{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}
