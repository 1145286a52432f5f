#include "awareness/follow_view.h"

#include <cmath>

using namespace Qt::StringLiterals;

namespace {

constexpr double reacquireZoom = 8.0;
constexpr double farthestZoom = 7.0;
constexpr double steadyBand = 0.05;
constexpr double reacquireWeight = 0.16;
constexpr double zoomInWeight = 0.10;
constexpr double steadyWeight = 0.07;
constexpr double zoomOutWeight = 0.045; // a moment's loss must not throw the view back

double closeNoZoom(FollowView& view) {
    view.closeNoZoomActive = true;
    view.zoomReason = u"close/no zoom"_s;
    return 1.0;
}

double maxZoom(FollowView& view, double zoom) {
    view.maxZoomActive = true;
    return zoom;
}

double zoomByDistance(FollowView& view, double d, bool reacquireMode) {
    if (d < closeOwner_m)
        return closeNoZoom(view);
    if (reacquireMode)
        return maxZoom(view, reacquireZoom);
    if (d < 1.5)
        return 1.5 + 2.0 * (d - 1.0);
    if (d < 2.2)
        return 3.0 + 1.5 * (d - 1.5) / 0.7;
    if (d < 3.5)
        return 5.0 + 2.0 * (d - 2.2) / 1.3;
    return maxZoom(view, farthestZoom);
}

double zoomByFaceHeight(FollowView& view, double fraction, bool reacquireMode) {
    if (reacquireMode)
        return maxZoom(view, reacquireZoom);
    if (fraction < 0.16)
        return maxZoom(view, farthestZoom);
    if (fraction < 0.24)
        return 5.5;
    if (fraction < 0.38)
        return 3.5;
    if (fraction < 0.55)
        return 2.0;
    return closeNoZoom(view);
}

struct ZoomStep {
    double weight;
    QString name;
};

ZoomStep zoomStep(double zoom, double target, bool reacquireMode) {
    ZoomStep step{steadyWeight, u"zoom steady"_s};
    if (target > zoom + steadyBand)
        step = {zoomInWeight, u"zoom-in slow"_s};
    else if (target < zoom - steadyBand)
        step = {zoomOutWeight, u"zoom-out gentle"_s};
    if (reacquireMode)
        step.weight = reacquireWeight;
    return step;
}

} // namespace

double targetZoom(FollowView& view, const FaceOverlay& target, const QSize& imageSize,
                  bool reacquireMode) {
    if (imageSize.isEmpty())
        return 1.0;
    const double zoom =
        target.hasDistance
            ? zoomByDistance(view, target.distanceMeters, reacquireMode)
            : zoomByFaceHeight(view, double(target.rect.height()) / imageSize.height(),
                               reacquireMode);
    if (!view.closeNoZoomActive) {
        if (reacquireMode)
            view.zoomReason = u"recent Tavin lost/weak, holding aggressive reacquire zoom"_s;
        else
            view.zoomReason =
                target.bodyOnly ? u"body/person head target"_s : u"face/head target"_s;
    }
    return zoom;
}

void smoothZoom(FollowView& view, double target, bool reacquireMode) {
    const ZoomStep step = zoomStep(view.followZoom, target, reacquireMode);
    double zoom = view.followZoom * (1.0 - step.weight) + step.weight * target;
    if (zoom >= 1.0 - steadyBand && zoom <= 1.0 + steadyBand && target <= 1.0 + steadyBand)
        zoom = 1.0;
    view.followZoom = zoom;
    view.zoomSmoothingState = u"%1 alpha %2 target %3"_s.arg(
        step.name, QString::number(step.weight, 'f', 2), QString::number(target, 'f', 1));
}
