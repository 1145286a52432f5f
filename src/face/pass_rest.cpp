#include "face/pass_rest.h"

#include <algorithm>

namespace {

/// Within awakeMs. Negative when the clock was set back in between, which is no news.
bool isRecent(qint64 agoMs) {
    return agoMs >= 0 && agoMs < PassRest::awakeMs;
}

bool cameOrWent(const face::Track& track, const PassRest::Pass& pass) {
    const qint64 passMs = pass.endedMs - pass.beganMs;
    const qint64 unseenMs = pass.seenMs - track.lastSeenMs;
    return isRecent(pass.seenMs + passMs - track.firstSeenMs) ||
           (unseenMs != 0 && isRecent(unseenMs + passMs));
}

/// Whether a face that is shown came or went, or one is about to be shown.
bool hasNewFace(const FaceTracks& tracks, const PassRest::Pass& pass) {
    return std::ranges::any_of(tracks.tracks, [&pass](const face::Track& track) {
        return (isShown(track) && cameOrWent(track, pass)) || isAboutToBeShown(track, pass.seenMs);
    });
}

} // namespace

qint64 PassRest::after(const Pass& pass, const FaceTracks& tracks) {
    if (!begun || pass.bodyRegions > lastBodyRegions)
        awakeUntilMs = pass.beganMs + awakeMs;
    begun = true;
    lastBodyRegions = pass.bodyRegions;
    if (hasNewFace(tracks, pass) || pass.endedMs < awakeUntilMs)
        return 0;
    return std::clamp(pass.beganMs + cycleMs - pass.endedMs, qint64{0}, cycleMs);
}
