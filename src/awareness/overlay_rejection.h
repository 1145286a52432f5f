#pragma once

#include "app/face_overlay.h"

#include <QList>

/// Why an overlay is no person of its own in the room.
enum class RejectionReason {
    NoDepth,        ///< Depth has no usable sample there: probably a photograph.
    FarWithoutBody, ///< An unknown face too far away to be believed without a body.
    DuplicateOfOwner,
};

struct Rejection {
    FaceOverlay overlay;
    RejectionReason reason = RejectionReason::NoDepth;
};

/// Drops faces that look like photographs or belong to the background (no depth there, or unknown
/// and too far away), and then whatever is so close to an overlay of the owner that it must be the
/// same person. Returns what was dropped. `imageWidth` is the colour image's.
QList<Rejection> rejectOverlays(QList<FaceOverlay>& overlays, int imageWidth);
