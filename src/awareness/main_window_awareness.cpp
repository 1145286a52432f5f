// The awareness members of the main window: one pass over the newest data, and where it goes.

#include "awareness/awareness_report.h"
#include "awareness/follow_texts.h"
#include "face/face_recognition_worker.h"
#include "ui/main_window.h"

#include <QDateTime>
#include <QDeadlineTimer>

void MainWindow::updateAwarenessOverlays() {
    const AwarenessResult result =
        runAwarenessPass(awareness, awarenessInput(), QDateTime::currentMSecsSinceEpoch);
    faceOverlays = result.faceOverlays;
    selectedFollowTarget = followTexts::selectedFollowTarget(result.follow, awareness.followView,
                                                             awareness.followTarget);
    if (faceWorker)
        faceWorker->setBodyRegions(result.bodyRegions);
    logAwareness(result);
    updateStreamPixmaps();
}

AwarenessInput MainWindow::awarenessInput() const {
    AwarenessInput input;
    input.faceOverlays = faceOverlays;
    input.imageSize = frames.lastRgbImage.size();
    input.depth = frames.lastDepth;
    input.voiceStatus = voiceStatus;
    input.layoutDebug = switches.layoutDebug;
    input.personLostMs = switches.personLostMs;
    input.invertAudioDirection = switches.invertAudioDirection;
    return input;
}

void MainWindow::logAwareness(const AwarenessResult& result) {
    const qint64 monotonicMs = QDeadlineTimer::current().deadline();
    if (awarenessLog.allows(monotonicMs))
        writeAwarenessReport(qInfo(), awareness, result);
}
