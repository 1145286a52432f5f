#pragma once

#include "app/face_overlay.h"
#include "app/voice_direction_status.h"
#include "ui/stream_geometry.h"

#include <QList>
#include <QPainter>

/// What is painted over a stream's picture. Each function leaves the painter's font as it found it;
/// widget sizes are in logical pixels.
namespace streamPainting {

extern const QColor backgroundColor;

/// Boxes with their captions, in list order; those outside the shown part are skipped.
void paintOverlays(QPainter& painter, const QList<FaceOverlay>& overlays,
                   const streamGeometry::ImagePlacement& placement);

/// The banner that names the crop, highlighted when the text says that the follow zoom is active.
void paintBanner(QPainter& painter, const QString& text, int widgetWidth);

/// The text that stands where there is no picture, word-wrapped in the middle of `area`.
void paintPlaceholder(QPainter& painter, const QString& text, const QRect& area);

/// The thin rounded frame round the widget.
void paintFrame(QPainter& painter, const QSize& widgetSize);

/// The speaker lights and, where there is room for it, the voice text.
void paintVoice(QPainter& painter, const VoiceDirectionStatus& status, const QSize& widgetSize);

} // namespace streamPainting
