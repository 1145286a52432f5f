#include "awareness/follow_view.h"

#include "app/identity.h"
#include "awareness/overlay_geometry.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr double heldZoom = 8.0;
constexpr double leastOwnerZoom = 3.0;     // while the hold lasts
constexpr double nearlyMaximumZoom = 7.95; // counts as the strongest zoom

struct Aim {
    QRect region; ///< Null: nothing to aim at.
    double zoom = 1.0;
};

QString yesNo(bool value) {
    return value ? u"true"_s : u"false"_s;
}

QString secondsText(qint64 ms) {
    return QString::number(double(ms) / 1000.0, 'f', 1);
}

void beginPass(FollowView& view) {
    view.targetCenter = QPoint();
    view.targetDistance = 0.0;
    view.zoomReason = u"no target"_s;
    view.zoomSmoothingState = u"idle"_s;
    view.cropCenterSmoothingState = u"idle"_s;
    view.maxZoomActive = false;
    view.closeNoZoomActive = false;
    view.targetInSafeZone = true;
    view.edgeProtectionActive = false;
    view.zoomSnapPrevented = false;
}

QRect regionOf(const FaceOverlay& target, const FollowTarget& follow, const QSize& imageSize) {
    const QRect head = estimatedHeadRegion(target, imageSize);
    if (!follow.reacquireMode || !follow.lastTavinHeadRegion.isValid())
        return head;
    return (head | follow.lastTavinHeadRegion) & QRect(QPoint(0, 0), imageSize);
}

Aim aimAt(FollowView& view, const FollowTarget& follow, const FaceOverlay* overlay,
          const QSize& imageSize) {
    if (overlay) {
        view.targetDistance = overlay->hasDistance ? overlay->distanceMeters : 0.0;
        const QRect region = imageSize.isEmpty() ? QRect() : regionOf(*overlay, follow, imageSize);
        return {region, targetZoom(view, *overlay, imageSize, follow.reacquireMode)};
    }
    if (!follow.reacquireMode || imageSize.isEmpty())
        return {};
    view.maxZoomActive = true;
    view.zoomReason = u"recent Tavin lost, holding last known head region"_s;
    return {follow.lastTavinHeadRegion, heldZoom};
}

/// Returns whether the hold applies: it lasts, and it is not the owner who stands close.
bool holdOwnerZoom(FollowView& view, FollowTarget& follow, const FaceOverlay* overlay,
                   qint64 holdMs, double& zoom) {
    if (holdMs <= 0 || view.closeNoZoomActive || (overlay && isCloseOwner(*overlay)))
        return false;
    if (overlay && overlay->label == identity::owner && !follow.reacquireMode) {
        zoom = std::max(zoom, leastOwnerZoom);
        view.maxZoomActive = view.maxZoomActive || zoom >= nearlyMaximumZoom;
    } else {
        follow.reacquireMode = true;
        view.maxZoomActive = true;
        zoom = heldZoom;
    }
    if (view.zoomReason == u"no target"_s)
        view.zoomReason = u"Tavin zoom hold active"_s;
    return true;
}

QString keptCropText(const FollowView& view, const FollowTarget& follow, qint64 holdMs) {
    return u"Reacquiring Tavin face | Follow zoom: %1x | zoom_hold_remaining=%2s | "
           "close_no_zoom_active false | reacquire_mode true | max_zoom_active %3 | "
           "zoom_reason: holding previous crop | zoom_smoothing_state: hold | "
           "crop_center_smoothing_state: hold | last_tavin_seen_ms=%4"_s.arg(
               QString::number(view.followZoom, 'f', 1), secondsText(holdMs),
               yesNo(view.maxZoomActive), QString::number(follow.lastTavinSeenMs));
}

void resetView(FollowView& view) {
    view.followZoom = 1.0;
    view.followCrop = QRect();
    view.targetHeadRegion = QRect();
    view.smoothedCropCenter = QPointF();
}

void startFromWholeImage(FollowView& view, const QSize& imageSize) {
    view.followCrop = QRect(QPoint(0, 0), imageSize);
    view.smoothedCropCenter = QPoint(imageSize.width() / 2, imageSize.height() / 2);
    view.followZoom = 1.0;
    view.zoomSnapPrevented = true;
}

QString zoomMark(const FollowView& view) {
    if (view.maxZoomActive)
        return u" max"_s;
    return view.closeNoZoomActive ? u" close/no zoom"_s : QString();
}

/// What stands behind the follow status.
QString statusText(const FollowView& view, const FollowTarget& follow, qint64 holdMs) {
    const QStringList fields = {
        u" | Follow zoom: "_s + QString::number(view.followZoom, 'f', 1) + u'x' + zoomMark(view),
        u"target_distance="_s + QString::number(view.targetDistance, 'f', 2) + u'm',
        u"zoom_hold_remaining="_s + secondsText(holdMs) + u's',
        u"close_no_zoom_active "_s + yesNo(view.closeNoZoomActive),
        u"reacquire_mode "_s + yesNo(follow.reacquireMode),
        u"max_zoom_active "_s + yesNo(view.maxZoomActive),
        u"target_in_safe_zone "_s + yesNo(view.targetInSafeZone),
        u"edge_protection_active "_s + yesNo(view.edgeProtectionActive),
        u"zoom_snap_prevented "_s + yesNo(view.zoomSnapPrevented),
        u"zoom_reason: "_s + view.zoomReason,
        u"follow_target_reason: "_s + follow.followTargetReason,
        u"target_center=%1,%2"_s.arg(view.targetCenter.x()).arg(view.targetCenter.y()),
        u"smoothed_crop_center="_s + QString::number(view.smoothedCropCenter.x(), 'f', 0) + u',' +
            QString::number(view.smoothedCropCenter.y(), 'f', 0),
        u"zoom_smoothing_state: "_s + view.zoomSmoothingState,
        u"crop_center_smoothing_state: "_s + view.cropCenterSmoothingState,
        u"last_tavin_seen_ms="_s + QString::number(follow.lastTavinSeenMs),
    };
    return fields.join(u" | "_s);
}

} // namespace

void updateFollowView(FollowView& view, FollowTarget& follow, const FaceOverlay* overlay,
                      const QSize& imageSize, qint64 now) {
    beginPass(view);
    Aim aim = aimAt(view, follow, overlay, imageSize);
    const qint64 holdMs = std::max<qint64>(follow.zoomHoldUntilMs - now, 0);
    const bool held = holdOwnerZoom(view, follow, overlay, holdMs, aim.zoom);
    if (!aim.region.isValid()) {
        if (held && view.followCrop.isValid())
            follow.selectedFollowTarget = keptCropText(view, follow, holdMs);
        else
            resetView(view);
        return;
    }

    if (!view.followCrop.isValid())
        startFromWholeImage(view, imageSize);
    smoothZoom(view, aim.zoom, follow.reacquireMode);
    moveFollowCrop(view, aim.region, imageSize, follow.reacquireMode);
    view.targetHeadRegion = aim.region;
    if (overlay && overlay->stale && overlay->label == identity::owner)
        follow.selectedFollowTarget = u"Tavin lost, holding last position"_s;
    follow.selectedFollowTarget += statusText(view, follow, holdMs);
}
