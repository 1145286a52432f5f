#pragma once

#include "app/rate_limit.h"
#include "app/worker_thread.h"

#include <QImage>
#include <QList>
#include <QSemaphore>
#include <QString>

class FrameConverter;
class SensorSession;

/// Owns the sensor for the life of one run: opens it, turns each synchronised frame set into three
/// images and the raw depth, and reports by signals. It never throws.
///
/// Contract, beside that of WorkerThread:
/// - start() begins a run. A worker that was stopped before its start opens the sensor and leaves
/// it
///   at once.
/// - A stop is noticed within one wait for a frame, at most 1000 ms. The sensor is stopped and
///   closed before "Kinect: stopped" is sent.
/// - A run that could not start says why before it closes the sensor, and has nothing to say after
///   that. Exceptions of the sensor's library count as the failure of the step that they came from.
/// - The object lives on the thread of its receivers. While that thread handles no events, at most
///   `maxUndelivered` frame sets wait for it; newer ones are dropped, counted and logged.
class KinectStreamWorker : public WorkerThread {
    Q_OBJECT

public:
    /// About one second of frame sets, 8 MB each.
    static constexpr int maxUndelivered = 30;

    explicit KinectStreamWorker(QObject* parent = nullptr);
    ~KinectStreamWorker() override;

Q_SIGNALS:
    /// One converted frame set: RGB888 images of the frames' own sizes. Those whose frame was
    /// missing or unusable are null, but never all three. Nobody writes their pixels any more, so
    /// that a StreamFrame of one of them is no copy.
    void framesReady(const QImage& rgb, const QImage& ir, const QImage& depth);
    /// The raw depth of the same set: width x height millimetres, row-major, 0 without a reading.
    void depthRawReady(const QList<float>& depth_mm, int width, int height);
    /// Progress, for the status area.
    void statusChanged(const QString& status);
    /// A failure that ended the run, or a warning.
    void streamError(const QString& message);

protected:
    void run() override;

private:
    struct FrameSet;

    void streamFrom(SensorSession& sensor);
    static FrameSet convert(const SensorSession& sensor, const FrameConverter& converter);
    void handOver(const FrameSet& set);
    void countDrop();
    void reportDrops();

    // Taken from by the run, given back to by the receivers' thread.
    QSemaphore room{maxUndelivered}; ///< How many more frame sets may wait for the receivers.

    // The run's own.
    bool firstFramesLogged = false;
    qint32 frameCount = 0;
    qint64 dropped = 0; ///< Since the last line about it.
    RateLimit dropLine; ///< At most one a second, and none in the first second of a stall.
};
