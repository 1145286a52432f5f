#pragma once

#include "room_sprite.h"

#include <vector>

namespace virtual_kinect::room {

/// What makes one body differ from another; colours are blue, green, red.
struct BodyLook {
    double height_m = 1.75; ///< from the floor to the top of the head
    double breadth = 1;     ///< of shoulders and hips, 1 is average
    cv::Vec3f skin, shirt, trousers, shoes;
    cv::Vec3f pattern;            ///< second colour of the shirt
    cv::Size patternCells{0, 0};  ///< stripes or checks around and along the shirt; 0 for none
    bool reflectiveBands = false; ///< on the sleeves, bright in infrared
    std::uint64_t seed = 1;
};

BodyLook ownerBody();
BodyLook strangerBody();

/// The textures of skin and clothes, painted once for all poses.
struct Wardrobe {
    explicit Wardrobe(const BodyLook& look);
    cv::Mat skin, shirt, sleeve, trousers, shoes;
};

/// Everything below the head, standing on y = 0 and facing z. `stride` is the phase of a step from
/// 0 to below 1, negative for standing.
std::vector<Surface> makeBody(const BodyLook& look, const Wardrobe& clothes, double stride);

} // namespace virtual_kinect::room
