#include "room_sprite.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>

namespace virtual_kinect::room {
namespace {

/// Sprites are drawn this much larger and then shrunk, which smooths their edges.
constexpr int oversampling = 2;
constexpr float farAway = -1000.0F;

/// A lamp at the ceiling a little to the right of the sensor, and light from everywhere.
constexpr float ambientLight = 0.50F, lampLight = 0.58F;
const cv::Vec3f lampDirection = cv::normalize(cv::Vec3f(0.22F, 0.42F, 0.88F));

cv::Vec3f normalAt(const std::vector<cv::Vec3f>& points, int columns, int rows, int column,
                   int row) {
    const auto at = [&](int c, int r) {
        return points[static_cast<std::size_t>(std::clamp(r, 0, rows - 1) * columns +
                                               std::clamp(c, 0, columns - 1))];
    };
    const cv::Vec3f across = at(column + 1, row) - at(column - 1, row);
    const cv::Vec3f down = at(column, row + 1) - at(column, row - 1);
    const cv::Vec3f normal = down.cross(across);
    const float length = std::sqrt(normal.dot(normal));
    return length > 1e-9F ? normal / length : cv::Vec3f(0, 1, 0);
}

struct Slope {
    float start, across, down;
    float at(float dx, float dy) const { return start + across * dx + down * dy; }
};

} // namespace

SpriteCanvas::SpriteCanvas(const SpriteFrame& frame, double yaw)
    : area(frame), scale(frame.pixelsPerMeter * oversampling),
      cosine(static_cast<float>(std::cos(yaw))), sine(static_cast<float>(std::sin(yaw))) {
    const int width = static_cast<int>(std::ceil((area.right - area.left) * area.pixelsPerMeter));
    const int height = static_cast<int>(std::ceil((area.top - area.bottom) * area.pixelsPerMeter));
    const cv::Size size(width * oversampling, height * oversampling);
    color = cv::Mat::zeros(size, CV_8UC4);
    infrared = cv::Mat::zeros(size, CV_8U);
    nearest = cv::Mat(size, CV_32F, cv::Scalar(farAway));
}

std::vector<SpriteCanvas::Corner> SpriteCanvas::project(const Surface& surface) const {
    std::vector<cv::Vec3f> turned;
    turned.reserve(surface.points.size());
    for (const cv::Vec3f& p : surface.points)
        turned.emplace_back(p[0] * cosine + p[2] * sine, p[1], p[2] * cosine - p[0] * sine);

    std::vector<Corner> corners;
    corners.reserve(turned.size());
    for (int row = 0; row < surface.rows; ++row) {
        for (int column = 0; column < surface.columns; ++column) {
            const cv::Vec3f& p = turned[corners.size()];
            const cv::Vec3f normal = normalAt(turned, surface.columns, surface.rows, column, row);
            const float lamp = std::max(0.0F, normal.dot(lampDirection));
            corners.push_back({static_cast<float>((p[0] - area.left) * scale),
                               static_cast<float>((area.top - p[1]) * scale), p[2],
                               static_cast<float>(column) / static_cast<float>(surface.columns - 1),
                               static_cast<float>(row) / static_cast<float>(surface.rows - 1),
                               ambientLight + lampLight * lamp});
        }
    }
    return corners;
}

void SpriteCanvas::draw(const Surface& surface) {
    const std::vector<Corner> corners = project(surface);
    const auto at = [&](int column, int row) -> const Corner& {
        return corners[static_cast<std::size_t>(row * surface.columns + column)];
    };
    for (int row = 0; row + 1 < surface.rows; ++row) {
        for (int column = 0; column + 1 < surface.columns; ++column) {
            fillTriangle(at(column, row), at(column + 1, row), at(column, row + 1),
                         surface.texture);
            fillTriangle(at(column + 1, row), at(column + 1, row + 1), at(column, row + 1),
                         surface.texture);
        }
    }
}

void SpriteCanvas::fillTriangle(const Corner& a, const Corner& b, const Corner& c,
                                const cv::Mat& texture) {
    const float turn = (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
    if (turn <= 1e-6F) // seen edge-on or from behind
        return;
    // A value that is linear over the triangle, as value at `a` plus slopes across and down.
    const auto across = [&](float Corner::*value) {
        return ((b.*value - a.*value) * (c.y - a.y) - (c.*value - a.*value) * (b.y - a.y)) / turn;
    };
    const auto down = [&](float Corner::*value) {
        return ((c.*value - a.*value) * (b.x - a.x) - (b.*value - a.*value) * (c.x - a.x)) / turn;
    };
    const auto steps = [&](float Corner::*value) {
        return Slope{a.*value, across(value), down(value)};
    };
    const Slope z = steps(&Corner::z), u = steps(&Corner::u), v = steps(&Corner::v),
                light = steps(&Corner::light);

    const int top = std::max(0, cvCeil(std::min({a.y, b.y, c.y}) - 0.5F));
    const int bottom = std::min(color.rows - 1, cvFloor(std::max({a.y, b.y, c.y}) - 0.5F));
    for (int y = top; y <= bottom; ++y) {
        const float middle = static_cast<float>(y) + 0.5F;
        float left = static_cast<float>(color.cols), right = 0;
        for (const auto& [from, to] : {std::pair(&a, &b), std::pair(&b, &c), std::pair(&c, &a)}) {
            if ((from->y <= middle) == (to->y <= middle))
                continue;
            const float x = from->x + (to->x - from->x) * (middle - from->y) / (to->y - from->y);
            left = std::min(left, x);
            right = std::max(right, x);
        }
        // Half a hundredth of a pixel more, so that no gap opens between neighbours.
        const int first = std::max(0, cvCeil(left - 0.505F));
        const int last = std::min(color.cols - 1, cvFloor(right - 0.495F));
        auto* nearestRow = nearest.ptr<float>(y);
        for (int x = first; x <= last; ++x) {
            const float dx = static_cast<float>(x) + 0.5F - a.x, dy = middle - a.y;
            const float depth = z.at(dx, dy);
            if (depth <= nearestRow[x])
                continue;
            nearestRow[x] = depth;
            paintPixel(y, x, u.at(dx, dy), v.at(dx, dy), light.at(dx, dy), texture);
        }
    }
}

void SpriteCanvas::paintPixel(int y, int x, float u, float v, float light, const cv::Mat& texture) {
    const int row = static_cast<int>(v * static_cast<float>(texture.rows));
    const int column = static_cast<int>(u * static_cast<float>(texture.cols));
    const auto& texel = texture.at<cv::Vec4b>(std::clamp(row, 0, texture.rows - 1),
                                              std::clamp(column, 0, texture.cols - 1));
    const auto lit = [light](uchar value) {
        return static_cast<uchar>(std::min(255.0F, static_cast<float>(value) * light));
    };
    color.at<cv::Vec4b>(y, x) = {lit(texel[0]), lit(texel[1]), lit(texel[2]), 255};
    infrared.at<uchar>(y, x) = lit(texel[3]);
}

Sprite SpriteCanvas::finish() const {
    // Only the part that is covered, on whole pixels of the sprite.
    cv::Rect used = cv::boundingRect(nearest > farAway);
    const cv::Point corner(used.x / oversampling, used.y / oversampling);
    const cv::Size size((used.br().x - 1) / oversampling + 1 - corner.x,
                        (used.br().y - 1) / oversampling + 1 - corner.y);
    used = {corner * oversampling, size * oversampling};

    Sprite sprite;
    cv::resize(color(used), sprite.color, size, 0, 0, cv::INTER_AREA);
    cv::resize(infrared(used), sprite.infrared, size, 0, 0, cv::INTER_AREA);
    sprite.relief.create(size, CV_32F);
    for (int y = 0; y < size.height; ++y) {
        const auto* even = nearest.ptr<float>(used.y + y * oversampling) + used.x;
        const auto* odd = nearest.ptr<float>(used.y + y * oversampling + 1) + used.x;
        for (int x = 0; x < size.width; ++x) {
            const int at = x * oversampling;
            const float z = std::max({even[at], even[at + 1], odd[at], odd[at + 1]});
            sprite.relief.at<float>(y, x) = z > farAway ? z : 0.0F;
        }
    }
    sprite.pixelsPerMeter = area.pixelsPerMeter;
    sprite.origin = {-area.left * area.pixelsPerMeter - corner.x,
                     area.top * area.pixelsPerMeter - corner.y};
    return sprite;
}

Sprite mirrored(const Sprite& sprite) {
    Sprite result;
    cv::flip(sprite.color, result.color, 1);
    cv::flip(sprite.infrared, result.infrared, 1);
    cv::flip(sprite.relief, result.relief, 1);
    result.pixelsPerMeter = sprite.pixelsPerMeter;
    result.origin = {sprite.color.cols - sprite.origin.x, sprite.origin.y};
    return result;
}

cv::Mat smoothNoise(cv::Size size, cv::Size2d cell, std::uint64_t seed) {
    cv::RNG random(seed);
    cv::Mat coarse(std::max(2, cvRound(size.height / cell.height)),
                   std::max(2, cvRound(size.width / cell.width)), CV_32F);
    random.fill(coarse, cv::RNG::UNIFORM, -1.0, 1.0);
    cv::Mat fine;
    cv::resize(coarse, fine, size, 0, 0, cv::INTER_CUBIC);
    return fine;
}

} // namespace virtual_kinect::room
