#include "room_face.h"

#include "room_shapes.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace virtual_kinect::room {
namespace {

constexpr int gridColumns = 97, gridRows = 97;
constexpr int textureWidth = 960, textureHeight = 600;
constexpr float pi = std::numbers::pi_v<float>;

float smoothStep(float from, float to, float value) {
    const float t = std::clamp((value - from) / (to - from), 0.0F, 1.0F);
    return t * t * (3 - 2 * t);
}

/// 1 in the middle of an ellipse, falling to 0 softly outside it.
float blob(float x, float y, float middleX, float middleY, float radiusX, float radiusY) {
    const float dx = (x - middleX) / radiusX, dy = (y - middleY) / radiusY;
    return std::exp(-(dx * dx + dy * dy));
}

/// 1 inside an ellipse, 0 outside, with an edge about `edge` millimetres wide.
float disc(float x, float y, float middleX, float middleY, float radiusX, float radiusY,
           float edge) {
    const float dx = (x - middleX) / radiusX, dy = (y - middleY) / radiusY;
    const float distance = (std::sqrt(dx * dx + dy * dy) - 1) * std::min(radiusX, radiusY);
    return 1 - smoothStep(-edge, edge, distance);
}

void mix(cv::Vec3f& color, const cv::Vec3f& paint, float amount) {
    color += (paint - color) * amount;
}

/// The skull's outline at one height; lengths are millimetres.
struct SkullRing {
    float y, halfWidth, frontDepth, backDepth;

