#include "awareness/follow_view.h"

#include <algorithm>

namespace {

constexpr double reacquireZoom = 8.0;
constexpr double farthestZoom = 7.0;
constexpr double minHeldOwnerZoom = 3.0;
constexpr double nearlyMaximumZoom = 7.95;
constexpr double steadyBand = 0.05;
constexpr double reacquireWeight = 0.16;
constexpr double zoomInWeight = 0.10;
constexpr double steadyWeight = 0.07;
constexpr double zoomOutWeight = 0.045; // losing the target for a moment must not widen the view

constexpr TargetZoom closeNoZoom{1.0, ZoomReason::CloseNoZoom, false};

/// `reason` is that of a target which is not close.
TargetZoom zoomByDistance(double d, bool reacquireMode, ZoomReason reason) {
    if (d < closeOwner_m)
        return closeNoZoom;
    if (reacquireMode)
        return {reacquireZoom, reason, true};
    if (d < 1.5)
        return {1.5 + 2.0 * (d - 1.0), reason};
    if (d < 2.2)
        return {3.0 + 1.5 * (d - 1.5) / 0.7, reason};
    if (d < 3.5)
        return {5.0 + 2.0 * (d - 2.2) / 1.3, reason};
    return {farthestZoom, reason, true};
}

TargetZoom zoomByFaceHeight(double fraction, bool reacquireMode, ZoomReason reason) {
    if (reacquireMode)
        return {reacquireZoom, reason, true};
    if (fraction < 0.16)
        return {farthestZoom, reason, true};
    if (fraction < 0.24)
        return {5.5, reason};
    if (fraction < 0.38)
        return {3.5, reason};
    if (fraction < 0.55)
        return {2.0, reason};
    return closeNoZoom;
}

ZoomReason reasonFor(const FaceOverlay& target, bool reacquireMode) {
    if (reacquireMode)
        return ZoomReason::Reacquire;
    return target.bodyOnly ? ZoomReason::BodyHead : ZoomReason::FaceHead;
}

ZoomDirection directionOf(double zoom, double target) {
    if (target > zoom + steadyBand)
        return ZoomDirection::In;
    return target < zoom - steadyBand ? ZoomDirection::Out : ZoomDirection::Steady;
}

double weightOf(ZoomDirection direction, bool reacquireMode) {
    if (reacquireMode)
        return reacquireWeight;
    switch (direction) {
    case ZoomDirection::In:
        return zoomInWeight;
    case ZoomDirection::Out:
        return zoomOutWeight;
    case ZoomDirection::Steady:
        break;
    }
    return steadyWeight;
}

} // namespace

TargetZoom targetZoom(const FaceOverlay& target, const QSize& imageSize, bool reacquireMode) {
    const ZoomReason reason = reasonFor(target, reacquireMode);
    if (imageSize.isEmpty())
        return {1.0, reason};
    if (target.hasDistance)
        return zoomByDistance(target.distanceMeters, reacquireMode, reason);
    return zoomByFaceHeight(double(target.rect.height()) / imageSize.height(), reacquireMode,
                            reason);
}

TargetZoom heldOwnerZoom(TargetZoom zoom) {
    zoom.factor = std::max(zoom.factor, minHeldOwnerZoom);
    zoom.maxZoomActive = zoom.maxZoomActive || zoom.factor >= nearlyMaximumZoom;
    return zoom;
}

ZoomStep smoothedZoom(double zoom, double target, bool reacquireMode) {
    ZoomStep step;
    step.direction = directionOf(zoom, target);
    step.weight = weightOf(step.direction, reacquireMode);
    step.target = target;
    step.zoom = zoom * (1.0 - step.weight) + step.weight * target;
    if (step.zoom >= 1.0 - steadyBand && step.zoom <= 1.0 + steadyBand &&
        target <= 1.0 + steadyBand)
        step.zoom = 1.0;
    return step;
}
