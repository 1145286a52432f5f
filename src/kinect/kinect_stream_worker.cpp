#include "kinect/kinect_stream_worker.h"

#include "kinect/frame_conversion.h"

#include <libfreenect2/frame_listener_impl.h>
#include <libfreenect2/libfreenect2.hpp>

#include <QDeadlineTimer>
#include <QDebug>
#include <QMutexLocker>
#include <QScopeGuard>

#include <exception>

using namespace Qt::StringLiterals;
using libfreenect2::Frame;

namespace {

constexpr unsigned int allStreams = Frame::Color | Frame::Ir | Frame::Depth;
constexpr int frameWaitMs = 1000;
constexpr int longestEndMs = 3000;
constexpr qint64 dropLineEveryMs = 1000;

FrameView viewOf(const libfreenect2::FrameMap& frames, Frame::Type type) {
    const auto found = frames.find(type);
    if (found == frames.end() || found->second == nullptr)
        return {};
    const Frame& frame = *found->second;
    return {frame.data, frame.width, frame.height, frame.bytes_per_pixel,
            frame.format == Frame::RGBX};
}

} // namespace

struct KinectStreamWorker::FrameSet {
    QImage rgb;
    QImage ir;
    QImage depth;
    QList<float> depth_mm;
    int depthWidth = 0;
    int depthHeight = 0;
};

/// The sensor objects of one run. What began is ended in its destructor: the listener goes before
/// the context, which owns the device.
class KinectStreamWorker::Sensor {
public:
    /// Returns the text of what failed; empty when the streams run.
    QString open() {
        if (context.enumerateDevices() < 1)
            return u"Kinect unavailable: no Kinect v2 device detected"_s;
        device = context.openDevice(context.getDefaultDeviceSerialNumber());
        if (device == nullptr)
            return u"Kinect unavailable: failed to open device. It may be busy."_s;
        device->setColorFrameListener(&listener);
        device->setIrAndDepthFrameListener(&listener);
        if (!device->start()) {
            device->close();
            return u"Kinect unavailable: failed to start RGB/IR/Depth streams"_s;
        }
        return {};
    }

    void close() {
        device->stop();
        device->close();
    }

    QString serialNumber() { return QString::fromStdString(device->getSerialNumber()); }

    /// Waits for the next frame set; false when none came in time.
    bool wait() { return listener.waitForNewFrame(frames, frameWaitMs); }

    /// Gives the frame set back to the listener.
    void release() { listener.release(frames); }

    FrameSet convert() {
        const FrameView depth = viewOf(frames, Frame::Depth);
        FrameSet set;
        set.rgb = converter.color(viewOf(frames, Frame::Color));
        set.ir = converter.infrared(viewOf(frames, Frame::Ir));
        set.depth = converter.depth(depth);
        set.depth_mm = converter.rawDepth(depth);
        set.depthWidth = static_cast<int>(depth.width);
        set.depthHeight = static_cast<int>(depth.height);
        return set;
    }

    FrameConverter converter;

private:
    libfreenect2::Freenect2 context;
    libfreenect2::SyncMultiFrameListener listener{allStreams};
    libfreenect2::FrameMap frames;
    libfreenect2::Freenect2Device* device = nullptr; ///< The context's.
};

KinectStreamWorker::KinectStreamWorker(QObject* parent) : QThread(parent) {
    setObjectName(u"kinect-streams"_s); // names the thread for whoever looks at the process
}

KinectStreamWorker::~KinectStreamWorker() {
    stop();
    // Past the bound only an object that was not made with new still runs here. Its memory is about
    // to go, and QThread would end the process.
    if (!wait(QDeadlineTimer(longestEndMs)))
        wait();
}

