#pragma once

#include "app/voice_direction_status.h"
#include "awareness/body_tracks.h"
#include "awareness/follow_view.h"

#include <QStringList>

/// What lives from pass to pass.
struct AwarenessState {
    QList<BodyTrack> bodyTracks;
    int nextBodyTrackId = 0;
    FollowTarget followTarget;
    FollowView followView;
};

/// The newest data and the switches that a pass looks at.
struct AwarenessInput {
    QList<FaceOverlay> faceOverlays; ///< The face worker's, or what an earlier pass made of them.
    QSize imageSize;                 ///< The colour image's; empty while there is none.
    QList<float> lastDepthMm; ///< Row by row, depthWidth x depthHeight, millimetres, 0 for none.
    int depthWidth = 0;
    int depthHeight = 0;
    VoiceDirectionStatus voiceStatus;
    bool layoutDebug = false; ///< Nothing is rejected, so that the layout can be inspected.
    int personLostMs = 5000;  ///< At least 0.
    bool invertAudioDirection = false;
};

/// What a pass found.
struct AwarenessResult {
    QList<FaceOverlay> faceOverlays; ///< Kept faces and bodies, with their speaker notes.
    QList<BodyCandidate> bodyCandidates;
    QStringList rejections;   ///< A line for each overlay that was dropped.
    QList<QRect> bodyRegions; ///< Where faces are worth a closer look: the follow crop, bodies.
};

/// The faces of `input` at the distances that the newest depth gives them, without what an earlier
/// pass added. Without depth or a colour image they keep the distances that they came with.
QList<FaceOverlay> measuredFaces(const AwarenessInput& input);

/// One pass over the newest data; `faces` are the measured ones, `now` milliseconds since the
/// epoch:
/// 1. body candidates, and with them the body tracks;
/// 2. stable tracks become overlays;
/// 3. photographs, background faces and duplicates of the owner are dropped;
/// 4. the voice's direction is noted on the overlays;
/// 5. one overlay is chosen to be followed;
/// 6. the follow zoom and crop take a step towards it;
/// 7. the regions for the face worker are listed.
AwarenessResult runAwarenessPass(AwarenessState& state, const AwarenessInput& input,
                                 const QList<FaceOverlay>& faces, qint64 now);
