#pragma once

#include "room_sprite.h"

#include <vector>

namespace virtual_kinect::room {

/// A horizontal ellipse that a limb or the trunk passes through, in metres.
struct Ring {
    cv::Vec3f middle;
    float halfWidth, halfDepth;
};

/// A closed skin over rings that are listed from the top down.
Surface tube(const std::vector<Ring>& rings, const cv::Mat& texture);

/// An ellipsoid with the given half axes, in metres.
Surface ball(const cv::Vec3f& middle, const cv::Vec3f& radius, const cv::Mat& texture);

/// A texture of one colour (blue, green, red) and infrared reflectance, 0 to 255, with folds of
/// the given size in its own 192 x 256 pixels.
cv::Mat cloth(const cv::Vec3f& color, float reflectance, cv::Size2d folds, std::uint64_t seed);

} // namespace virtual_kinect::room
