#include "face/face_recognition_worker.h"

#include "face/owner_model.h"
#include "face/owner_samples.h"
#include "frames/sensor_facts.h"

#include <QDateTime>
#include <QDeadlineTimer>
#include <QDebug>
#include <QFile>
#include <QMutexLocker>
#include <algorithm>
#include <chrono>
#include <opencv2/core/utility.hpp>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using face::DetectorMode;

namespace {

constexpr unsigned long frameWaitMs = 250;

constexpr const char* threadName = "face-search"; // at most 15 characters

/// A thread of this niceness gets a tenth of a processor that a thread of normal priority wants as
/// well: enough to find faces in a few seconds. At 19 it would be a seventieth.
constexpr int searchNiceness = 10;

/// Gives the calling thread a small share of the processor among the threads of its log-in group.
/// QThread's priorities do nothing under Linux's usual scheduling; niceness belongs to the thread
/// there.
void yieldProcessorToOthers() {
    const auto thread = static_cast<id_t>(syscall(SYS_gettid));
    // A program that was started nicer stays so: the super-user could take that back.
    setpriority(PRIO_PROCESS, thread, std::max(getpriority(PRIO_PROCESS, thread), searchNiceness));
}

/// How the status line calls the detectors that run.
QString modeText(DetectorMode mode) {
    switch (mode) {
    case DetectorMode::Frontal:
        return u"frontal"_s;
    case DetectorMode::ProfileLeft:
        return u"profile_left"_s;
    case DetectorMode::ProfileRight:
        return u"profile_right"_s;
    case DetectorMode::FrontalOrProfile:
        return u"frontal_or_profile"_s;
    }
    return {};
}

qint64 steadyMs() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

} // namespace

FaceRecognitionWorker::FaceRecognitionWorker(int lostTimeout, QObject* parent,
                                             face::Options settings)
    : WorkerThread(parent), lostTimeoutMs(lostTimeout), options(std::move(settings)) {
    setObjectName(QLatin1StringView(threadName)); // for whoever looks at the process's threads
    // A pass is so short that the library's pool would gain little, and its threads would not be as
    // nice as this one. Here, because no other thread uses the library yet.
    cv::setNumThreads(1);
}

FaceRecognitionWorker::~FaceRecognitionWorker() {
    endRun();
}

void FaceRecognitionWorker::submitFrame(const QImage& image) {
    // What the search looks at is RGB888, and a conversion is a copy already.
    submitFrame(image.format() == QImage::Format_RGB888
                    ? StreamFrame(image)
                    : StreamFrame::fromWritten(image.convertToFormat(QImage::Format_RGB888)));
}

void FaceRecognitionWorker::submitFrame(const StreamFrame& frame) {
    if (frame.isNull())
        return;
    StreamFrame replaced = frame; // swapped out below, and let go after the lock
    const QMutexLocker lock(&stopMutex);
    std::swap(pendingFrame, replaced);
    hasFrame = true;
    wakeUp.wakeOne();
}

void FaceRecognitionWorker::setBodyRegions(const QList<QRect>& regions) {
    const QMutexLocker lock(&stopMutex);
    if (regions.size() != bodyRegions.size())
        wakeUp.wakeOne(); // from its rest
    bodyRegions = regions;
}

void FaceRecognitionWorker::run() {
    yieldProcessorToOthers();
    try {
        work();
    } catch (const std::exception& error) {
        qInfo() << "Qt face recognition ended by an error:" << error.what();
        Q_EMIT statusChanged(u"Face recognition unavailable: internal error"_s);
    }
}

void FaceRecognitionWorker::work() {
    if (options.detector == DetectorMode::FrontalOrProfile &&
        !QFile::exists(QFile::decodeName(options.profileCascadePath.c_str())))
        options.detector = DetectorMode::Frontal;
    FaceTools tools;
    const std::optional<int> sampleCount = learnOwner(tools);
    if (!sampleCount || !loadCascades(tools))
        return;
    Q_EMIT statusChanged(
        u"Face recognition live: samples=%1 model=%2 candidate_threshold=%3 detector=%4"_s.arg(
            QString::number(*sampleCount), QFile::decodeName(options.modelPath.c_str()),
            QString::number(options.candidateThreshold), modeText(options.detector)));
    searchLargestFrame(tools);
    watch(tools);
    Q_EMIT statusChanged(u"Face recognition stopped"_s);
}

