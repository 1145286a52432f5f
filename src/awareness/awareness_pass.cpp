#include "awareness/awareness_pass.h"

#include "awareness/body_overlays.h"
#include "awareness/face_distance.h"
#include "awareness/overlay_rejection.h"
#include "awareness/voice_zones.h"

namespace {

bool hasDepth(const AwarenessInput& input) {
    return !input.lastDepthMm.isEmpty() && input.depthWidth > 0 && input.depthHeight > 0 &&
           !input.imageSize.isEmpty();
}

QList<BodyCandidate> trackBodies(AwarenessState& state, const AwarenessInput& input,
                                 const QList<FaceOverlay>& faces, qint64 now) {
    QList<BodyCandidate> candidates;
    if (hasDepth(input)) {
        candidates = detectDepthBodyCandidates(input.lastDepthMm, input.depthWidth,
                                               input.depthHeight, input.imageSize);
        matchBodyTracks(state.bodyTracks, state.nextBodyTrackId, candidates, faces,
                        input.imageSize.width(), now, input.personLostMs);
    }
    expireBodyTracks(state.bodyTracks, now, input.personLostMs);
    return candidates;
}

QList<QRect> faceSearchRegions(const QRect& followCrop, const QList<BodyCandidate>& candidates) {
    QList<QRect> regions;
    if (followCrop.isValid())
        regions.append(followCrop);
    for (const BodyCandidate& candidate : candidates)
        regions.append(candidate.rect);
    return regions;
}

} // namespace

QList<FaceOverlay> measuredFaces(const AwarenessInput& input) {
    QList<FaceOverlay> faces = input.faceOverlays;
    keepFacesOnly(faces);
    if (hasDepth(input))
        measureFaceDistances(faces, input.lastDepthMm, input.depthWidth, input.depthHeight,
                             input.imageSize);
    return faces;
}

AwarenessResult runAwarenessPass(AwarenessState& state, const AwarenessInput& input,
                                 const QList<FaceOverlay>& faces, qint64 now) {
    AwarenessResult result;
    result.faceOverlays = faces;
    result.bodyCandidates = trackBodies(state, input, faces, now);
    appendBodyOverlays(result.faceOverlays, state.bodyTracks, now);
    if (!input.layoutDebug)
        result.rejections = rejectOverlays(result.faceOverlays, input.imageSize.width());
    tagSpeakers(result.faceOverlays, input.voiceStatus, input.invertAudioDirection,
                input.imageSize.width());
    const qsizetype target =
        chooseFollowTarget(state.followTarget, result.faceOverlays, input.imageSize, now);
    updateFollowView(state.followView, state.followTarget,
                     target < 0 ? nullptr : &result.faceOverlays.at(target), input.imageSize, now);
    result.bodyRegions = faceSearchRegions(state.followView.followCrop, result.bodyCandidates);
    return result;
}
