#pragma once

#include "app/voice_direction_status.h"
#include "awareness/body_tracks.h"
#include "awareness/follow_view.h"
#include "awareness/overlay_rejection.h"

#include <functional>

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
    DepthFrame depth;                ///< Empty while there is none.
    VoiceDirectionStatus voiceStatus;
    bool layoutDebug = false; ///< Nothing is rejected, so that the layout can be inspected.
    int personLostMs = 5000;  ///< At least 0.
    bool invertAudioDirection = false;
};

/// What a pass found. Made new in every pass.
struct AwarenessResult {
    QList<FaceOverlay> faceOverlays; ///< Kept faces and bodies, with their speaker notes.
    QList<BodyCandidate> bodyCandidates;
    QList<Rejection> rejections; ///< The overlays that were dropped.
    FollowPass follow;
    QList<QRect> bodyRegions; ///< Where faces are worth a closer look: the follow crop, bodies.
};

/// Milliseconds since the epoch.
using WallClock = std::function<qint64()>;

/// One pass over the newest data:
/// 1. what an earlier pass added to the overlays is dropped, and the faces that remain get the
///    distances that the newest depth gives them; without depth or a colour image they keep the
///    distances that they came with;
/// 2. body candidates, and with them the body tracks;
/// 3. stable tracks become overlays;
/// 4. photographs, background faces and duplicates of the owner are dropped;
/// 5. the voice's direction is noted on the overlays;
/// 6. one overlay is chosen to be followed;
/// 7. the follow zoom and crop take a step towards it;
/// 8. the regions for the face worker are listed.
/// `clock` is read once, after step 1, and gives the time of the whole pass.
AwarenessResult runAwarenessPass(AwarenessState& state, const AwarenessInput& input,
                                 const WallClock& clock);
