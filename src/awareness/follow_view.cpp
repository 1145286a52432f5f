#include "awareness/follow_view.h"

#include "app/identity.h"
#include "awareness/overlay_geometry.h"

#include <algorithm>

namespace {

constexpr double heldZoom = 8.0;

/// Null: there is nothing to aim at.
QRect regionToAimAt(const FollowTarget& follow, bool reacquireMode, const FaceOverlay* overlay,
                    const QSize& imageSize) {
    if (imageSize.isEmpty())
        return {};
    if (!overlay)
        return reacquireMode ? follow.lastTavinHeadRegion : QRect();
    const QRect head = overlayGeometry::estimatedHeadRegion(*overlay, imageSize);
    if (!reacquireMode || !follow.lastTavinHeadRegion.isValid())
        return head;
    return (head | follow.lastTavinHeadRegion) & QRect(QPoint(0, 0), imageSize);
}

TargetZoom zoomToAimAt(bool reacquireMode, const FaceOverlay* overlay, const QSize& imageSize) {
    if (overlay)
        return targetZoom(*overlay, imageSize, reacquireMode);
    if (!reacquireMode || imageSize.isEmpty())
        return {};
    return {heldZoom, ZoomReason::LastHeadRegion, true};
}

/// Whether the zoom hold applies: it lasts, and nobody stands so close that there is no zoom.
bool isHeld(const FollowPass& pass, const FaceOverlay* overlay) {
    return pass.zoomHoldRemainingMs > 0 && !pass.zoom.closeNoZoomActive() &&
           !(overlay && isCloseOwner(*overlay));
}

void holdOwnerZoom(FollowPass& pass, const FaceOverlay* overlay) {
    if (overlay && overlay->label == identity::owner && !pass.choice.reacquireMode) {
        pass.zoom = heldOwnerZoom(pass.zoom);
    } else {
        pass.choice.reacquireMode = true;
        pass.zoom.maxZoomActive = true;
        pass.zoom.factor = heldZoom;
    }
    if (pass.zoom.zoomReason == ZoomReason::NoTarget)
        pass.zoom.zoomReason = ZoomReason::OwnerHold;
}

void startFromWholeImage(FollowView& view, const QSize& imageSize) {
    view.followCrop = QRect(QPoint(0, 0), imageSize);
    view.smoothedCropCenter = QPoint(imageSize.width() / 2, imageSize.height() / 2);
    view.followZoom = 1.0;
}

void stepTowards(const QRect& region, FollowView& view, FollowPass& pass, const QSize& imageSize) {
    pass.zoomSnapPrevented = !view.followCrop.isValid();
    if (pass.zoomSnapPrevented)
        startFromWholeImage(view, imageSize);
    pass.zoomStep = smoothedZoom(view.followZoom, pass.zoom.factor, pass.choice.reacquireMode);
    view.followZoom = pass.zoomStep->zoom;
    pass.cropStep = movedCrop(view, region, imageSize, pass.choice.reacquireMode);
    view.followCrop = pass.cropStep->crop;
    view.smoothedCropCenter = pass.cropStep->center;
    view.targetHeadRegion = region;
}

} // namespace

FollowPass updateFollowView(FollowView& view, const FollowTarget& follow,
                            const FollowChoice& choice, const FaceOverlay* overlay,
                            const QSize& imageSize, qint64 now) {
    FollowPass pass;
    pass.choice = choice;
    pass.targetDistance = overlay && overlay->hasDistance ? overlay->distanceMeters : 0.0;
    pass.zoomHoldRemainingMs = std::max<qint64>(follow.zoomHoldUntilMs - now, 0);
    const QRect region = regionToAimAt(follow, choice.reacquireMode, overlay, imageSize);
    pass.zoom = zoomToAimAt(choice.reacquireMode, overlay, imageSize);
    const bool held = isHeld(pass, overlay);
    if (held)
        holdOwnerZoom(pass, overlay);

    if (region.isValid()) {
        stepTowards(region, view, pass, imageSize);
        if (overlay && overlay->stale && overlay->label == identity::owner)
            pass.choice.selectedFollowTarget = FollowStatus::OwnerLost;
    } else if (held && view.followCrop.isValid()) {
        pass.previousCropKept = true;
    } else {
        view = FollowView();
    }
    return pass;
}
