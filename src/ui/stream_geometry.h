#pragma once

#include "voice/speaker_zones.h"

#include <QPoint>
#include <QRect>
#include <QRectF>
#include <QSize>
#include <optional>

/// Where the stream widget puts things. Rectangles of any integers are fine: whatever lies further
/// out than a screen or an image can reach counts as lying there, and nothing overflows.
namespace streamGeometry {

/// The part of an image that a crop shows: their intersection, or an empty rectangle (the whole
/// image is shown, without an offset) when the crop is null or reversed or lies outside.
QRect sourceRect(const QRect& crop, const QSize& imageSize);

/// The picture of an image that is scaled to fit `area` with its aspect ratio kept, in the middle
/// of the area: at least 1 x 1 pixels, halves of pixels truncated.
QRect fittedIn(const QRect& area, const QSize& imageSize);

/// The whole device pixels that a rectangle of logical pixels covers, each edge at the nearest one.
QRect devicePixels(const QRectF& onDevice);

/// How a part of an image stands on the widget.
struct ImagePlacement {
    QRect source;    ///< Shown part in image pixels; empty: the whole image.
    QSize shownSize; ///< Size of what is shown, in image pixels.
    QRect target;    ///< Where it is painted, in widget pixels.
};

/// An overlay's box (image pixels) on the widget, clipped to the painted image; none when it lies
/// outside. Edges are scaled and truncated toward zero from the image's corner.
std::optional<QRect> screenBox(const QRect& box, const ImagePlacement& placement);

/// The caption's tag for such a box and a text of `textWidth` pixels.
QRect captionTag(const QRect& screenBox, int textWidth, const QRect& imageTarget);

/// Banner across the top of a widget `width` pixels wide; empty when there is no room.
QRect bannerRect(int width);

constexpr int speakerLightCount = speakerZones::count;
/// The light number `index`, 0 (left) to 5, on a widget of that size.
QRect speakerLight(int index, const QSize& widgetSize);

/// The two lines of voice text at the foot of a widget of that size.
QRect firstVoiceLine(const QSize& widgetSize);
QRect secondVoiceLine(const QSize& widgetSize);

} // namespace streamGeometry
