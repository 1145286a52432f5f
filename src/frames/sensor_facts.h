#pragma once

#include <cstddef>

/// What is true of a Kinect v2, whoever looks at its frames.
namespace sensor {

inline constexpr int colorWidth = 1920;
inline constexpr int colorHeight = 1080;
inline constexpr int depthWidth = 512; ///< Also the infrared image's.
inline constexpr int depthHeight = 424;
inline constexpr int framesPerSecond = 30;

/// Every usable frame has four bytes per pixel: BGRX or RGBX for colour, one float for infrared
/// (raw intensity) and depth (millimetres, 0 where there is no reading).
inline constexpr std::size_t bytesPerPixel = 4;

/// Depths outside this range (inclusive, millimetres) are not trusted.
inline constexpr float nearestDepth_mm = 250.0F;
inline constexpr float farthestDepth_mm = 8000.0F;

} // namespace sensor
