#pragma once

#include "room_sprite.h"

#include <cstdint>

namespace virtual_kinect::room {

/// Where a sprite goes: the colour pixel of its origin, and colour pixels for each of its pixels.
struct Placement {
    cv::Point2d origin;
    double scale = 1;
};

/// Paints the sprite over a CV_8UC4 picture of colorWidth x colorHeight.
void composeColor(const Sprite& sprite, const Placement& place, cv::Mat& color);

/// Random numbers with mean 0 and standard deviation 1, drawn once.
class NoiseTable {
public:
    explicit NoiseTable(std::uint64_t seed);
    float at(std::uint32_t index) const { return values[index & (tableSize - 1)]; }

    static constexpr std::uint32_t tableSize = 1U << 16;

private:
    std::vector<float> values;
};

/// Paints the sprite into CV_32F depth (millimetres) and infrared pictures of depthWidth x
/// depthHeight, its axis `distance_m` away, with the sensor's noise and losses. `salt` makes
/// frames differ.
void composeDepth(const Sprite& sprite, const Placement& place, double distance_m,
                  const NoiseTable& noise, std::uint32_t salt, cv::Mat& depth, cv::Mat& infrared);

} // namespace virtual_kinect::room
