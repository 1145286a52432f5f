#include "record/recording_description.h"

#include "camera_fields.h"
#include "common/command_line.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace record {

using namespace Qt::StringLiterals;

namespace {

/// Raised when a program that reads the folders would misread new ones.
constexpr int formatVersion = 1;

template <typename Params, typename Fields>
QJsonObject valuesOf(const Params& params, const Fields& fields) {
    QJsonObject values;
    for (const auto& field : fields)
        values[QLatin1StringView(field.name)] = static_cast<double>(params.*field.value);
    return values;
}

QString colorKind(const RecordingSummary& summary) {
    if (!summary.withColor)
        return u"none"_s;
    return summary.lossless ? u"PNG"_s : u"JPEG, quality 95"_s;
}

} // namespace

QByteArray describeRecording(const RecordedDevice& device, const RecordingSummary& summary) {
    const WriterCounts& counts = summary.counts;
    const QJsonObject values{
        {u"format_version"_s, formatVersion},
        {u"program"_s, u"lumeno-record"_s},
        {u"program_version"_s, tool::version()},
        {u"first_frame"_s, summary.firstFrame.toUTC().toString(Qt::ISODateWithMs)},
        {u"first_sequence"_s, static_cast<qint64>(summary.firstSequence)},
        {u"device"_s, QJsonObject{{u"serial"_s, device.serial}, {u"firmware"_s, device.firmware}}},
        {u"color"_s, colorKind(summary)},
        {u"sets"_s, static_cast<qint64>(counts.sets)},
        {u"sets_dropped"_s, static_cast<qint64>(counts.dropped)},
        {u"sets_missed"_s, static_cast<qint64>(summary.missed)},
        {u"sets_unusable"_s, static_cast<qint64>(summary.unusable)},
        {u"time_stamps_repaired"_s, summary.repairedTimes},
        {u"picture_bytes"_s, static_cast<qint64>(counts.bytes)},
        {u"ended"_s, summary.end.isEmpty() ? u"not yet"_s : summary.end},
    };
    return QJsonDocument(values).toJson();
}

QByteArray describeCalibration(const RecordedDevice& device) {
    using Device = libfreenect2::Freenect2Device;
    const Device::Config& config = device.config;
    const QJsonObject values{
        {u"serial"_s, device.serial},
        {u"firmware"_s, device.firmware},
        // Left and right are exchanged in all pictures, as in a mirror.
        {u"mirrored"_s, true},
        {u"ir"_s,
         valuesOf(device.infrared, virtual_kinect::irCameraFields<Device::IrCameraParams>())},
        {u"color"_s,
         valuesOf(device.color, virtual_kinect::colorCameraFields<Device::ColorCameraParams>())},
        {u"config"_s, QJsonObject{{u"MinDepth"_s, static_cast<double>(config.MinDepth)},
                                  {u"MaxDepth"_s, static_cast<double>(config.MaxDepth)},
                                  {u"EnableBilateralFilter"_s, config.EnableBilateralFilter},
                                  {u"EnableEdgeAwareFilter"_s, config.EnableEdgeAwareFilter}}},
    };
    return QJsonDocument(values).toJson();
}

} // namespace record
