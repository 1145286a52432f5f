#include "awareness/follow_texts.h"

using namespace Qt::StringLiterals;

namespace {

QString trueOrFalse(bool value) {
    return value ? u"true"_s : u"false"_s;
}

QString secondsText(qint64 ms) {
    return QString::number(double(ms) / 1000.0, 'f', 1);
}

QString zoomMark(const TargetZoom& zoom) {
    if (zoom.maxZoomActive)
        return u" max"_s;
    return zoom.closeNoZoomActive() ? u" close/no zoom"_s : QString();
}

QString directionName(ZoomDirection direction) {
    switch (direction) {
    case ZoomDirection::In:
        return u"zoom-in slow"_s;
    case ZoomDirection::Out:
        return u"zoom-out gentle"_s;
    case ZoomDirection::Steady:
        break;
    }
    return u"zoom steady"_s;
}

QString keptCropText(const FollowPass& pass, const FollowView& view, const FollowTarget& follow) {
    return u"Reacquiring Tavin face | Follow zoom: %1x | zoom_hold_remaining=%2s | "
           "close_no_zoom_active false | reacquire_mode true | max_zoom_active %3 | "
           "zoom_reason: holding previous crop | zoom_smoothing_state: hold | "
           "crop_center_smoothing_state: hold | last_tavin_seen_ms=%4"_s.arg(
               QString::number(view.followZoom, 'f', 1), secondsText(pass.zoomHoldRemainingMs),
               trueOrFalse(pass.zoom.maxZoomActive), QString::number(follow.lastTavinSeenMs));
}

} // namespace

QString followTexts::statusName(FollowStatus status) {
    switch (status) {
    case FollowStatus::NotChosenYet:
        return u"none"_s;
    case FollowStatus::NoTarget:
        return u"No follow target"_s;
    case FollowStatus::Owner:
        return u"Following Tavin"_s;
    case FollowStatus::PossibleOwner:
        return u"Following possible Tavin"_s;
    case FollowStatus::Person:
        return u"Following person"_s;
    case FollowStatus::Reacquiring:
        return u"Reacquiring Tavin face"_s;
    case FollowStatus::OwnerLost:
        return u"Tavin lost, holding last position"_s;
    }
    return {};
}

QString followTexts::zoomReason(ZoomReason reason) {
    switch (reason) {
    case ZoomReason::NoTarget:
        return u"no target"_s;
    case ZoomReason::CloseNoZoom:
        return u"close/no zoom"_s;
    case ZoomReason::FaceHead:
        return u"face/head target"_s;
    case ZoomReason::BodyHead:
        return u"body/person head target"_s;
    case ZoomReason::Reacquire:
        return u"recent Tavin lost/weak, holding aggressive reacquire zoom"_s;
    case ZoomReason::LastHeadRegion:
        return u"recent Tavin lost, holding last known head region"_s;
    case ZoomReason::OwnerHold:
        return u"Tavin zoom hold active"_s;
    }
    return {};
}

QString followTexts::zoomSmoothingState(const FollowPass& pass) {
    if (!pass.zoomStep)
        return u"idle"_s;
    const ZoomStep& step = *pass.zoomStep;
    return u"%1 alpha %2 target %3"_s.arg(directionName(step.direction),
                                          QString::number(step.weight, 'f', 2),
                                          QString::number(step.target, 'f', 1));
}

QString followTexts::cropCenterSmoothingState(const FollowPass& pass) {
    if (!pass.cropStep)
        return u"idle"_s;
    return u"center alpha %1 safe_zone %2 edge %3"_s.arg(
        QString::number(pass.cropStep->weight, 'f', 2), trueOrFalse(pass.targetInSafeZone()),
        trueOrFalse(pass.edgeProtectionActive()));
}

QString followTexts::selectedFollowTarget(const FollowPass& pass, const FollowView& view,
                                          const FollowTarget& follow) {
    if (pass.previousCropKept)
        return keptCropText(pass, view, follow);
    const QString status = statusName(pass.choice.selectedFollowTarget);
    if (!pass.cropStep)
        return status;
    const QPoint target = pass.targetCenter();
    const QPointF& center = view.smoothedCropCenter;
    const QStringList fields = {
        status,
        u"Follow zoom: "_s + QString::number(view.followZoom, 'f', 1) + u'x' + zoomMark(pass.zoom),
        u"target_distance="_s + QString::number(pass.targetDistance, 'f', 2) + u'm',
        u"zoom_hold_remaining="_s + secondsText(pass.zoomHoldRemainingMs) + u's',
        u"close_no_zoom_active "_s + trueOrFalse(pass.zoom.closeNoZoomActive()),
        u"reacquire_mode "_s + trueOrFalse(pass.choice.reacquireMode),
        u"max_zoom_active "_s + trueOrFalse(pass.zoom.maxZoomActive),
        u"target_in_safe_zone "_s + trueOrFalse(pass.targetInSafeZone()),
        u"edge_protection_active "_s + trueOrFalse(pass.edgeProtectionActive()),
        u"zoom_snap_prevented "_s + trueOrFalse(pass.zoomSnapPrevented),
        u"zoom_reason: "_s + zoomReason(pass.zoom.zoomReason),
        u"follow_target_reason: "_s + statusName(pass.choice.followTargetReason),
        u"target_center=%1,%2"_s.arg(target.x()).arg(target.y()),
        u"smoothed_crop_center="_s + QString::number(center.x(), 'f', 0) + u',' +
            QString::number(center.y(), 'f', 0),
        u"zoom_smoothing_state: "_s + zoomSmoothingState(pass),
        u"crop_center_smoothing_state: "_s + cropCenterSmoothingState(pass),
        u"last_tavin_seen_ms="_s + QString::number(follow.lastTavinSeenMs),
    };
    return fields.join(u" | "_s);
}
