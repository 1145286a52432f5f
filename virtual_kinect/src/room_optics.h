#pragma once

#include "calibration_file.h"

#include <opencv2/core.hpp>

#include <algorithm>

/// How the simulated sensor sees the room: a pinhole at the origin of x right, y up from the floor
/// and z forward, all in metres.
///
/// Depth and infrared show exactly what the colour camera shows, only in fewer pixels: column u of
/// colour is column u * 512 / 1920 of depth, row v is row v * 424 / 1080. A real sensor's two
/// cameras differ a little in place and field of view; programs that scale one picture onto the
/// other whole find here what they assume.
namespace virtual_kinect::room {

constexpr int colorWidth = 1920, colorHeight = 1080;
constexpr int depthWidth = 512, depthHeight = 424;
constexpr double focalPixels = 1066; ///< about 84 degrees across the colour picture
constexpr double sensorHeight_m = 1.4;

/// Colour pixel that shows a point.
inline cv::Point2d project(const cv::Point3d& p) {
    return {colorWidth / 2.0 + focalPixels * p.x / p.z,
            colorHeight / 2.0 - focalPixels * (p.y - sensorHeight_m) / p.z};
}

/// The pinhole as libfreenect2 tells it, with a pixel's centre at a whole number. The linear terms
/// of the colour camera stretch the depth picture onto the whole colour picture; the constants
/// beside them are those of libfreenect2's registration.
inline Calibration pinholeCalibration() {
    constexpr double perColumn = double{colorWidth} / depthWidth;
    constexpr double perRow = double{colorHeight} / depthHeight;
    constexpr double registration = 0.002199 / 0.01;
    const auto value = [](double number) { return static_cast<float>(number); };
    Calibration calibration;
    calibration.infrared = {{"fx", value(focalPixels / perColumn)},
                            {"fy", value(focalPixels / perRow)},
                            {"cx", value(depthWidth / 2.0 - 0.5)},
                            {"cy", value(depthHeight / 2.0 - 0.5)}};
    calibration.color = {{"fx", value(focalPixels)},
                         {"fy", value(focalPixels)},
                         {"cx", value(colorWidth / 2.0 - 0.5)},
                         {"cy", value(colorHeight / 2.0 - 0.5)},
                         {"shift_d", 1.0F},
                         {"mx_x1y0", value(perColumn * registration)},
                         {"my_x0y1", value(perRow * registration)}};
    return calibration;
}

/// Infrared intensity that a surface sends back: falls with the square of its distance. About 8000
/// for skin at 2 m; a reflector's 255 is brighter than any
/// diffuse surface could be. The sensor saturates before its highest value, 65535.
inline float infraredReturn(float reflectance, float distance_m) {
    const float boost = reflectance >= 250 ? 2.5F : 1.0F;
    return std::min(50000.0F, 200.0F * reflectance * boost / (distance_m * distance_m));
}

/// Standard deviation of one depth reading, in millimetres.
inline float depthNoise_mm(float distance_m) {
    return 1.0F + 0.7F * distance_m * distance_m;
}

} // namespace virtual_kinect::room
