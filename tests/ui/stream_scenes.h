#pragma once

#include "ui/plain_stream_painter.h"
#include "ui/stream_image_widget.h"

#include <memory>

Q_DECLARE_METATYPE(StreamScene)

/// A picture without two equal lines or columns; `seed` makes another one.
QImage testImage(const QSize& size, QImage::Format format = QImage::Format_RGB888, int seed = 0);

/// A near, fresh face.
FaceOverlay box(const QRect& rect, const QString& label = QStringLiteral("Unknown"));

/// One overlay of each look, some of them reaching over a 1280 x 720 image.
QList<FaceOverlay> overlaysOfEveryKind();

/// A fresh reading of a running service.
VoiceDirectionStatus direction(double angleDegrees, bool inverted = false, bool low = false);

StreamScene sceneWithImage(const QSize& size = QSize(1280, 720));

/// A widget of `size` that was given the scene.
std::unique_ptr<StreamImageWidget> widgetOf(const StreamScene& scene, const QSize& size);

/// What the widget paints, on a ground that it must not let through.
QImage shot(QWidget& widget, qreal devicePixelRatio = 1.0);

/// What a new widget paints of the scene.
QImage paint(const StreamScene& scene, const QSize& size);
