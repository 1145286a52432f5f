#include "enroll/look_worker.h"

#include "awareness/body_candidates.h"
#include "face/face_pass.h"

#include <QDebug>
#include <QMutexLocker>
#include <utility>

namespace enroll {

LookWorker::LookWorker(Detectors tools, bool bodies, QObject* parent)
    : WorkerThread(parent), detectors(std::move(tools)), searchBodies(bodies) {
    qRegisterMetaType<FrameLook>();
}

LookWorker::~LookWorker() {
    endRun();
}

void LookWorker::submit(const QImage& frame, const DepthFrame& depth, qint64 timeMs) {
    if (frame.isNull())
        return;
    const QMutexLocker lock(&stopMutex);
    pending = Input{frame, depth, timeMs};
    wakeUp.wakeOne();
}

std::optional<LookWorker::Input> LookWorker::waitForInput() {
    const QMutexLocker lock(&stopMutex);
    while (!stopRequested && !pending)
        wakeUp.wait(&stopMutex);
    if (stopRequested)
        return std::nullopt;
    return std::exchange(pending, std::nullopt);
}

void LookWorker::run() {
    while (const std::optional<Input> input = waitForInput()) {
        try {
            const FrameLook look = lookAt(*input);
            if (!isStopRequested())
                Q_EMIT looked(look);
        } catch (const std::exception& error) {
            qInfo() << "A frame was left out:" << error.what();
        }
    }
}

FrameLook LookWorker::lookAt(const Input& input) {
    cv::Mat gray = grayFrame(input.frame);
    QList<QRect> bodies;
    if (searchBodies) {
        for (const BodyCandidate& body : detectDepthBodyCandidates(input.depth, input.frame.size()))
            bodies.append(body.rect);
    }
    FrameLook look = lookAtFrame(gray, detectors, bodies, input.timeMs, stopToken());
    measureDistances(look, input.depth, input.frame.size());
    return look;
}

} // namespace enroll
