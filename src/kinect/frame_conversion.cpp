#include "kinect/frame_conversion.h"

#include "kinect/frame_kernels.h"
#include "kinect/image_pool.h"
#include "kinect/sensor_facts.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>

namespace {

/// An infrared image uses at least this many units of intensity before its top is cut off.
constexpr double leastCutRange = 1200.0;
/// The share of a wide range that stays below saturation: reflectors would darken all else.
constexpr double keptShareOfRange = 0.85;

const unsigned char* rowOf(const FrameView& frame, int y) {
    return frame.data + static_cast<std::size_t>(y) * frame.width * sensor::bytesPerPixel;
}

QImage imageFor(const FrameView& frame, ImagePool& pool) {
    constexpr std::size_t most = std::numeric_limits<int>::max();
    if (!isUsable(frame) || frame.width > most || frame.height > most)
        return {};
    return pool.take(static_cast<int>(frame.width), static_cast<int>(frame.height));
}

/// How the frame's valid values become grey, or nothing if they are all equal.
std::optional<InfraredScale> scaleFor(const InfraredRange& found) {
    if (!found.found || !(found.maximum > found.minimum))
        return std::nullopt;
    InfraredScale scale;
    scale.minimum = found.minimum;
    scale.maximum = found.maximum;
    scale.range = scale.maximum - scale.minimum;
    const double ceiling = scale.minimum + std::max(keptShareOfRange * scale.range, leastCutRange);
    if (ceiling < scale.maximum) {
        scale.maximum = ceiling;
        scale.range = ceiling - scale.minimum;
    }
    scale.scale = scale.range > 1.0 ? 255.0 / scale.range : 255.0;
    return scale;
}

/// One channel of the jet ramp, which peaks at `center` on the scale of 0 to 4.
constexpr unsigned char jetChannel(float position, float center) {
    const float distance = position < center ? center - position : position - center;
    const float level = 1.5F - distance;
    if (level >= 1.0F)
        return 255;
    return level > 0.0F ? static_cast<unsigned char>(level * 255.0F) : 0;
}

constexpr DepthPalette makePalette() {
    DepthPalette palette{};
    for (int nearness = 0; nearness < DepthPalette::noReading; ++nearness) {
        const float position = (static_cast<float>(nearness) / 255.0F) * 4.0F;
        palette.colors[nearness][0] = jetChannel(position, 3.0F);
        palette.colors[nearness][1] = jetChannel(position, 2.0F);
        palette.colors[nearness][2] = jetChannel(position, 1.0F);
    }
    return palette;
}

constexpr DepthPalette depthPalette = makePalette();

} // namespace

bool isUsable(const FrameView& frame) {
    return frame.data != nullptr && frame.width > 0 && frame.height > 0 &&
           frame.bytesPerPixel == sensor::bytesPerPixel;
}

FrameConverter::FrameConverter() : FrameConverter(supportedFrameKernels().front()) {}

FrameConverter::FrameConverter(const FrameKernels& chosen)
    : kernels(chosen), colorImages(std::make_unique<ImagePool>()),
      infraredImages(std::make_unique<ImagePool>()), depthImages(std::make_unique<ImagePool>()) {}

FrameConverter::~FrameConverter() = default;

QImage FrameConverter::color(const FrameView& frame) {
    QImage image = imageFor(frame, *colorImages);
    for (int y = 0; y < image.height(); ++y)
        kernels.packColor(rowOf(frame, y), image.scanLine(y), frame.width, frame.rgbx);
    return image;
}

QImage FrameConverter::infrared(const FrameView& frame) {
    if (!isUsable(frame))
        return {};
    const auto scale = scaleFor(kernels.infraredRange(frame.data, frame.width * frame.height));
    if (!scale)
        return {};
    QImage image = imageFor(frame, *infraredImages);
    for (int y = 0; y < image.height(); ++y)
        kernels.infraredRow(rowOf(frame, y), image.scanLine(y), frame.width, *scale);
    return image;
}

QImage FrameConverter::depth(const FrameView& frame) {
    QImage image = imageFor(frame, *depthImages);
    bool anyValid = false;
    for (int y = 0; y < image.height(); ++y) {
        const bool valid =
            kernels.depthRow(rowOf(frame, y), image.scanLine(y), frame.width, depthPalette);
        anyValid = anyValid || valid;
    }
    return anyValid ? image : QImage();
}

int FrameConverter::imagesInUse() const {
    return std::max({colorImages->inUse(), infraredImages->inUse(), depthImages->inUse()});
}

QList<float> rawDepth(const FrameView& frame) {
    if (!isUsable(frame))
        return {};
    QList<float> values(static_cast<qsizetype>(frame.width * frame.height));
    std::memcpy(values.data(), frame.data, static_cast<std::size_t>(values.size()) * sizeof(float));
    return values;
}
