#pragma once

#include "awareness/follow_view.h"

/// What the Follow view's banner and the diagnostic lines say about the follow target and the zoom.
namespace followTexts {

QString statusName(FollowStatus status);
QString zoomReason(ZoomReason reason);
QString zoomSmoothingState(const FollowPass& pass);
QString cropCenterSmoothingState(const FollowPass& pass);

/// The whole follow status of a pass: the target's, and what the zoom and the crop do.
QString selectedFollowTarget(const FollowPass& pass, const FollowView& view,
                             const FollowTarget& follow);

} // namespace followTexts
