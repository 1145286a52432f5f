#include "awareness/follow_view.h"
#include "awareness/overlay_geometry.h"

#include <QRectF>

#include <algorithm>
#include <cmath>

namespace {

constexpr int minCropWidth = 220;       // pixels; a smaller crop would show nothing but blur
constexpr int minCropHeight = 150;      // pixels
constexpr double safeZoneStart = 0.15;  // of the crop, from its top left corner
constexpr double safeZoneExtent = 0.70; // of the crop
constexpr double insideWeight = 0.2;
constexpr double reacquireWeight = 0.34;
constexpr double outsideWeight = 0.52;
constexpr double edgeMargin = 0.18; // of the crop

int cropSide(double zoom, int imageSide, int minSide) {
    return imageSide > minSide ? std::max(int(imageSide / zoom), minSide) : imageSide;
}

bool isInSafeZone(const QRect& crop, const QPoint& point) {
    const QRectF safeZone(crop.left() + safeZoneStart * crop.width(),
                          crop.top() + safeZoneStart * crop.height(), safeZoneExtent * crop.width(),
                          safeZoneExtent * crop.height());
    return safeZone.contains(QPointF(point));
}

double centerWeight(bool targetInSafeZone, bool reacquireMode) {
    if (!targetInSafeZone)
        return outsideWeight;
    return reacquireMode ? reacquireWeight : insideWeight;
}

/// Left or top of a crop around a centre, inside the image.
int cropStart(double center, int cropSide, int imageSide) {
    const double start = std::round(center - cropSide / 2.0);
    return int(std::clamp(start, 0.0, double(std::max(imageSide - cropSide, 0))));
}

/// Start of a crop of `side` pixels that begins at `start`, moved so that neither end of the region
/// (`first` … `last`) is nearer than the margin to the crop's ends, the image permitting.
int protectedStart(int start, int side, int first, int last, int imageSide) {
    const int margin = int(edgeMargin * side);
    if (first < start + margin)
        start = std::max(first - margin, 0);
    if (last > start + side - 1 - margin)
        start = std::min(last + margin - side, imageSide - side);
    return start;
}

} // namespace

QSize followCropSize(double zoom, const QSize& imageSize) {
    const double used = std::clamp(zoom, 1.0, 8.0);
    return QSize(cropSide(used, imageSize.width(), minCropWidth),
                 cropSide(used, imageSize.height(), minCropHeight));
}

CropStep movedCrop(const FollowView& view, const QRect& region, const QSize& imageSize,
                   bool reacquireMode) {
    CropStep step;
    step.targetCenter = overlayGeometry::boxCenter(region);
    step.targetInSafeZone = isInSafeZone(view.followCrop, step.targetCenter);
    step.weight = centerWeight(step.targetInSafeZone, reacquireMode);
    step.center =
        step.weight * QPointF(step.targetCenter) + (1.0 - step.weight) * view.smoothedCropCenter;

    const QSize size = followCropSize(view.followZoom, imageSize);
    QRect crop(QPoint(cropStart(step.center.x(), size.width(), imageSize.width()),
                      cropStart(step.center.y(), size.height(), imageSize.height())),
               size);
    if (!step.targetInSafeZone) {
        crop.moveLeft(protectedStart(crop.left(), size.width(), region.left(), region.right(),
                                     imageSize.width()));
        crop.moveTop(protectedStart(crop.top(), size.height(), region.top(), region.bottom(),
                                    imageSize.height()));
        step.center = crop.center();
    }
    step.crop = crop & QRect(QPoint(0, 0), imageSize);
    return step;
}
