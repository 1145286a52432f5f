// The awareness members of the main window: one pass over the newest data, and where it goes.

#include "awareness/awareness_report.h"
#include "face/face_recognition_worker.h"
#include "ui/main_window.h"

#include <QDateTime>

namespace {

constexpr qint64 logIntervalMs = 999; // the next line comes after more than this

} // namespace

void MainWindow::updateAwarenessOverlays() {
    const AwarenessInput input = awarenessInput();
    const QList<FaceOverlay> faces = measuredFaces(input);
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    const AwarenessResult result = runAwarenessPass(awareness, input, faces, now);
    faceOverlays = result.faceOverlays;
    if (faceWorker)
        faceWorker->setBodyRegions(result.bodyRegions);
    logAwareness(result);
    updateStreamPixmaps();
}

AwarenessInput MainWindow::awarenessInput() const {
    AwarenessInput input;
    input.faceOverlays = faceOverlays;
    input.imageSize = frames.lastRgbImage.size();
    input.lastDepthMm = frames.lastDepthMm;
    input.depthWidth = frames.depthWidth;
    input.depthHeight = frames.depthHeight;
    input.voiceStatus = voiceStatus;
    input.layoutDebug = switches.layoutDebug;
    input.personLostMs = switches.personLostMs;
    input.invertAudioDirection = switches.invertAudioDirection;
    return input;
}

void MainWindow::logAwareness(const AwarenessResult& result) {
    if (awarenessLogTimer.isValid() && awarenessLogTimer.elapsed() <= logIntervalMs)
        return;
    awarenessLogTimer.start();
    writeAwarenessReport(qInfo(), awareness, result);
}
