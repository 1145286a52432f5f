#pragma once

#include <opencv2/core.hpp>

namespace virtual_kinect::room {

/// The middle of the face on the poster, in metres (x right, y up from the floor, z forward).
inline const cv::Point3d posterFacePlace{-2.22, 2.40, 4.49};

/// The room with nobody in it, before any noise.
struct Background {
    cv::Mat color;    ///< CV_8UC4, colorWidth x colorHeight; fourth channel 0
    cv::Mat depth;    ///< CV_32F, depthWidth x depthHeight, millimetres; 0 where nothing returns
    cv::Mat infrared; ///< CV_32F, likewise, intensity
};

Background paintBackground();

} // namespace virtual_kinect::room
