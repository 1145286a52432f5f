#pragma once

#include "room_sprite.h"

#include <cstdint>

namespace virtual_kinect::room {

/// What makes one head differ from another. Lengths are millimetres, colours blue, green, red.
struct FaceLook {
    cv::Vec3f skin, hair, lips, iris;
    float halfWidth = 82, halfHeight = 120, halfDepth = 100; ///< of the skull without the nose
    float jaw = 0.25F;      ///< how much narrower the chin is than the temples
    float eyeDistance = 33; ///< from the middle of the face to the middle of an eye
    float browWeight = 4;   ///< half the height of an eyebrow
    float mouthWidth = 25;  ///< half of it
    float noseWidth = 15;   ///< half of it
    float hairline = 68;    ///< above the middle of the head
    float hairLength = -10; ///< how far down the hair reaches at the sides and the back
    float beard = 0;        ///< 0 none to 1 full
    /// Grain of the skin: size across and down in millimetres and strength from 0 to 1, coarse and
    /// fine. The recogniser compares such texture far more than the shape of a face.
    cv::Size2d coarseGrain{14, 14}, fineGrain{6, 6};
    float coarseStrength = 0.1F, fineStrength = 0.1F;
    std::uint64_t seed = 1;
};

/// The head and its ears around the head's own middle, painted: skin, hair, eyes, brows, nose and
/// mouth.
std::vector<Surface> makeHead(const FaceLook& look);

} // namespace virtual_kinect::room
