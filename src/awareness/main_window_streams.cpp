// The stream display members of the main window: newest data in, every tile fed.

#include "awareness/stream_display.h"
#include "face/face_recognition_worker.h"
#include "ui/main_window.h"
#include "ui/stream_image_widget.h"

#include <QDateTime>
#include <QDebug>

using namespace Qt::StringLiterals;

namespace {

/// No face search is faster; handing over more frames would only cost their copies.
constexpr qint64 faceFrameIntervalMs = 180;

} // namespace

void MainWindow::onFramesReady(const QImage& rgb, const QImage& ir, const QImage& depth) {
    // One copy of each image serves all tiles, and every later pass until the next image comes.
    if (!rgb.isNull()) {
        frames.lastRgbImage = StreamFrame(rgb);
        submitToFaceWorker(rgb);
    }
    if (!ir.isNull())
        frames.lastIrImage = StreamFrame(ir);
    if (!depth.isNull())
        frames.lastDepthImage = StreamFrame(depth);
    updateStreamPixmaps();
}

void MainWindow::submitToFaceWorker(const QImage& rgb) {
    if (!faceWorker || (faceFrameTimer.isValid() && faceFrameTimer.elapsed() < faceFrameIntervalMs))
        return;
    faceWorker->submitFrame(rgb);
    faceFrameTimer.start();
}

void MainWindow::onDepthRawReady(const QList<float>& depth_mm, int width, int height) {
    frames.lastDepthMm = depth_mm;
    frames.depthWidth = width;
    frames.depthHeight = height;
    updateAwarenessOverlays();
}

void MainWindow::onFaceOverlaysReady(const QList<FaceOverlay>& overlays) {
    faceOverlays = overlays;
    updateAwarenessOverlays();
}

void MainWindow::updateStreamPixmaps() {
    updateStreamLabel(u"rgb"_s, frames.lastRgbImage);
    updateStreamLabel(u"ir"_s, frames.lastIrImage);
    updateStreamLabel(u"depth"_s, frames.lastDepthImage);
    updateStreamLabel(u"combo_rgb"_s, frames.lastRgbImage);
    updateStreamLabel(u"combo_ir"_s, frames.lastIrImage);
    updateStreamLabel(u"combo_depth"_s, frames.lastDepthImage);
    updateStreamLabel(u"room_rgb"_s, frames.lastRgbImage);
    updateStreamLabel(u"follow_rgb"_s, frames.lastRgbImage);
}

void MainWindow::updateStreamLabel(const QString& name, const StreamFrame& image) {
    StreamImageWidget* widget = streamLabels.value(name);
    if (!widget || image.isNull())
        return;
    if (name == u"follow_rgb"_s) {
        updateFollowLabel(widget, image);
    } else {
        widget->setFrame(image);
        widget->setSourceCrop(QRect(), QString());
        widget->setOverlays(tileShowsOverlays(name) ? faceOverlays : QList<FaceOverlay>());
    }
    widget->setVoiceStatus(voiceStatus);
}

void MainWindow::updateFollowLabel(StreamImageWidget* widget, const StreamFrame& image) {
    const FollowDisplay display =
        followDisplay(image.size(), awareness.followView.followCrop, faceOverlays, currentView,
                      awareness.followTarget.selectedFollowTarget);
    const StreamFrame shown = display.cropApplied ? image.cropped(display.crop) : image;
    logFollowDisplay(display, shown.size(), image.size());
    widget->setFrame(shown);
    widget->setSourceCrop(QRect(), display.statusText);
    widget->setOverlays(display.overlays);
}

void MainWindow::logFollowDisplay(const FollowDisplay& display, const QSize& shown,
                                  const QSize& source) {
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    if (!recurringLogDue(now, last_follow_display_log_ms))
        return;
    last_follow_display_log_ms = now;
    qInfo() << "Qt follow display:"
            << "current_view=" << currentView << "crop_applied_to_display=" << display.cropApplied
            << "follow_zoom=" << awareness.followView.followZoom
            << "follow_crop=" << awareness.followView.followCrop << "display_image=" << shown
            << "source_image=" << source << "status=" << display.statusText;
}
