#pragma once

#include <opencv2/core.hpp>

namespace virtual_kinect::room {

/// The middle of the face on the poster, in metres (x right, y up from the floor, z forward).
inline const cv::Point3d kPosterFace{-2.22, 2.40, 4.49};

/// The room with nobody in it, before any noise.
struct Background {
    cv::Mat colour;   ///< CV_8UC4, kColourWidth x kColourHeight; fourth channel 0
    cv::Mat depth;    ///< CV_32F, kDepthWidth x kDepthHeight, millimetres; 0 where nothing returns
    cv::Mat infrared; ///< CV_32F, likewise, intensity
};

Background paintBackground();

} // namespace virtual_kinect::room
