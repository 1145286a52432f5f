#pragma once

#include <QtGlobal>
#include <ctime>

// Unlike the clock, processor time does not go on while a busy machine runs something else.

inline qint64 processorNs(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return qint64{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

/// Processor time that the calling thread has used, in nanoseconds.
inline qint64 processorNs() {
    return processorNs(CLOCK_THREAD_CPUTIME_ID);
}

/// Processor time that all threads of this process have used, in milliseconds.
inline qint64 processMs() {
    return processorNs(CLOCK_PROCESS_CPUTIME_ID) / 1'000'000;
}
