#include "awareness/follow_view.h"
#include "awareness/overlay_geometry.h"

#include <QRectF>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

constexpr int leastCropWidth = 220;     // pixels; a smaller crop would show nothing but blur
constexpr int leastCropHeight = 150;    // pixels
constexpr double safeZoneStart = 0.15;  // of the crop, from its top left corner
constexpr double safeZoneExtent = 0.70; // of the crop
constexpr double insideWeight = 0.2;
constexpr double reacquireWeight = 0.34;
constexpr double outsideWeight = 0.52;
constexpr double edgeMargin = 0.18; // of the crop

int cropSide(double zoom, int imageSide, int leastSide) {
    return imageSide > leastSide ? std::max(int(imageSide / zoom), leastSide) : imageSide;
}

bool isInSafeZone(const QRect& crop, const QPoint& point) {
    const QRectF safeZone(crop.left() + safeZoneStart * crop.width(),
                          crop.top() + safeZoneStart * crop.height(), safeZoneExtent * crop.width(),
                          safeZoneExtent * crop.height());
    return safeZone.contains(QPointF(point));
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
    return QSize(cropSide(used, imageSize.width(), leastCropWidth),
                 cropSide(used, imageSize.height(), leastCropHeight));
}

void moveFollowCrop(FollowView& view, const QRect& region, const QSize& imageSize,
                    bool reacquireMode) {
    const QSize size = followCropSize(view.followZoom, imageSize);
    view.targetCenter = boxCenter(region);
    view.targetInSafeZone = isInSafeZone(view.followCrop, view.targetCenter);
    view.edgeProtectionActive = !view.targetInSafeZone;

    const double weight = view.edgeProtectionActive ? outsideWeight
                          : reacquireMode           ? reacquireWeight
                                                    : insideWeight;
    QPointF& center = view.smoothedCropCenter;
    center.setX(weight * view.targetCenter.x() + (1.0 - weight) * center.x());
    center.setY(weight * view.targetCenter.y() + (1.0 - weight) * center.y());
    view.cropCenterSmoothingState = u"center alpha %1 safe_zone %2 edge %3"_s.arg(
        QString::number(weight, 'f', 2), view.targetInSafeZone ? u"true"_s : u"false"_s,
        view.edgeProtectionActive ? u"true"_s : u"false"_s);

    QRect crop(QPoint(cropStart(center.x(), size.width(), imageSize.width()),
                      cropStart(center.y(), size.height(), imageSize.height())),
               size);
    if (view.edgeProtectionActive) {
        crop.moveLeft(protectedStart(crop.left(), size.width(), region.left(), region.right(),
                                     imageSize.width()));
        crop.moveTop(protectedStart(crop.top(), size.height(), region.top(), region.bottom(),
                                    imageSize.height()));
        center = crop.center();
    }
    view.followCrop = crop & QRect(QPoint(0, 0), imageSize);
}