    SkullRing(const FaceLook& look, float latitude) : y(look.halfHeight * std::sin(latitude)) {
        const float below = smoothStep(0.0F, 1.0F, -std::sin(latitude));
        // A skull is boxier than an ellipsoid: its sides stay upright for longer.
        const float ring = std::pow(std::max(0.0F, std::cos(latitude)), 0.8F);
        halfWidth = look.halfWidth * ring * (1 - look.jaw * below * (1 - 0.3F * ring));
        frontDepth = look.halfDepth * ring;
        // Below the back of the skull comes the neck.
        backDepth = frontDepth * (1 - 0.62F * smoothStep(0.0F, 0.75F, -std::sin(latitude)));
    }
    cv::Vec3f at(float sine, float cosine) const {
        return {halfWidth * sine, y, (cosine > 0 ? frontDepth : backDepth) * cosine};
    }
};

/// How far the features stand out of the skull towards the front, in millimetres.
float featureRelief(const FaceLook& look, float x, float y) {
    const float side = std::abs(x);
    const float slope = smoothStep(24, -34, y) * smoothStep(-48, -36, y);
    const float noseWidth = 6 + (look.noseWidth - 6) * smoothStep(5, -34, y);
    float relief = 26 * slope * std::exp(-(x * x) / (noseWidth * noseWidth));
    relief -= 9 * blob(side, y, look.eyeDistance, 8, 17, 12);
    relief += 5 * blob(side, y, 22, 27, 26, 9);
    relief += 5 * blob(x, y, 0, -60, 24, 10);
    relief -= 4 * blob(x, y, 0, -74, 26, 6);
    relief += 9 * blob(x, y, 0, -96, 22, 16);
    return relief;
}

void paintEye(const FaceLook& look, float x, float y, cv::Vec3f& color) {
    const float side = std::abs(x) - look.eyeDistance;
    const float height = y - 8;
    const float opening = disc(side, height, 0, 0, 14, 6, 1.0F);
    mix(color, {205, 212, 216}, opening * 0.85F);
    mix(color, look.iris, opening * disc(side, height, 0, 0.5F, 6.2F, 6.2F, 0.8F));
    mix(color, {15, 12, 12}, opening * disc(side, height, 0, 0.5F, 3.2F, 3.2F, 0.6F));
    // Lid line and lashes along the upper edge.
    const float lid = height - 6.5F * std::sqrt(std::max(0.0F, 1 - side * side / 230));
    mix(color, {25, 25, 30}, std::exp(-lid * lid / 3.5F) * smoothStep(16, 12, std::abs(side)));
    const float brow = height - 18 + 0.012F * (side - 2) * (side - 2);
    mix(color, look.hair * 0.6F,
        0.9F * std::exp(-brow * brow / (look.browWeight * look.browWeight)) *
            smoothStep(23, 18, std::abs(side)));
}

void paintNoseAndMouth(const FaceLook& look, float x, float y, cv::Vec3f& color) {
    const float side = std::abs(x);
    color *= 1 - 0.16F * blob(side, y, look.noseWidth, -16, 6, 18);
    color *= 1 + 0.10F * blob(x, y, 0, -12, 6, 26);
    color *= 1 - 0.65F * blob(side, y, 8, -38, 5, 3);
    color *= 1 - 0.25F * blob(x, y, 0, -43, 16, 5);
    color *= 1 - 0.15F * blob(side, y, look.mouthWidth + 4, -48, 5, 14);
    const float upper = disc(x, y, 0, -60, look.mouthWidth, 5.5F, 1.5F);
    const float lower = disc(x, y, 0, -67, look.mouthWidth * 0.8F, 6.0F, 1.5F);
    mix(color, look.lips, 0.85F * std::max(upper * 0.95F, lower * 0.75F));
    mix(color, {25, 20, 45}, 0.9F * disc(x, y, 0, -63.5F, look.mouthWidth * 0.96F, 1.6F, 1.0F));
    color *= 1 - 0.22F * blob(x, y, 0, -79, 18, 5);
}

/// Skin with everything that is painted on the front of a face, at millimetres from its middle.
cv::Vec3f frontColor(const FaceLook& look, float x, float y) {
    cv::Vec3f color = look.skin;
    const float side = std::abs(x);
    color *= 1 + 0.08F * blob(side, y, 38, -28, 18, 18) + 0.06F * blob(x, y, 0, 48, 45, 18);
    color *= 1 - 0.42F * blob(side, y, look.eyeDistance - 3, 10, 22, 13);
    const float stubble = look.beard * smoothStep(-30, -46, y + 0.012F * (50 - side)) *
                          (1 - blob(x, y, 0, -63, 20, 8));
    mix(color, look.hair * 0.8F, stubble * 0.75F);
    paintNoseAndMouth(look, x, y, color);
    paintEye(look, x, y, color);
    return color;
}

/// How much of the surface is hair, 0 to 1.
float hairAt(const FaceLook& look, float longitude, const cv::Vec3f& p) {
    const float around = std::abs(longitude);
    const float front = look.hairline - 10 * std::cos(p[0] / 16.0F);
    const float temple = smoothStep(0.95F, 1.25F, around), nape = smoothStep(1.75F, 2.1F, around);
    const float limit = front + (look.hairLength - front) * temple - 45 * nape;
    return smoothStep(limit - 3, limit + 3, p[1]);
}

cv::Mat paint(const FaceLook& look) {
    const cv::Size size(textureWidth, textureHeight);
    const double mmAcross = 2 * std::numbers::pi * look.halfWidth / textureWidth;
    const double mmDown = std::numbers::pi * look.halfHeight / textureHeight;
    const auto grain = [&](cv::Size2d cell, std::uint64_t salt) {
        return smoothNoise(size, {cell.width / mmAcross, cell.height / mmDown}, look.seed + salt);
    };
    const cv::Mat coarse = grain(look.coarseGrain, 1), fine = grain(look.fineGrain, 2);
    const cv::Mat strands = grain({3, 40}, 3);
    cv::Mat texture(size, CV_8UC4);
    for (int row = 0; row < size.height; ++row) {
        const float latitude = pi * (0.5F - (static_cast<float>(row) + 0.5F) / textureHeight);
        const SkullRing ring(look, latitude);
        for (int column = 0; column < size.width; ++column) {
            const float longitude =
                pi * (2 * (static_cast<float>(column) + 0.5F) / textureWidth - 1);
            const cv::Vec3f p = ring.at(std::sin(longitude), std::cos(longitude));
            const float hair = hairAt(look, longitude, p);
            const bool front = std::abs(longitude) < pi / 2 && hair < 1;
            cv::Vec3f color = front ? frontColor(look, p[0], p[1]) : look.skin;
            color *= 1 + look.coarseStrength * coarse.at<float>(row, column) +
                     look.fineStrength * fine.at<float>(row, column);
            mix(color, look.hair * (1 + 0.45F * strands.at<float>(row, column)), hair);
            // Skin reflects near infrared well, hair less.
            texture.at<cv::Vec4b>(row, column) = {
                cv::saturate_cast<uchar>(color[0]), cv::saturate_cast<uchar>(color[1]),
                cv::saturate_cast<uchar>(color[2]),
                cv::saturate_cast<uchar>(80 + 60 * (1 - hair) + 0.25F * color[1])};
        }
    }
    return texture;
}

} // namespace

std::vector<Surface> makeHead(const FaceLook& look) {
    Surface head;
    head.columns = gridColumns;
    head.rows = gridRows;
    head.texture = paint(look);
    head.points.reserve(static_cast<std::size_t>(gridColumns) * gridRows);
    for (int row = 0; row < gridRows; ++row) {
        const float latitude = pi * (0.5F - static_cast<float>(row) / (gridRows - 1));
        const SkullRing ring(look, latitude);
        for (int column = 0; column < gridColumns; ++column) {
            const float longitude = pi * (2 * static_cast<float>(column) / (gridColumns - 1) - 1);
            cv::Vec3f p = ring.at(std::sin(longitude), std::cos(longitude));
            const float front = smoothStep(0.15F, 0.5F, std::cos(longitude) * std::cos(latitude));
            p[2] += front * featureRelief(look, p[0], p[1]);
            const float hair = hairAt(look, longitude, p);
            p *= 1 + 0.06F * hair;
            head.points.push_back(p * 0.001F);
        }
    }
    std::vector<Surface> parts{std::move(head)};
    const cv::Mat skin = cloth(look.skin * 0.88F, 165, {40, 60}, look.seed + 4);
    for (const float side : {-1.0F, 1.0F})
        parts.push_back(ball({side * look.halfWidth * 0.00098F, 0.004F, -0.008F},
                             {0.008F, 0.031F, 0.019F}, skin));
    return parts;
}

} // namespace virtual_kinect::room
