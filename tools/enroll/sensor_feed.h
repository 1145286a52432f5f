#pragma once

#include "enroll/look_worker.h"

#include <QElapsedTimer>
#include <QImage>
#include <QObject>
#include <QTimer>
#include <chrono>

class KinectStreamWorker;

namespace enroll {

/// A sentence for what the acquisition worker says when it cannot start, with the cure.
QString sensorSentence(const QString& message);
/// The sentence for a sensor that gives no pictures.
QString silenceSentence();

/// A busy machine may take seconds for the first picture.
inline constexpr std::chrono::seconds usualPatience{10};

/// Opens the sensor and has every picture looked at that there is time for. Lives on the thread of
/// its receivers.
class SensorFeed : public QObject {
    Q_OBJECT

public:
    /// `searchBodies` is LookWorker's. Without a colour picture for `patience` the sensor is
    /// silent.
    SensorFeed(Detectors detectors, bool searchBodies,
               std::chrono::seconds patience = usualPatience, QObject* parent = nullptr);
    ~SensorFeed() override;

    void start();
    /// Closes the sensor; takes 3 s at most.
    void stop();

Q_SIGNALS:
    /// Every colour picture, to be shown.
    void pictureReady(const QImage& color);
    /// What one of them shows.
    void looked(const enroll::FrameLook& look);
    /// The sensor could not be started; one sentence with the cure. Nothing follows.
    void failed(const QString& sentence);
    /// The sensor has given no colour picture for so long; once a second until it does.
    void silent();

private:
    void onFrames(const QImage& color);
    void onDepth(const QList<float>& mm, int width, int height);
    void onError(const QString& message);
    void checkSilence();

    // Released by stop(), null from then on.
    LookWorker* looks;
    KinectStreamWorker* sensor;
    DepthFrame depth;
    const std::chrono::seconds patience;
    QTimer silenceTimer;
    QElapsedTimer sincePicture;
};

} // namespace enroll
