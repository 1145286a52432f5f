#pragma once

#include <cstdint>
#include <filesystem>

namespace virtual_kinect {

/// What an image file says about itself.
struct ImageHeader {
    int width = 0;
    int height = 0;
    bool gray16 = false; ///< one channel of 16 bits
};

/// Reads the header of a PNG or JPEG file and looks whether the file is there up to its end,
/// without decoding it. Throws std::runtime_error, whose text names the file, when it is neither
/// kind, when it is cut off, and when it has no pixel or more than 8192 in a row or column.
ImageHeader readImageHeader(const std::filesystem::path& file);

} // namespace virtual_kinect
