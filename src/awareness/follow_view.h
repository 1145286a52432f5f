#pragma once

#include "awareness/follow_target.h"

#include <QPoint>
#include <QPointF>

#include <optional>

/// The software zoom of the Follow view from pass to pass: a crop of the colour image, in its
/// pixels.
struct FollowView {
    QRect followCrop;        ///< Null: nothing is followed, the whole image is shown.
    QRect targetHeadRegion;  ///< What the zoom aims at.
    double followZoom = 1.0; ///< Smoothed.
    QPointF smoothedCropCenter;
};

/// Why the zoom that a pass aims at is what it is.
enum class ZoomReason {
    NoTarget,
    CloseNoZoom,    ///< The target is too near to be enlarged.
    FaceHead,       ///< A face's own box.
    BodyHead,       ///< The head of a depth body.
    Reacquire,      ///< The owner was lost a moment ago and may be this target.
    LastHeadRegion, ///< The owner was lost a moment ago; the view waits where the head was.
    OwnerHold,      ///< The zoom hold alone, with nothing to aim at.
};

/// The zoom that a pass aims at, and why.
struct TargetZoom {
    double factor = 1.0; ///< 1 … 8.
    ZoomReason zoomReason = ZoomReason::NoTarget;
    bool maxZoomActive = false;

    bool closeNoZoomActive() const { return zoomReason == ZoomReason::CloseNoZoom; }
};

enum class ZoomDirection { In, Steady, Out };

/// One step of the zoom towards its target.
struct ZoomStep {
    double zoom = 1.0; ///< After the step.
    ZoomDirection direction = ZoomDirection::Steady;
    double weight = 0.0; ///< Of the target, 0 … 1.
    double target = 1.0;
};

/// One step of the crop towards the region that it follows.
struct CropStep {
    QRect crop;          ///< After the step, inside the image.
    QPointF center;      ///< The smoothed centre after the step.
    QPoint targetCenter; ///< Centre of the region.
    double weight = 0.0; ///< Of the region's centre, 0 … 1.
    bool targetInSafeZone = true;
};

/// What one pass finds out and does about the Follow view. Made new in every pass.
struct FollowPass {
    FollowChoice choice;
    TargetZoom zoom;
    double targetDistance = 0.0;      ///< Metres; 0 when unknown.
    qint64 zoomHoldRemainingMs = 0;   ///< At least 0.
    bool previousCropKept = false;    ///< Nothing to aim at, but the zoom hold lasts.
    bool zoomSnapPrevented = false;   ///< The view starts from the whole image.
    std::optional<ZoomStep> zoomStep; ///< None while there is nothing to aim at.
    std::optional<CropStep> cropStep; ///< None while there is nothing to aim at.

    QPoint targetCenter() const { return cropStep ? cropStep->targetCenter : QPoint(); }
    bool targetInSafeZone() const { return !cropStep || cropStep->targetInSafeZone; }
    bool edgeProtectionActive() const { return !targetInSafeZone(); }
};

/// One step of the view towards `overlay` (null: nobody is followed), in this order:
/// 1. the region to aim at: the target's head, with the owner's last one while reacquiring;
/// 2. the zoom to aim at, by distance or face size;
/// 3. the hold of a strong zoom for an owner who was here a moment ago;
/// 4. without a region the crop is kept while held, else the view resets at once and is done;
/// 5. the first crop is the whole image, so that the view never jumps;
/// 6. zoom and centre move by separate exponential smoothing, the zoom out more slowly than in, the
///    centre fast when the target leaves the middle of the crop;
/// 7. a target outside that safe zone pulls the crop along at once.
/// `choice` is what chooseFollowTarget returned.
FollowPass updateFollowView(FollowView& view, const FollowTarget& follow,
                            const FollowChoice& choice, const FaceOverlay* overlay,
                            const QSize& imageSize, qint64 now);

/// The zoom that suits a target: by its distance, else by the share of the image's height that its
/// box takes. 1 for an empty image.
TargetZoom targetZoom(const FaceOverlay& target, const QSize& imageSize, bool reacquireMode);

/// The owner's zoom while the zoom hold lasts: at least 3, and from 7.95 on it counts as the
/// maximum.
TargetZoom heldOwnerZoom(TargetZoom zoom);

/// The next step of a zoom towards `target`.
ZoomStep smoothedZoom(double zoom, double target, bool reacquireMode);

/// Size of the crop at a zoom (used from 1 to 8), at least 220x150 pixels of an image that has
/// them.
QSize followCropSize(double zoom, const QSize& imageSize);

/// The next step of a view whose crop is valid towards a valid `region` of the image, at the view's
/// zoom.
CropStep movedCrop(const FollowView& view, const QRect& region, const QSize& imageSize,
                   bool reacquireMode);
