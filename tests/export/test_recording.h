#pragma once

#include <QString>
#include <QTemporaryDir>

/// A recording of a plane two metres from the sensor with a red marker on it, to the left of the
/// sensor and above its axis. The pictures are mirrored, as sensors deliver them.
class TestRecording {
public:
    static constexpr int depthWidth = 512;
    static constexpr int depthHeight = 424;
    static constexpr double fx = 366.0;
    static constexpr double fy = 364.0;
    static constexpr double cx = 250.0; ///< not in the middle, so that left and right differ
    static constexpr double cy = 205.0;
    static constexpr double plane_m = 2.0;
    /// Where the marker is, in metres.
    static constexpr double markerX_m = -0.8;
    static constexpr double markerY_m = -0.5; ///< y goes down

    /// `moments` of them, 100 ms apart, named 0, 1 and so on; the first was at
    /// 2025-03-01T12:00:00.250Z.
    explicit TestRecording(int moments = 1);

    QString path() const { return place.filePath(QStringLiteral("walk")); }
    /// Beside the recording.
    QString beside(const QString& name) const { return place.filePath(name); }
    void writeText(const QString& name, const QByteArray& text) const;
    void remove(const QString& name) const;

    /// The text of calibration.json, with a distortion of the infrared camera.
    static QByteArray calibration(bool mirrored = true, double k1 = 0);

private:
    QTemporaryDir place;
};