void KinectStreamWorker::operator delete(KinectStreamWorker* worker, std::destroying_delete_t) {
    worker->stop();
    if (worker->wait(QDeadlineTimer(longestEndMs))) {
        worker->~KinectStreamWorker();
        ::operator delete(worker);
        return;
    }
    qInfo() << "Qt Kinect streams: the sensor does not stop and is left to itself";
    worker->disconnect();
    worker->setParent(nullptr);
    connect(worker, &QThread::finished, worker, &QObject::deleteLater);
    if (worker->isFinished()) // since the wait, perhaps before the connection
        worker->deleteLater();
}

void KinectStreamWorker::stop() {
    {
        const QMutexLocker lock(&stopMutex);
        stopRequested = true;
    }
    requestInterruption();
}

void KinectStreamWorker::run() {
    Q_EMIT statusChanged(u"Kinect: starting RGB/IR/Depth streams"_s);
    try {
        Sensor sensor;
        if (const QString failure = sensor.open(); !failure.isEmpty()) {
            Q_EMIT streamError(failure);
            return;
        }
        try {
            streamFrom(sensor);
        } catch (const std::exception& error) {
            qInfo() << "Qt Kinect streams: ended by" << error.what();
        }
        sensor.close();
        qInfo() << "Qt Kinect streams stopped after frames" << frameCount;
        Q_EMIT statusChanged(u"Kinect: stopped"_s);
    } catch (const std::exception& error) {
        qInfo() << "Qt Kinect streams: ended by" << error.what();
    }
}

void KinectStreamWorker::streamFrom(Sensor& sensor) {
    Q_EMIT statusChanged(u"Kinect: streaming RGB/IR/Depth from "_s + sensor.serialNumber());
    firstFramesLogged = false;
    frameCount = 0;
    while (!isInterruptionRequested() && !isStopRequested()) {
        if (!sensor.wait()) {
            Q_EMIT streamError(u"Kinect warning: timeout waiting for frame"_s);
            continue;
        }
        const auto release = qScopeGuard([&sensor] { sensor.release(); });
        if (receiversKeepUp(sensor.converter))
            handOver(sensor.convert());
    }
    reportDrops();
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
    Q_EMIT framesReady(set.rgb, set.ir, set.depth);
    if (!set.depth_mm.isEmpty())
        Q_EMIT depthRawReady(set.depth_mm, set.depthWidth, set.depthHeight);
    ++frameCount;
    ++emitted;
    markDelivery();
}

bool KinectStreamWorker::isStopRequested() {
    const QMutexLocker lock(&stopMutex);
    return stopRequested;
}

/// Whether the next frame set may be handed over. It may not when neither of two signs shows that
/// the earlier ones were taken: the receivers' thread has turned its events, and their images are
/// gone. The second one alone would starve a receiver that keeps images, the first one alone a
/// receiver that takes them on this thread and never turns any events.
bool KinectStreamWorker::receiversKeepUp(const FrameConverter& converter) {
    const bool keepUp =
        emitted - delivered < mostUndelivered || converter.imagesInUse() < mostUndelivered;
    if (keepUp) {
        if (dropped > 0 && sinceDropLine.hasExpired(dropLineEveryMs))
            reportDrops();
        return true;
    }
    if (dropped++ == 0 && !sinceDropLine.isValid())
        sinceDropLine.start();
    markDelivery(); // none may be under way, and the count stands still without
    return false;
}

/// Queues a call behind all frame sets so far; when it arrives they have been delivered. There is
/// never more than one, so that they do not pile up either.
void KinectStreamWorker::markDelivery() {
    if (markerUnderWay.exchange(true))
        return;
    const auto arrive = [this, upTo = emitted] {
        delivered = upTo;
        markerUnderWay = false;
    };
    QMetaObject::invokeMethod(this, arrive, Qt::QueuedConnection);
}

void KinectStreamWorker::reportDrops() {
    if (dropped == 0)
        return;
    qInfo() << "Qt Kinect streams: receivers stalled, frame sets dropped" << dropped;
    dropped = 0;
    sinceDropLine.start();
}
