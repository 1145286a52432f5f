#pragma once

#include "awareness/follow_target.h"

#include <QPoint>
#include <QPointF>

/// The software zoom of the Follow view: a crop of the colour image, in its pixels.
struct FollowView {
    QRect followCrop;        ///< Null: nothing is followed, the whole image is shown.
    QRect targetHeadRegion;  ///< What the zoom aims at.
    double followZoom = 1.0; ///< Smoothed.
    QPointF smoothedCropCenter;
    // Of the newest pass alone:
    QPoint targetCenter;         ///< Centre of the region aimed at; (0, 0) without one.
    double targetDistance = 0.0; ///< Metres; 0 when unknown.
    QString zoomReason = QStringLiteral("no target"); ///< Why the zoom is what it is.
    QString zoomSmoothingState = QStringLiteral("idle");
    QString cropCenterSmoothingState = QStringLiteral("idle");
    bool maxZoomActive = false;
    bool closeNoZoomActive = false;
    bool targetInSafeZone = true;
    bool edgeProtectionActive = false;
    bool zoomSnapPrevented = false; ///< The view starts from the whole image.
};

/// One step of the view towards `overlay` (null: nobody is followed), in this order:
/// 1. the region to aim at: the target's head, with the owner's last one while reacquiring;
/// 2. the zoom to aim at, by distance or face size;
/// 3. the hold of a strong zoom for an owner who was here a moment ago;
/// 4. without a region the crop is kept while held, else the view resets at once and is done;
/// 5. the first crop is the whole image, so that the view never jumps;
/// 6. zoom and centre move by separate exponential smoothing, the zoom out more slowly than in, the
///    centre fast when the target leaves the middle of the crop;
/// 7. a target outside that safe zone pulls the crop along at once;
/// 8. the status text says all this.
void updateFollowView(FollowView& view, FollowTarget& follow, const FaceOverlay* overlay,
                      const QSize& imageSize, qint64 now);

/// The zoom that suits a target, 1 … 8, and in `view` why: by its distance, else by the share of
/// the image's height that its box takes. An empty image gives 1.
double targetZoom(FollowView& view, const FaceOverlay& target, const QSize& imageSize,
                  bool reacquireMode);

/// Moves the zoom towards `target` and says so in `view.zoomSmoothingState`.
void smoothZoom(FollowView& view, double target, bool reacquireMode);

/// Size of the crop at a zoom (used from 1 to 8), at least 220x150 pixels of an image that has
/// them.
QSize followCropSize(double zoom, const QSize& imageSize);

/// Moves the crop of the current zoom towards a valid `region` of the image, from a valid previous
/// crop.
void moveFollowCrop(FollowView& view, const QRect& region, const QSize& imageSize,
                    bool reacquireMode);
