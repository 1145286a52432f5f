#include "kinect/frame_conversion.h"

#include "frames/picture_pool.h"
#include "frames/sensor_facts.h"
#include "kinect/frame_kernels.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

namespace {

/// An infrared image uses at least this many units of intensity before its top is cut off.
constexpr double minCutRange = 1200.0;
/// The share of a wide range that stays below saturation: reflectors would darken all else.
constexpr double keptShareOfRange = 0.85;

/// Calls `convert(pixels of the frame, pixels of the image, count)` for the whole image at once
/// where its rows lie without gaps, else row by row.
template <typename Convert>
void forEachRun(const FrameView& frame, QImage& image, Convert convert) {
    const auto rowBytes = static_cast<qsizetype>(frame.width * 3);
    if (image.isNull())
        return;
    if (image.bytesPerLine() == rowBytes) {
        convert(frame.data, image.bits(), frame.width * frame.height);
        return;
    }
    for (int y = 0; y < image.height(); ++y) {
        const std::size_t first = static_cast<std::size_t>(y) * frame.width;
        convert(frame.data + first * sensor::bytesPerPixel, image.scanLine(y), frame.width);
    }
}

QImage imageFor(const FrameView& frame) {
    constexpr std::size_t maxSide = std::numeric_limits<int>::max();
    if (!isUsable(frame) || frame.width > maxSide || frame.height > maxSide)
        return {};
    const QSize size(static_cast<int>(frame.width), static_cast<int>(frame.height));
    return PicturePool::shared().take(size, QImage::Format_RGB888);
}

/// How the frame's valid values become grey, or nothing if they are all equal.
std::optional<InfraredScale> scaleFor(const InfraredRange& found) {
    if (!found.found || !(found.maximum > found.minimum))
        return std::nullopt;
    InfraredScale scale;
    scale.minimum = found.minimum;
    scale.maximum = found.maximum;
    scale.range = scale.maximum - scale.minimum;
    const double ceiling = scale.minimum + std::max(keptShareOfRange * scale.range, minCutRange);
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

FrameConverter::FrameConverter(const FrameKernels& chosen) : kernels(chosen) {}

QImage FrameConverter::color(const FrameView& frame) const {
    QImage image = imageFor(frame);
    forEachRun(frame, image, [&](const unsigned char* in, unsigned char* out, std::size_t pixels) {
        kernels.packColor(in, out, pixels, frame.rgbx);
    });
    return image;
}

QImage FrameConverter::infrared(const FrameView& frame) const {
    if (!isUsable(frame))
        return {};
    const auto scale = scaleFor(kernels.infraredRange(frame.data, frame.width * frame.height));
    if (!scale)
        return {};
    QImage image = imageFor(frame);
    forEachRun(frame, image, [&](const unsigned char* in, unsigned char* out, std::size_t pixels) {
        kernels.infraredPixels(in, out, pixels, *scale);
    });
    return image;
}

QImage FrameConverter::depth(const FrameView& frame) const {
    QImage image = imageFor(frame);
    bool anyValid = false;
    forEachRun(frame, image, [&](const unsigned char* in, unsigned char* out, std::size_t pixels) {
        const bool valid = kernels.depthPixels(in, out, pixels, depthPalette);
        anyValid = anyValid || valid;
    });
    return anyValid ? image : QImage();
}

QList<float> FrameConverter::rawDepth(const FrameView& frame) const {
    if (!isUsable(frame))
        return {};
    return PicturePool::shared().listOf(frame.data,
                                        static_cast<qsizetype>(frame.width * frame.height));
}
