// The stream display members of the main window: newest data in, every tile fed.

#include "awareness/stream_display.h"
#include "face/face_recognition_worker.h"
#include "ui/main_window.h"
#include "ui/stream_image_widget.h"
#include "ui/stream_tiles.h"

#include <QDateTime>
#include <QDebug>

using namespace Qt::StringLiterals;

namespace {

/// No face search is faster, so that more frames would only be replaced before they are searched.
constexpr qint64 faceFrameIntervalMs = 180;

/// Where the newest image of a stream is kept.
StreamFrame NewestFrames::*newestImage(Stream stream) {
    switch (stream) {
    case Stream::Infrared:
        return &NewestFrames::lastIrImage;
    case Stream::Depth:
        return &NewestFrames::lastDepthImage;
    default:
        return &NewestFrames::lastRgbImage;
    }
}

} // namespace

void MainWindow::onFramesReady(const QImage& rgb, const QImage& ir, const QImage& depth) {
    takeImage(&NewestFrames::lastRgbImage, rgb);
    takeImage(&NewestFrames::lastIrImage, ir);
    takeImage(&NewestFrames::lastDepthImage, depth);
    if (!rgb.isNull())
        submitToFaceWorker(frames.lastRgbImage);
    updateStreamPixmaps();
}

/// One picture serves all tiles and the face worker, and every later pass until the next one comes.
void MainWindow::takeImage(StreamFrame NewestFrames::*stream, const QImage& image) {
    if (!image.isNull())
        frames.*stream = StreamFrame(image);
}

void MainWindow::submitToFaceWorker(const StreamFrame& rgb) {
    if (!faceWorker || (faceFrameTimer.isValid() && faceFrameTimer.elapsed() < faceFrameIntervalMs))
        return;
    faceWorker->submitFrame(rgb);
    faceFrameTimer.start();
}

void MainWindow::onDepthRawReady(const QList<float>& depth_mm, int width, int height) {
    frames.lastDepth = {depth_mm, width, height};
    updateAwarenessOverlays();
}

void MainWindow::onFaceOverlaysReady(const QList<FaceOverlay>& overlays) {
    faceOverlays = overlays;
    updateAwarenessOverlays();
}

void MainWindow::updateStreamPixmaps() {
    for (const TileSpec& tile : streamTiles())
        updateStreamLabel(tile.key, frames.*newestImage(tile.stream));
}

void MainWindow::updateStreamLabel(const QString& name, const StreamFrame& image) {
    StreamImageWidget* widget = streamLabels.value(name);
    const TileSpec* tile = tileNamed(name);
    if (!widget || !tile || image.isNull())
        return;
    if (tile->view == View::Follow) {
        updateFollowLabel(widget, image);
    } else {
        widget->setFrame(image);
        widget->setSourceCrop(QRect(), QString());
        widget->setOverlays(tile->overlays ? faceOverlays : QList<FaceOverlay>());
    }
    widget->setVoiceStatus(voiceStatus);
}

void MainWindow::updateFollowLabel(StreamImageWidget* widget, const StreamFrame& image) {
    const FollowDisplay display = followDisplay(image.size(), awareness.followView.followCrop,
                                                faceOverlays, currentView, selectedFollowTarget);
    const StreamFrame shown = display.cropApplied ? image.cropped(display.crop) : image;
    logFollowDisplay(display, shown.size(), image.size());
    widget->setFrame(shown);
    widget->setSourceCrop(QRect(), display.statusText);
    widget->setOverlays(display.overlays);
}

void MainWindow::logFollowDisplay(const FollowDisplay& display, const QSize& shown,
                                  const QSize& source) {
    if (followDisplayLog.allows(QDateTime::currentMSecsSinceEpoch()))
        writeFollowDisplayReport(qInfo(), display, currentView, awareness.followView.followZoom,
                                 shown, source);
}
