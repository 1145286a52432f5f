#include "room_body.h"

#include "room_shapes.h"

#include <opencv2/imgproc.hpp>

#include <cmath>
#include <numbers>

namespace virtual_kinect::room {
namespace {

constexpr float pi = std::numbers::pi_v<float>;
/// Reflectance from which a surface counts as retro-reflective.
constexpr float reflectorShade = 255;

cv::Mat shirtCloth(const BodyLook& look) {
    cv::Mat texture = cloth(look.shirt, 120, {24, 60}, look.seed);
    const auto onLine = [](int at, int length, int cells) {
        return cells > 0 && at * cells * 4 / length % 4 == 0;
    };
    for (int y = 0; y < texture.rows; ++y) {
        for (int x = 0; x < texture.cols; ++x) {
            const int lines = (onLine(x, texture.cols, look.patternCells.width) ? 1 : 0) +
                              (onLine(y, texture.rows, look.patternCells.height) ? 1 : 0);
            auto& pixel = texture.at<cv::Vec4b>(y, x);
            for (int i = 0; i < 3; ++i)
                pixel[i] = cv::saturate_cast<uchar>(
                    static_cast<float>(pixel[i]) * (1 - 0.4F * static_cast<float>(lines)) +
                    look.pattern[i] * 0.4F * static_cast<float>(lines));
        }
    }
    return texture;
}

/// Two straight pieces joined at a knee or an elbow, swung about the upper end.
struct Limb {
    cv::Vec3f top;
    float upper, lower;        ///< lengths
    float swing, bend;         ///< radians: forward of the upper piece, backward of the lower one
    float spread;              ///< outward distance at the end
    float thick, middle, thin; ///< half widths

    cv::Vec3f joint() const {
        return top + cv::Vec3f(spread / 2, -upper * std::cos(swing), upper * std::sin(swing));
    }
    cv::Vec3f end() const {
        const float angle = swing - bend;
        return joint() + cv::Vec3f(spread / 2, -lower * std::cos(angle), lower * std::sin(angle));
    }
    std::vector<Ring> rings() const {
        // A round end: shoulder or hip.
        std::vector<Ring> result;
        for (const float rise : {0.95F, 0.8F, 0.5F, 0.2F}) {
            const float size = thick * std::sqrt(1 - rise * rise);
            result.push_back({top + cv::Vec3f(0, thick * rise * 0.8F, 0), size, size * 1.05F});
        }
        const auto piece = [&](const cv::Vec3f& from, const cv::Vec3f& to, float a, float b) {
            for (int i = 0; i < 6; ++i) {
                const float t = static_cast<float>(i) / 5;
                const float size = std::lerp(a, b, t);
                result.push_back({from + (to - from) * t, size, size * 1.05F});
            }
        };
        piece(top, joint(), thick, middle);
        piece(joint(), end(), middle, thin);
        return result;
    }
};

Surface trunk(const BodyLook& look, const cv::Mat& texture) {
    // Height as a share of the whole, half width and half depth in metres, from the collar down.
    constexpr float shape[][3] = {{0.855F, 0.060F, 0.060F}, {0.840F, 0.105F, 0.078F},
                                  {0.822F, 0.158F, 0.092F}, {0.805F, 0.192F, 0.102F},
                                  {0.770F, 0.205F, 0.115F}, {0.720F, 0.195F, 0.125F},
                                  {0.660F, 0.178F, 0.122F}, {0.600F, 0.168F, 0.118F},
                                  {0.540F, 0.182F, 0.128F}, {0.495F, 0.196F, 0.138F}};
    std::vector<Ring> rings;
    for (const auto& [share, width, depth] : shape)
        rings.push_back({{0, share * static_cast<float>(look.height_m), 0},
                         width * static_cast<float>(look.breadth),
                         depth});
    return tube(rings, texture);
}

} // namespace

BodyLook ownerBody() {
    BodyLook look;
    look.height_m = 1.78;
    look.skin = {122, 150, 190};
    look.shirt = {120, 70, 40};
    look.pattern = {170, 130, 95};
    look.patternCells = {14, 12};
    look.trousers = {70, 62, 58};
    look.shoes = {30, 34, 44};
    look.reflectiveBands = true;
    look.seed = 101;
    return look;
}

BodyLook strangerBody() {
    BodyLook look;
    look.height_m = 1.71;
    look.breadth = 1.06;
    look.skin = {112, 142, 178};
    look.shirt = {52, 92, 150};
    look.pattern = {70, 130, 190};
    look.patternCells = {0, 9};
    look.trousers = {62, 78, 88};
    look.shoes = {50, 50, 55};
    look.seed = 131;
    return look;
}

Wardrobe::Wardrobe(const BodyLook& look)
    : skin(cloth(look.skin, 165, {30, 30}, look.seed + 10)), shirt(shirtCloth(look)),
      sleeve(cloth(look.shirt, 120, {24, 40}, look.seed + 40)),
      trousers(cloth(look.trousers, 90, {20, 50}, look.seed + 20)),
      shoes(cloth(look.shoes, 60, {20, 20}, look.seed + 30)) {
    if (look.reflectiveBands) {
        const int band = sleeve.rows * 2 / 5;
        sleeve.rowRange(band, band + sleeve.rows / 14)
            .setTo(cv::Scalar(205, 210, 210, reflectorShade));
    }
}

std::vector<Surface> makeBody(const BodyLook& look, const Wardrobe& clothes, double stride) {
    const auto height = static_cast<float>(look.height_m);
    const auto breadth = static_cast<float>(look.breadth);
    const bool walking = stride >= 0;
    const float phase = walking ? 2 * pi * static_cast<float>(stride) : 0;

    std::vector<Surface> parts{trunk(look, clothes.shirt)};
    parts.push_back(tube({{{0, 0.905F * height, 0.005F}, 0.052F, 0.055F},
                          {{0, 0.86F * height, -0.005F}, 0.056F, 0.058F},
                          {{0, 0.83F * height, -0.01F}, 0.075F, 0.062F}},
                         clothes.skin));
    for (const float side : {-1.0F, 1.0F}) {
        const float swing = walking ? 0.42F * side * std::sin(phase) : 0.0F;
        const float lifted = walking ? std::max(0.0F, side * std::cos(phase)) : 0.0F;
        const Limb leg{{side * 0.092F * breadth, 0.515F * height, 0},
                       0.245F * height,
                       0.235F * height,
                       swing,
                       0.06F + 0.75F * lifted,
                       side * 0.02F,
                       0.090F,
                       0.064F,
                       0.047F};
        parts.push_back(tube(leg.rings(), clothes.trousers));
        parts.push_back(ball(leg.end() + cv::Vec3f(0, -0.025F, 0.055F), {0.048F, 0.045F, 0.13F},
                             clothes.shoes));
        const Limb arm{{side * 0.198F * breadth, 0.79F * height, 0},
                       0.165F * height,
                       0.155F * height,
                       -0.8F * swing + 0.03F,
                       walking ? -0.35F : -0.14F,
                       side * 0.055F,
                       0.056F,
                       0.044F,
                       0.034F};
        parts.push_back(tube(arm.rings(), clothes.sleeve));
        parts.push_back(
            ball(arm.end() + cv::Vec3f(0, -0.05F, 0.01F), {0.032F, 0.085F, 0.045F}, clothes.skin));
    }
    return parts;
}

} // namespace virtual_kinect::room
