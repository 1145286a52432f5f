#pragma once

#include "record/recording_writer.h"

#include <libfreenect2/libfreenect2.hpp>

#include <QByteArray>
#include <QDateTime>
#include <QString>

namespace record {

/// The device that a recording came from.
struct RecordedDevice {
    QString serial;
    QString firmware;
    libfreenect2::Freenect2Device::IrCameraParams infrared{};
    libfreenect2::Freenect2Device::ColorCameraParams color{};
    libfreenect2::Freenect2Device::Config config; ///< the library's own when none was set
};

/// How a recording came about, for recording.json.
struct RecordingSummary {
    QDateTime firstFrame;           ///< wall clock when it came; invalid before
    std::int64_t firstSequence = 0; ///< the sensor's number of it
    bool withColor = true;
    bool lossless = false;
    WriterCounts counts;
    std::int64_t missed = 0;   ///< sets that the sensor numbered and nobody got to see
    std::int64_t unusable = 0; ///< sets with a frame that cannot be recorded
    int repairedTimes = 0;     ///< time stamps that did not rise
    QString end;               ///< why it ended; empty while it goes on
};

/// The text of recording.json.
QByteArray describeRecording(const RecordedDevice& device, const RecordingSummary& summary);

/// The text of calibration.json.
QByteArray describeCalibration(const RecordedDevice& device);

} // namespace record
