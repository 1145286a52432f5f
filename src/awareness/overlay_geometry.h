#pragma once

#include "app/face_overlay.h"

#include <QPoint>
#include <QRect>
#include <QSize>

/// Boxes of overlays in pixels of the colour image. Any integers will do: nothing overflows.
namespace overlayGeometry {

/// Overlap of two boxes: the area of their intersection over that of their union, 0 … 1; 0 when
/// they do not meet.
double rectIou(const QRect& a, const QRect& b);

/// Centre of a box in whole pixels, (x1 + x2) / 2 and (y1 + y2) / 2.
QPoint boxCenter(const QRect& box);

/// Where the body of a face should be: one face width to either side, one face height above and
/// three below.
QRect expectedBodyBox(const QRect& face);

/// `box` enlarged by half its width on either side and half its height above and below.
QRect enlargedByHalf(const QRect& box);

/// The head of an overlay, in image pixels: a face's own box, the top of a body's (32 % of its
/// height, 78 % of its width, centred, at least 64 pixels each if the body has them). The box is
/// clipped to the image first; null when nothing of it is inside.
QRect estimatedHeadRegion(const FaceOverlay& overlay, const QSize& imageSize);

/// "x,y widthxheight", as the diagnostic lines show a box.
QString boxText(const QRect& box);

} // namespace overlayGeometry
