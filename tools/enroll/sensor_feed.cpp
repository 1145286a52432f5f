#include "enroll/sensor_feed.h"

#include "kinect/kinect_stream_worker.h"

#include <QDateTime>
#include <utility>

namespace enroll {

using namespace Qt::StringLiterals;

namespace {

constexpr int checkEveryMs = 1000;

} // namespace

QString sensorSentence(const QString& message) {
    if (message.contains(u"It may be busy."_s))
        return message +
               u" Close the Control Center first: only one program can hold the sensor."_s;
    if (message.contains(u"no Kinect v2 device"_s))
        return message + u": plug it in, with its own power, and try again."_s;
    return message + u": unplug the sensor, wait, and plug it in again."_s;
}

QString silenceSentence() {
    return u"The sensor gives no pictures: check its cable and its power supply, then try again."_s;
}

SensorFeed::SensorFeed(Detectors detectors, bool searchBodies, std::chrono::seconds longest,
                       QObject* parent)
    : QObject(parent), looks(new LookWorker(std::move(detectors), searchBodies)),
      sensor(new KinectStreamWorker), patience(longest) {
    connect(looks, &LookWorker::looked, this, &SensorFeed::looked);
    connect(sensor, &KinectStreamWorker::framesReady, this, &SensorFeed::onFrames);
    connect(sensor, &KinectStreamWorker::depthRawReady, this, &SensorFeed::onDepth);
    connect(sensor, &KinectStreamWorker::streamError, this, &SensorFeed::onError);
    connect(&silenceTimer, &QTimer::timeout, this, &SensorFeed::checkSilence);
}

SensorFeed::~SensorFeed() {
    stop();
}

void SensorFeed::start() {
    sincePicture.start();
    silenceTimer.start(checkEveryMs);
    looks->start();
    sensor->start();
}

void SensorFeed::stop() {
    silenceTimer.stop();
    WorkerThread::release(std::exchange(looks, nullptr));
    WorkerThread::release(std::exchange(sensor, nullptr));
}

/// The depth of the set before goes with a picture: they are 33 ms apart, and a set's own depth
/// comes after its picture, or not at all.
void SensorFeed::onFrames(const QImage& color) {
    if (color.isNull() || !looks)
        return;
    sincePicture.restart();
    looks->submit(color, depth, QDateTime::currentMSecsSinceEpoch());
    Q_EMIT pictureReady(color);
}

void SensorFeed::onDepth(const QList<float>& mm, int width, int height) {
    depth = {mm, width, height};
}

void SensorFeed::onError(const QString& message) {
    if (!message.startsWith(u"Kinect unavailable"_s))
        return; // Silence has a clock of its own, which also notices a missing stream.
    silenceTimer.stop();
    Q_EMIT failed(sensorSentence(message));
}

void SensorFeed::checkSilence() {
    if (std::chrono::milliseconds(sincePicture.elapsed()) >= patience)
        Q_EMIT silent();
}

} // namespace enroll
