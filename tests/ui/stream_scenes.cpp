#include "ui/stream_scenes.h"

using namespace Qt::StringLiterals;

QImage testImage(const QSize& size, QImage::Format format, int seed) {
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(
                x, y, qRgb((x / 3 + seed * 40) & 255, (y / 2 + x / 9) & 255, (x * y / 64) & 255));
    }
    return image.convertToFormat(format);
}

FaceOverlay box(const QRect& rect, const QString& label) {
    FaceOverlay overlay;
    overlay.rect = rect;
    overlay.label = label;
    overlay.color = QColor(255, 120, 30);
    return overlay;
}

VoiceDirectionStatus direction(double angleDegrees, bool inverted, bool low) {
    VoiceDirectionStatus status;
    status.running = status.hasDirection = status.fresh = true;
    status.lowConfidence = low;
    status.inverted = inverted;
    status.angleDegrees = angleDegrees;
    status.confidence = 0.5;
    return status;
}

std::unique_ptr<StreamImageWidget> widgetOf(const StreamScene& scene, const QSize& size) {
    auto widget = std::make_unique<StreamImageWidget>(scene.placeholder, scene.showVoice);
    widget->setMinimumSize(1, 1);
    widget->resize(size);
    widget->setImage(scene.image);
    widget->setOverlays(scene.overlays);
    widget->setVoiceStatus(scene.voice);
    widget->setSourceCrop(scene.crop, scene.label);
    return widget;
}

QImage shot(QWidget& widget, qreal devicePixelRatio) {
    QImage target(widget.size() * devicePixelRatio, QImage::Format_RGB32);
    target.setDevicePixelRatio(devicePixelRatio);
    target.fill(Qt::magenta);
    widget.render(&target);
    return target;
}

QImage paint(const StreamScene& scene, const QSize& size) {
    return shot(*widgetOf(scene, size));
}

StreamScene sceneWithImage(const QSize& size) {
    StreamScene scene;
    scene.image = testImage(size);
    return scene;
}

QList<FaceOverlay> overlaysOfEveryKind() {
    FaceOverlay stale = box(QRect(400, 200, 150, 150), u"Tavin"_s);
    stale.stale = true;
    stale.status = u"last seen 0.7s"_s;
    stale.hasDistance = true;
    stale.distanceMeters = 2.31;
    stale.confidence = 55.4;
    FaceOverlay body = box(QRect(700, 100, 200, 600), u"Person"_s);
    body.bodyOnly = true;
    body.faceEvidence = false;
    body.tier = u"far body"_s;
    body.speakerNote = u"possible speaker"_s;
    FaceOverlay staleBody = body;
    staleBody.rect.translate(180, 30);
    staleBody.stale = true;
    staleBody.status = u"body last seen 1.2s"_s;
    FaceOverlay noDepth = box(QRect(1200, 10, 200, 300));
    noDepth.depthMissing = true;
    return {box(QRect(50, 80, 120, 140)),
            stale,
            body,
            staleBody,
            noDepth,
            FaceOverlay(),
            box(QRect(-20, 650, 100, 200), u"at the corner"_s)};
}
