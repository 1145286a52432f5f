#include "face/pass_rest.h"

#include <algorithm>

namespace {

/// Within awakeMs. Negative when the clock was set back in between, which is no news.
bool isRecent(qint64 agoMs) {
    return agoMs >= 0 && agoMs < PassRest::awakeMs;
}

bool cameOrWent(const face::Track& track, qint64 seenMs, qint64 passMs) {
    const qint64 unseenMs = seenMs - track.lastSeenMs;
    return isRecent(seenMs + passMs - track.firstSeenMs) ||
           (unseenMs != 0 && isRecent(unseenMs + passMs));
}

} // namespace

PassRest::Outcome PassRest::outcomeOf(const FaceTracks& tracks, qint64 seenMs, qint64 passMs,
                                      qsizetype bodyRegions) {
    Outcome outcome;
    for (const face::Track& track : tracks.tracks) {
        if ((isShown(track) && cameOrWent(track, seenMs, passMs)) ||
            isAboutToBeShown(track, seenMs))
            outcome.newFace = true;
    }
    outcome.bodyRegions = bodyRegions;
    return outcome;
}

qint64 PassRest::after(const Outcome& outcome, qint64 beganMs, qint64 endedMs) {
    if (!begun || outcome.bodyRegions > lastBodyRegions)
        awakeUntilMs = beganMs + awakeMs;
    begun = true;
    lastBodyRegions = outcome.bodyRegions;
    if (outcome.newFace || endedMs < awakeUntilMs)
        return 0;
    return std::clamp(beganMs + cycleMs - endedMs, qint64{0}, cycleMs);
}
