#include "awareness/awareness_pass.h"

#include "awareness/body_overlays.h"
#include "awareness/face_distance.h"
#include "awareness/speaker_notes.h"

namespace {

bool hasDepth(const AwarenessInput& input) {
    return !input.depth.depth_mm.isEmpty() && input.depth.width > 0 && input.depth.height > 0 &&
           !input.imageSize.isEmpty();
}

QList<FaceOverlay> measuredFaces(const AwarenessInput& input) {
    QList<FaceOverlay> faces = input.faceOverlays;
    keepFacesOnly(faces);
    if (hasDepth(input))
        measureFaceDistances(faces, input.depth, input.imageSize);
    return faces;
}

QList<BodyCandidate> trackBodies(AwarenessState& state, const AwarenessInput& input,
                                 const QList<FaceOverlay>& faces, qint64 now) {
    QList<BodyCandidate> candidates;
    if (hasDepth(input)) {
        candidates = detectDepthBodyCandidates(input.depth, input.imageSize);
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

AwarenessResult runAwarenessPass(AwarenessState& state, const AwarenessInput& input,
                                 const WallClock& clock) {
    AwarenessResult result;
    QList<FaceOverlay>& overlays = result.faceOverlays;
    const int imageWidth = input.imageSize.width();
    overlays = measuredFaces(input);
    const qint64 now = clock();
    result.bodyCandidates = trackBodies(state, input, overlays, now);
    appendBodyOverlays(overlays, state.bodyTracks, now);
    if (!input.layoutDebug)
        result.rejections = rejectOverlays(overlays, imageWidth);
    tagSpeakers(overlays, input.voiceStatus, input.invertAudioDirection, imageWidth);
    const FollowChoice choice =
        chooseFollowTarget(state.followTarget, overlays, input.imageSize, now);
    result.follow = updateFollowView(state.followView, state.followTarget, choice,
                                     choice.overlay < 0 ? nullptr : &overlays.at(choice.overlay),
                                     input.imageSize, now);
    result.bodyRegions = faceSearchRegions(state.followView.followCrop, result.bodyCandidates);
    return result;
}
