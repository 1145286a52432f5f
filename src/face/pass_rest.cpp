#include "face/pass_rest.h"

#include <algorithm>

PassRest::Outcome PassRest::outcomeOf(const FaceTracks& tracks, qint64 nowMs,
                                      qsizetype bodyRegions) {
    Outcome outcome;
    for (const face::Track& track : tracks.tracks) {
        if (isShown(track))
            outcome.shown.push_back(track.id);
        outcome.aboutToShow = outcome.aboutToShow || isAboutToBeShown(track, nowMs);
    }
    outcome.bodyRegions = bodyRegions;
    return outcome;
}

qint64 PassRest::after(const Outcome& outcome, qint64 beganMs, qint64 endedMs) {
    if (!begun || outcome.shown != last.shown || outcome.bodyRegions > last.bodyRegions)
        awakeUntilMs = endedMs + awakeMs;
    begun = true;
    last = outcome;
    if (outcome.aboutToShow || endedMs < awakeUntilMs)
        return 0;
    return std::clamp(beganMs + cycleMs - endedMs, qint64{0}, cycleMs);
}