/// Reads the samples, trains the recognizer and writes its model; gives the number of samples, or
/// nothing when there are none or the work was stopped.
std::optional<int> FaceRecognitionWorker::learnOwner(FaceTools& tools) {
    const std::stop_token stop = stopToken();
    std::vector<TrainingSample> samples;
    const bool found = loadTavinSamples(options.samplesDir, samples, stop);
    if (isStopRequested())
        return std::nullopt;
    if (!found) {
        Q_EMIT statusChanged(
            u"Face recognition unavailable: no Tavin samples found under faces/tavin"_s);
        return std::nullopt;
    }
    const auto model = trainOwnerModel(samples, stop);
    if (!model)
        return std::nullopt;
    // The file is for others: nothing here reads it, so recognition goes on without it.
    if (!writeOwnerModel(*model, options.modelPath, stop) && !isStopRequested())
        qInfo() << "Qt face model not written:" << options.modelPath.c_str();
    if (isStopRequested())
        return std::nullopt;
    tools.recognizer = model;
    return static_cast<int>(samples.size());
}

bool FaceRecognitionWorker::loadCascades(FaceTools& tools) {
    if (!loadCascade(tools.frontal, options.frontalCascadePath)) {
        Q_EMIT statusChanged(u"Face recognition unavailable: failed to load cascade %1"_s.arg(
            QFile::decodeName(options.frontalCascadePath.c_str())));
        return false;
    }
    if (options.detector == DetectorMode::Frontal)
        return true;
    if (!loadCascade(tools.profile, options.profileCascadePath)) {
        tools.profile = cv::CascadeClassifier();
        if (options.detector == DetectorMode::FrontalOrProfile)
            options.detector = DetectorMode::Frontal;
    }
    return true;
}

/// The cascades keep working memory for the largest picture that they ever searched. Searching an
/// empty frame with a body that fills it makes them take all of it now, so that the program does
/// not grow when somebody first stands close, perhaps hours later. It is quick, since nothing in
/// the frame looks like a face.
void FaceRecognitionWorker::searchLargestFrame(FaceTools& tools) {
    cv::Mat empty(sensor::colorHeight, sensor::colorWidth, CV_8U, cv::Scalar(0));
    try {
        findFaces(empty, tools, options, {QRect(0, 0, empty.cols, empty.rows)}, stopToken());
    } catch (const std::exception&) {
        // What fails here fails with every frame, and is logged there.
    }
}

void FaceRecognitionWorker::watch(FaceTools& tools) {
    while (!isStopRequested()) {
        const std::optional<HandedOver> input = waitForFrame();
        if (!input)
            return;
        try {
            workOnFrame(*input, tools);
        } catch (const std::exception& error) {
            if (skipLimit.allows(steadyMs()))
                qInfo() << "Qt face frame skipped:" << error.what();
        }
    }
}

/// Waits until the rest is over, another number of bodies is seen or the thread is to stop.
void FaceRecognitionWorker::rest(qint64 restMs, qsizetype bodies) {
    const QDeadlineTimer end(restMs);
    const QMutexLocker lock(&stopMutex);
    while (!stopRequested && !isInterruptionRequested() && bodyRegions.size() == bodies &&
           !end.hasExpired())
        wakeUp.wait(&stopMutex, end);
}

/// The newest frame and the body regions; nothing when the thread is to stop.
std::optional<FaceRecognitionWorker::HandedOver> FaceRecognitionWorker::waitForFrame() {
    const QMutexLocker lock(&stopMutex);
    while (!stopRequested && !isInterruptionRequested()) {
        if (hasFrame) {
            hasFrame = false;
            return HandedOver{std::exchange(pendingFrame, {}), bodyRegions};
        }
        wakeUp.wait(&stopMutex, frameWaitMs);
    }
    return std::nullopt;
}

void FaceRecognitionWorker::workOnFrame(const HandedOver& input, FaceTools& tools) {
    cv::Mat gray = grayFrame(input.frame.image());
    if (gray.empty())
        return;
    const qint64 nowMs = QDateTime::currentMSecsSinceEpoch();
    const qint64 beganMs = steadyMs();
    const auto pass = findFaces(gray, tools, options, input.bodyRegions, stopToken());
    if (!pass)
        return;
    if (pass->bodyRegionFaces > 0) {
        qInfo() << "Qt face follow/body crop upscale: regions=" << input.bodyRegions.size()
                << "follow_assist_faces=" << pass->bodyRegionFaces;
    }
    tracks = updateFaceTracks(std::move(tracks), pass->faces, nowMs, lostTimeoutMs);
    const QList<FaceOverlay> overlays = faceOverlays(tracks, nowMs, lostTimeoutMs);
    logOverlays(overlays, nowMs);
    Q_EMIT overlaysReady(overlays);

    const PassRest::Pass over{beganMs, steadyMs(), nowMs, input.bodyRegions.size()};
    if (const qint64 restMs = passRest.after(over, tracks); restMs > 0)
        rest(restMs, over.bodyRegions);
}

void FaceRecognitionWorker::logOverlays(const QList<FaceOverlay>& overlays, qint64 nowMs) {
    if (logLimit.allows(nowMs))
        qInfo().noquote() << faceOverlaysLogLine(overlays);
}
