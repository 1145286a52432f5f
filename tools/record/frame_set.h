#pragma once

#include <cstdint>
#include <memory>

namespace record {

/// One frame's pixels, four bytes each, rows from top to bottom without padding. Whoever holds
/// `data` keeps the frame alive.
struct FramePixels {
    std::shared_ptr<const unsigned char> data;
    int width = 0;
    int height = 0;

    bool operator==(const FramePixels&) const = default;
};

/// What the sensor delivered for one moment.
struct FrameSet {
    FramePixels color; ///< BGRX, or RGBX; no data in a recording without colour
    bool colorIsRgbx = false;
    FramePixels infrared;         ///< floats, 0 to 65535
    FramePixels depth;            ///< floats, millimetres, 0 where there is no reading
    std::uint32_t stamp = 0;      ///< the depth frame's time, eighths of a millisecond
    std::uint32_t colorStamp = 0; ///< the colour frame's
};

} // namespace record
