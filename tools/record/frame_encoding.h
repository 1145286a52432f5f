#pragma once

#include "record/frame_set.h"

#include <opencv2/core/mat.hpp>

#include <cstdint>
#include <vector>

namespace record {

using Bytes = std::vector<std::uint8_t>;

/// Turns frames into files' contents, using its memory again. One for each thread.
class FrameEncoder {
public:
    /// JPEG of quality 95, or a PNG that keeps every bit. The result is valid until the next call.
    /// Throws std::exception when there is no memory for it.
    const Bytes& jpeg(const FramePixels& color, bool rgbx);
    const Bytes& png(const FramePixels& color, bool rgbx);
    /// PNG with one channel of 16 bits: floats rounded to whole units. Not a number and negative
    /// ones become 0, those above 65535 become 65535.
    const Bytes& wholeUnits(const FramePixels& floats);

private:
    cv::Mat converted;
    Bytes bytes;
};

} // namespace record
