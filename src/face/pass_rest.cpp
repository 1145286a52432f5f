#include "face/pass_rest.h"

#include <algorithm>

namespace {

/// Within awakeMs. Negative when the clock was set back in between, which is no news.
bool isRecent(qint64 agoMs) {
    return agoMs >= 0 && agoMs < PassRest::awakeMs;
}

bool cameOrWent(const face::Track& track, qint64 nowMs) {
    const qint64 unseenMs = nowMs - track.lastSeenMs;
    return isRecent(nowMs - track.firstSeenMs) || (unseenMs != 0 && isRecent(unseenMs));
}

} // namespace

PassRest::Outcome PassRest::outcomeOf(const FaceTracks& tracks, qint64 nowMs,
                                      qsizetype bodyRegions) {
    Outcome outcome;
    for (const face::Track& track : tracks.tracks) {
        if ((isShown(track) && cameOrWent(track, nowMs)) || isAboutToBeShown(track, nowMs))
            outcome.newFace = true;
    }
    outcome.bodyRegions = bodyRegions;
    return outcome;
}

qint64 PassRest::after(const Outcome& outcome, qint64 beganMs, qint64 endedMs) {
    if (!begun || outcome.bodyRegions > lastBodyRegions)
        awakeUntilMs = endedMs + awakeMs;
    begun = true;
    lastBodyRegions = outcome.bodyRegions;
    if (outcome.newFace || endedMs < awakeUntilMs)
        return 0;
    return std::clamp(beganMs + cycleMs - endedMs, qint64{0}, cycleMs);
}
