#include "awareness/awareness_report.h"

#include "awareness/follow_texts.h"
#include "awareness/overlay_geometry.h"

using namespace Qt::StringLiterals;

namespace {

template <typename Record>
QString described(const QList<Record>& records, QString (*description)(const Record&)) {
    QStringList texts;
    for (const Record& record : records)
        texts.append(description(record));
    return texts.join(u" | "_s);
}

QString distanceText(const FaceOverlay& overlay) {
    return QString::number(overlay.distanceMeters, 'f', 2) + u'm';
}

} // namespace

QString overlayDescription(const FaceOverlay& overlay) {
    QString text = overlay.label;
    if (overlay.hasDistance)
        text += u" distance="_s + distanceText(overlay);
    else if (overlay.depthMissing)
        text += u" distance=unavailable"_s;
    if (!overlay.speakerNote.isEmpty())
        text += u' ' + overlay.speakerNote;
    return text;
}

QString candidateDescription(const BodyCandidate& candidate) {
    return u"%1 box=%2 distance=%3m cells=%4"_s.arg(
        candidate.tier, overlayGeometry::boxText(candidate.rect),
        QString::number(candidate.distance_m, 'f', 2), QString::number(candidate.cells));
}

QString rejectionDescription(const Rejection& rejection) {
    const FaceOverlay& overlay = rejection.overlay;
    const QString box = overlayGeometry::boxText(overlay.rect);
    const QString distance = overlay.hasDistance ? distanceText(overlay) : u"none"_s;
    switch (rejection.reason) {
    case RejectionReason::NoDepth:
        return u"reject %1 box=%2 distance=%3 reason=no valid depth/photo-like"_s.arg(
            overlay.label, box, distance);
    case RejectionReason::FarWithoutBody:
        return u"reject %1 box=%2 distance=%3 reason=far face without body evidence"_s.arg(
            overlay.label, box, distance);
    case RejectionReason::DuplicateOfOwner:
        return u"reject %1 box=%2 reason=duplicate near Tavin"_s.arg(overlay.label, box);
    }
    return {};
}

void writeAwarenessReport(QDebug line, const AwarenessState& state, const AwarenessResult& result) {
    const FollowTarget& memory = state.followTarget;
    const FollowView& view = state.followView;
    const FollowPass& pass = result.follow;
    const QString selectedFollowTarget = followTexts::selectedFollowTarget(pass, view, memory);
    line << "Qt awareness overlays:" << described(result.faceOverlays, overlayDescription)
         << "ignored_background=" << result.rejections.size()
         << "body_candidates=" << described(result.bodyCandidates, candidateDescription)
         << "rejections=" << described(result.rejections, rejectionDescription)
         << "selected_follow_target=" << selectedFollowTarget << "follow_zoom=" << view.followZoom
         << "target_distance=" << pass.targetDistance
         << "zoom_hold_remaining=" << memory.zoomHoldUntilMs
         << "close_no_zoom_active=" << pass.zoom.closeNoZoomActive()
         << "reacquire_mode=" << pass.choice.reacquireMode
         << "max_zoom_active=" << pass.zoom.maxZoomActive
         << "zoom_reason=" << followTexts::zoomReason(pass.zoom.zoomReason)
         << "selected_follow_target=" << selectedFollowTarget
         << "follow_target_reason=" << followTexts::statusName(pass.choice.followTargetReason)
         << "target_center=" << pass.targetCenter()
         << "smoothed_crop_center=" << view.smoothedCropCenter
         << "target_in_safe_zone=" << pass.targetInSafeZone()
         << "edge_protection_active=" << pass.edgeProtectionActive()
         << "zoom_snap_prevented=" << pass.zoomSnapPrevented
         << "zoom_smoothing_state=" << followTexts::zoomSmoothingState(pass)
         << "crop_center_smoothing_state=" << followTexts::cropCenterSmoothingState(pass)
         << "last_tavin_seen_ms=" << memory.lastTavinSeenMs << "follow_crop=" << view.followCrop
         << "estimated_head_region=" << view.targetHeadRegion;
}
