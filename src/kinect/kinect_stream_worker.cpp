#include "kinect/kinect_stream_worker.h"

#include "frames/depth_frame.h"
#include "frames/stream_frame.h"
#include "kinect/frame_conversion.h"
#include "kinect/sensor_session.h"

#include <QDebug>
#include <QScopeGuard>

#include <chrono>
#include <exception>
#include <optional>

using namespace Qt::StringLiterals;
using libfreenect2::Frame;

namespace {

constexpr std::chrono::milliseconds frameWait{1000};

/// Milliseconds of a clock that nobody sets.
qint64 monotonicMs() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

FrameView viewOf(const libfreenect2::FrameMap& frames, Frame::Type type) {
    const auto found = frames.find(type);
    if (found == frames.end() || found->second == nullptr)
        return {};
    const Frame& frame = *found->second;
    return {frame.data, frame.width, frame.height, frame.bytes_per_pixel,
            frame.format == Frame::RGBX};
}

QString failureText(SensorFailure::Step step) {
    switch (step) {
    case SensorFailure::Step::Enumerate:
        return u"Kinect unavailable: no Kinect v2 device detected"_s;
    case SensorFailure::Step::Open:
        return u"Kinect unavailable: failed to open device. It may be busy."_s;
    case SensorFailure::Step::Start:
        break;
    }
    return u"Kinect unavailable: failed to start RGB/IR/Depth streams"_s;
}

void logException(const QString& what) {
    qInfo() << "Qt Kinect streams: ended by" << what.toUtf8().constData();
}

/// Runs `step`; what it throws ends here, with a line in the log.
template <typename Step>
void withoutExceptions(Step step) {
    try {
        step();
    } catch (const std::exception& error) {
        logException(QString::fromUtf8(error.what()));
    } catch (...) {
        logException(u"an exception of an unknown type"_s);
    }
}

} // namespace

struct KinectStreamWorker::FrameSet {
    StreamFrame rgb;
    StreamFrame ir;
    StreamFrame depth;
    DepthFrame raw;
};

KinectStreamWorker::KinectStreamWorker(QObject* parent) : WorkerThread(parent) {
    setObjectName(u"kinect-streams"_s); // names the thread for whoever looks at the process
}

KinectStreamWorker::~KinectStreamWorker() {
    endRun();
}

void KinectStreamWorker::run() {
    Q_EMIT statusChanged(u"Kinect: starting RGB/IR/Depth streams"_s);
    SensorSession sensor;
    if (const std::optional<SensorFailure> failure = sensor.start()) {
        if (!failure->exception.isEmpty())
            logException(failure->exception);
        Q_EMIT streamError(failureText(failure->step));
        // After the text: a sensor that does not answer takes seconds to close.
        withoutExceptions([&sensor] { sensor.close(); });
        return;
    }
    withoutExceptions([this, &sensor] { streamFrom(sensor); });
    withoutExceptions([&sensor] { sensor.close(); });
    qInfo() << "Qt Kinect streams stopped after frames" << frameCount;
    Q_EMIT statusChanged(u"Kinect: stopped"_s);
}

void KinectStreamWorker::streamFrom(SensorSession& sensor) {
    firstFramesLogged = false;
    frameCount = 0;
    const QString serialNumber = QString::fromStdString(sensor.device().getSerialNumber());
    Q_EMIT statusChanged(u"Kinect: streaming RGB/IR/Depth from "_s + serialNumber);
    const FrameConverter converter;
    while (!isStopRequested()) {
        if (!sensor.wait(frameWait)) {
            Q_EMIT streamError(u"Kinect warning: timeout waiting for frame"_s);
            continue;
        }
        const auto release = qScopeGuard([&sensor] { sensor.release(); });
        if (!room.tryAcquire()) {
            countDrop();
            continue;
        }
        if (dropped > 0 && dropLine.allows(monotonicMs()))
            reportDrops();
        handOver(convert(sensor, converter));
        // Queued behind the set's own events: when it is called, the receivers have had them.
        QMetaObject::invokeMethod(
            this, [this] { room.release(); }, Qt::QueuedConnection);
    }
    reportDrops();
}

KinectStreamWorker::FrameSet KinectStreamWorker::convert(const SensorSession& sensor,
                                                         const FrameConverter& converter) {
    const FrameView depth = viewOf(sensor.frames(), Frame::Depth);
    FrameSet set;
    set.rgb = StreamFrame::fromWritten(converter.color(viewOf(sensor.frames(), Frame::Color)));
    set.ir = StreamFrame::fromWritten(converter.infrared(viewOf(sensor.frames(), Frame::Ir)));
    set.depth = StreamFrame::fromWritten(converter.depth(depth));
    set.raw = {converter.rawDepth(depth), static_cast<int>(depth.width),
               static_cast<int>(depth.height)};
    return set;
}

void KinectStreamWorker::handOver(const FrameSet& set) {
    if (set.rgb.isNull() && set.ir.isNull() && set.depth.isNull())
        return;
    const bool complete = !set.rgb.isNull() && !set.ir.isNull() && !set.depth.isNull();
    if (complete && !firstFramesLogged) {
        qInfo() << "Qt Kinect streams: first RGB/IR/Depth frames converted";
        Q_EMIT statusChanged(u"Kinect: RGB/IR/Depth frames live"_s);
        firstFramesLogged = true;
    }
    Q_EMIT framesReady(set.rgb.image(), set.ir.image(), set.depth.image());
    if (!set.raw.depth_mm.isEmpty())
        Q_EMIT depthRawReady(set.raw.depth_mm, set.raw.width, set.raw.height);
    ++frameCount;
}

void KinectStreamWorker::countDrop() {
    ++dropped;
    dropLine.startAt(monotonicMs());
}

void KinectStreamWorker::reportDrops() {
    if (dropped > 0)
        qInfo() << "Qt Kinect streams: receivers stalled, frame sets dropped" << dropped;
    dropped = 0;
}
