#include "face/pass_rest.h"

#include <algorithm>

qint64 PassRest::after(const Outcome& outcome, qint64 beganMs, qint64 endedMs) {
    if (!begun || outcome != last || outcome.unshownTrack)
        awakeUntilMs = endedMs + awakeMs;
    begun = true;
    last = outcome;
    if (endedMs < awakeUntilMs)
        return 0;
    return std::clamp(beganMs + cycleMs - endedMs, qint64{0}, cycleMs);
}
