#pragma once

#include <QtGlobal>

#include <optional>

/// Keeps something that could happen many times a second, such as a line of the log, to once in an
/// interval. Which clock counts is the caller's choice, as long as it is always the same one.
class RateLimit {
public:
    explicit constexpr RateLimit(qint64 interval = 1000) : intervalMs(interval) {}

    /// Whether it may happen now: always the first time, then when the interval has passed since it
    /// last did. After true it counts as having happened at `nowMs`.
    constexpr bool allows(qint64 nowMs) {
        if (lastMs && nowMs - *lastMs < intervalMs)
            return false;
        lastMs = nowMs;
        return true;
    }

    /// Makes the first time wait for an interval from now as well. Does nothing after that.
    constexpr void startAt(qint64 nowMs) {
        if (!lastMs)
            lastMs = nowMs;
    }

private:
    qint64 intervalMs;
    std::optional<qint64> lastMs; ///< When it last happened; nothing before the first time.
};
