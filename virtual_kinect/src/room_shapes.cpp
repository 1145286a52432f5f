#include "room_shapes.h"

#include <cmath>
#include <numbers>

namespace virtual_kinect::room {
namespace {

constexpr float pi = std::numbers::pi_v<float>;
constexpr int ringPoints = 25; ///< points of a ring
constexpr int ballRings = 8;

} // namespace

Surface tube(const std::vector<Ring>& rings, const cv::Mat& texture) {
    Surface surface;
    surface.columns = ringPoints;
    surface.rows = static_cast<int>(rings.size()) + 2;
    surface.texture = texture;
    const auto addRow = [&](const Ring& ring, float size) {
        for (int i = 0; i < ringPoints; ++i) {
            const float angle = pi * (2 * static_cast<float>(i) / (ringPoints - 1) - 1);
            surface.points.push_back(ring.middle + cv::Vec3f(ring.halfWidth * std::sin(angle), 0,
                                                             ring.halfDepth * std::cos(angle)) *
                                                       size);
        }
    };
    addRow(rings.front(), 0);
    for (const Ring& ring : rings)
        addRow(ring, 1);
    addRow(rings.back(), 0);
    return surface;
}

Surface ball(const cv::Vec3f& middle, const cv::Vec3f& radius, const cv::Mat& texture) {
    std::vector<Ring> rings;
    for (int i = 1; i <= ballRings; ++i) {
        const float angle = pi * static_cast<float>(i) / (ballRings + 1);
        rings.push_back({middle + cv::Vec3f(0, radius[1] * std::cos(angle), 0),
                         radius[0] * std::sin(angle), radius[2] * std::sin(angle)});
    }
    return tube(rings, texture);
}

cv::Mat cloth(const cv::Vec3f& color, float reflectance, cv::Size2d folds, std::uint64_t seed) {
    const cv::Size size(192, 256);
    const cv::Mat broad = smoothNoise(size, folds, seed);
    const cv::Mat fine = smoothNoise(size, {4, 4}, seed + 1);
    cv::Mat texture(size, CV_8UC4);
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            const float shade = 1 + 0.14F * broad.at<float>(y, x) + 0.05F * fine.at<float>(y, x);
            texture.at<cv::Vec4b>(y, x) = {cv::saturate_cast<uchar>(color[0] * shade),
                                           cv::saturate_cast<uchar>(color[1] * shade),
                                           cv::saturate_cast<uchar>(color[2] * shade),
                                           cv::saturate_cast<uchar>(reflectance * shade)};
        }
    }
    return texture;
}

} // namespace virtual_kinect::room
