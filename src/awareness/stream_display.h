#pragma once

#include "app/face_overlay.h"

#include <QDebug>
#include <QList>
#include <QRect>
#include <QSize>
#include <QString>

/// What the Follow tile shows.
struct FollowDisplay {
    bool cropApplied = false;    ///< Only `crop` of the image is shown.
    QRect crop;                  ///< The follow crop inside the image, in its pixels.
    QList<FaceOverlay> overlays; ///< In pixels of what is shown.
    QString statusText;          ///< The banner.
};

/// The overlays whose boxes meet `crop`, moved into its coordinates. Boxes that reach over its edge
/// are not clipped.
QList<FaceOverlay> overlaysInCrop(const QList<FaceOverlay>& overlays, const QRect& crop);

/// All that the Follow tile shows of an image of `imageSize` pixels, both at least 1. `currentView`
/// is the key of the view on screen, `selectedFollowTarget` the status of the follow target.
FollowDisplay followDisplay(const QSize& imageSize, const QRect& followCrop,
                            const QList<FaceOverlay>& overlays, const QString& currentView,
                            const QString& selectedFollowTarget);

/// Writes the diagnostic line about what the Follow tile shows to `line`; `shown` is the size of
/// the shown picture, `source` that of the whole image.
void writeFollowDisplayReport(QDebug line, const FollowDisplay& display, const QString& currentView,
                              double followZoom, const QSize& shown, const QSize& source);
