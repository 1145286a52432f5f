#include "kinect/frame_conversion.h"
#include "kinect/kinect_stream_worker.h"

#include "app/record_types.h"
#include "frames/stream_frame.h"
#include "ratio_table.h"
#include "sensor_frames.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>

#include <array>
#include <cstring>
#include <memory>

namespace {

/// What the acquisition thread does with a frame set, and a receiver that gets it from a queue and,
/// like the window, keeps the list and the pictures until the next ones come. All in one thread, so
/// that the receiver's share is counted too.
class Acquisition {
public:
    Acquisition() {
        registerRecordTypes();
        QObject::connect(
            &worker, &KinectStreamWorker::framesReady, &receiver,
            [this](const QImage& rgb, const QImage& ir, const QImage& depth) {
                imageBytes = rgb.sizeInBytes() + ir.sizeInBytes() + depth.sizeInBytes();
                newest = {StreamFrame(rgb), StreamFrame(ir), StreamFrame(depth)};
            },
            Qt::QueuedConnection);
        QObject::connect(
            &worker, &KinectStreamWorker::depthRawReady, &receiver,
            [this](const QList<float>& depth_mm) { heldDepth = depth_mm; }, Qt::QueuedConnection);
    }

    void once() {
        const FrameView depth = frames.depthView();
        const auto rgb = StreamFrame::fromWritten(converter.color(frames.colorView()));
        const auto ir = StreamFrame::fromWritten(converter.infrared(frames.infraredView()));
        const auto depthImage = StreamFrame::fromWritten(converter.depth(depth));
        Q_EMIT worker.framesReady(rgb.image(), ir.image(), depthImage.image());
        Q_EMIT worker.depthRawReady(converter.rawDepth(depth), static_cast<int>(depth.width),
                                    static_cast<int>(depth.height));
        QCoreApplication::sendPostedEvents(&receiver);
    }

    /// Half of all bytes read and written: a memcpy of n bytes reads n and writes n.
    std::size_t bytesToCopy() {
        once();
        const std::size_t read =
            frames.color.size() + frames.infrared.size() + 2 * frames.depth.size();
        const std::size_t written = static_cast<std::size_t>(imageBytes) +
                                    static_cast<std::size_t>(heldDepth.size()) * sizeof(float);
        return (read + written) / 2;
    }

private:
    SensorFrames frames;
    FrameConverter converter;
    KinectStreamWorker worker;
    QObject receiver;
    qsizetype imageBytes = 0;
    std::array<StreamFrame, 3> newest;
    QList<float> heldDepth;
};

const RatioTable::Claim acquisitionAgainstCopy({
    .what = "frame set converted and emitted",
    .against = "memcpy of all bytes read and written",
    .atMost = 1.7,
    .prepare =
        [] {
            const auto acquisition = std::make_shared<Acquisition>();
            const auto from = std::make_shared<SensorFrames::Bytes>(acquisition->bytesToCopy(), 1);
            const auto to = std::make_shared<SensorFrames::Bytes>(from->size());
            return Contest{[=] { acquisition->once(); },
                           [=] {
                               std::memcpy(to->data(), from->data(), to->size());
                               benchmark::ClobberMemory();
                           }};
        },
});

} // namespace
