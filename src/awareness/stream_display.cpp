#include "awareness/stream_display.h"

using namespace Qt::StringLiterals;

namespace {

QString statusText(const FollowDisplay& display, const QString& currentView,
                   const QString& selectedFollowTarget) {
    const QString view = currentView.toUpper();
    if (!display.cropApplied)
        return u"current view: %1 | %2 | crop applied to display: false"_s.arg(
            view, selectedFollowTarget);
    const QRect& crop = display.crop;
    // The names that a target carries are not ours: all places are filled in one go.
    return u"VISIBLE FOLLOW ZOOM ACTIVE | current view: %1 | %2 | crop applied to display: true | "
           "crop %3,%4 %5x%6"_s.arg(view, selectedFollowTarget, QString::number(crop.left()),
                                    QString::number(crop.top()), QString::number(crop.width()),
                                    QString::number(crop.height()));
}

} // namespace

QList<FaceOverlay> overlaysInCrop(const QList<FaceOverlay>& overlays, const QRect& crop) {
    QList<FaceOverlay> inside;
    for (const FaceOverlay& overlay : overlays) {
        if (!overlay.rect.intersects(crop))
            continue;
        inside.append(overlay);
        inside.last().rect.translate(-crop.topLeft());
    }
    return inside;
}

FollowDisplay followDisplay(const QSize& imageSize, const QRect& followCrop,
                            const QList<FaceOverlay>& overlays, const QString& currentView,
                            const QString& selectedFollowTarget) {
    FollowDisplay display;
    display.crop = followCrop & QRect(QPoint(), imageSize);
    const bool smaller =
        display.crop.width() < imageSize.width() || display.crop.height() < imageSize.height();
    display.cropApplied = followCrop.isValid() && display.crop.isValid() && smaller;
    display.overlays = display.cropApplied ? overlaysInCrop(overlays, display.crop) : overlays;
    display.statusText = statusText(display, currentView, selectedFollowTarget);
    return display;
}

void writeFollowDisplayReport(QDebug line, const FollowDisplay& display, const QString& currentView,
                              double followZoom, const QSize& shown, const QSize& source) {
    line << "Qt follow display:"
         << "current_view=" << currentView << "crop_applied_to_display=" << display.cropApplied
         << "follow_zoom=" << followZoom << "follow_crop=" << display.crop
         << "display_image=" << shown << "source_image=" << source
         << "status=" << display.statusText;
}
