#include "awareness/awareness_report.h"

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

} // namespace

QString overlayDescription(const FaceOverlay& overlay) {
    QString text = overlay.label;
    if (overlay.hasDistance)
        text += u" distance="_s + QString::number(overlay.distanceMeters, 'f', 2) + u'm';
    else if (overlay.depthMissing)
        text += u" distance=unavailable"_s;
    if (!overlay.speakerNote.isEmpty())
        text += u' ' + overlay.speakerNote;
    return text;
}

QString candidateDescription(const BodyCandidate& candidate) {
    return u"%1 box=%2 distance=%3m cells=%4"_s.arg(candidate.tier, boxText(candidate.rect),
                                                    QString::number(candidate.distance_m, 'f', 2),
                                                    QString::number(candidate.cells));
}

void writeAwarenessReport(QDebug line, const AwarenessState& state, const AwarenessResult& result) {
    const FollowTarget& follow = state.followTarget;
    const FollowView& view = state.followView;
    line << "Qt awareness overlays:" << described(result.faceOverlays, overlayDescription)
         << "ignored_background=" << result.rejections.size()
         << "body_candidates=" << described(result.bodyCandidates, candidateDescription)
         << "rejections=" << result.rejections.join(u" | "_s)
         << "selected_follow_target=" << follow.selectedFollowTarget
         << "follow_zoom=" << view.followZoom << "target_distance=" << view.targetDistance
         << "zoom_hold_remaining=" << follow.zoomHoldUntilMs
         << "close_no_zoom_active=" << view.closeNoZoomActive
         << "reacquire_mode=" << follow.reacquireMode << "max_zoom_active=" << view.maxZoomActive
         << "zoom_reason=" << view.zoomReason
         << "selected_follow_target=" << follow.selectedFollowTarget
         << "follow_target_reason=" << follow.followTargetReason
         << "target_center=" << view.targetCenter
         << "smoothed_crop_center=" << view.smoothedCropCenter
         << "target_in_safe_zone=" << view.targetInSafeZone
         << "edge_protection_active=" << view.edgeProtectionActive
         << "zoom_snap_prevented=" << view.zoomSnapPrevented
         << "zoom_smoothing_state=" << view.zoomSmoothingState
         << "crop_center_smoothing_state=" << view.cropCenterSmoothingState
         << "last_tavin_seen_ms=" << follow.lastTavinSeenMs << "follow_crop=" << view.followCrop
         << "estimated_head_region=" << view.targetHeadRegion;
}
