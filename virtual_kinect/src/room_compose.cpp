#include "room_compose.h"

#include "room_optics.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace virtual_kinect::room {
namespace {

constexpr int weightBits = 7, weightOne = 1 << weightBits;

/// For each picture pixel of a run: the sprite pixel before it and the weight of the next one.
struct Sampling {
    int first = 0; ///< picture pixel of the first entry
    std::vector<int> before;
    std::vector<int> weight; ///< 0 to weightOne

    Sampling(double origin, double spriteOrigin, double scale, int spriteSize, int pictureSize) {
        const double begin = origin - (spriteOrigin - 0.5) * scale;
        const double end = origin + (spriteSize - spriteOrigin - 0.5) * scale;
        first = std::max(0, cvCeil(begin));
        const int last = std::min(pictureSize, cvFloor(end));
        for (int i = first; i < last; ++i) {
            const double at = (i + 0.5 - origin) / scale + spriteOrigin - 0.5;
            const int low = std::clamp(cvFloor(at), 0, spriteSize - 2);
            before.push_back(low);
            weight.push_back(std::clamp(cvRound((at - low) * weightOne), 0, weightOne));
        }
    }
    int size() const { return static_cast<int>(before.size()); }
};

void resampleRow(const uchar* row, const Sampling& columns, uchar* out) {
    for (int i = 0; i < columns.size(); ++i) {
        const uchar* pixel = row + 4 * columns.before[static_cast<std::size_t>(i)];
        const int next = columns.weight[static_cast<std::size_t>(i)];
        for (int c = 0; c < 4; ++c)
            out[4 * i + c] = static_cast<uchar>(
                (pixel[c] * (weightOne - next) + pixel[c + 4] * next) >> weightBits);
    }
}

void blendRow(const uchar* above, const uchar* below, int weight, int pixels, uchar* picture) {
    const auto one = static_cast<std::uint16_t>(weightOne - weight);
    const auto other = static_cast<std::uint16_t>(weight);
    for (int i = 0; i < pixels; ++i) {
        std::array<std::uint16_t, 4> ink{};
        for (std::size_t c = 0; c < 4; ++c)
            ink[c] = static_cast<std::uint16_t>((above[c] * one + below[c] * other) >> weightBits);
        const auto open = static_cast<std::uint16_t>(256 - ink[3] - (ink[3] >> 7));
        for (std::size_t c = 0; c < 4; ++c)
            picture[c] = static_cast<uchar>(ink[c] + ((picture[c] * open) >> 8));
        above += 4;
        below += 4;
        picture += 4;
    }
}

} // namespace

void composeColor(const Sprite& sprite, const Placement& place, cv::Mat& color) {
    const Sampling columns(place.origin.x, sprite.origin.x, place.scale, sprite.color.cols,
                           color.cols);
    const Sampling rows(place.origin.y, sprite.origin.y, place.scale, sprite.color.rows,
                        color.rows);
    if (columns.size() == 0 || rows.size() == 0)
        return;
    const auto stride = static_cast<std::size_t>(columns.size()) * 4;
    std::array<std::vector<uchar>, 2> lines{std::vector<uchar>(stride), std::vector<uchar>(stride)};
    std::array<int, 2> held{-1, -1};
    // Rows are stretched once, when first needed: even ones in one buffer, odd ones in the other.
    const auto stretched = [&](int row) {
        const auto slot = static_cast<std::size_t>(row & 1);
        if (held[slot] != row) {
            resampleRow(sprite.color.ptr(row), columns, lines[slot].data());
            held[slot] = row;
        }
        return static_cast<const uchar*>(lines[slot].data());
    };
    for (int i = 0; i < rows.size(); ++i) {
        const int row = rows.before[static_cast<std::size_t>(i)];
        const uchar* above = stretched(row);
        const uchar* below = stretched(row + 1);
        blendRow(above, below, rows.weight[static_cast<std::size_t>(i)], columns.size(),
                 color.ptr(rows.first + i) + 4 * columns.first);
    }
}

NoiseTable::NoiseTable(std::uint64_t seed) : values(tableSize) {
    cv::RNG random(seed);
    random.fill(values, cv::RNG::NORMAL, 0.0, 1.0);
}

namespace {

/// Sprite pixel that each depth pixel along one axis shows; -1 outside the sprite.
std::vector<int> nearestPixels(double origin, double spriteOrigin, double scale, int spriteSize,
                               int depthSize, int colorSize) {
    std::vector<int> result(static_cast<std::size_t>(depthSize), -1);
    for (int i = 0; i < depthSize; ++i) {
        const double at = (i + 0.5) * colorSize / depthSize;
        const double pixel = std::floor((at - origin) / scale + spriteOrigin);
        if (pixel >= 0 && pixel < spriteSize)
            result[static_cast<std::size_t>(i)] = static_cast<int>(pixel);
    }
    return result;
}

/// Share of readings that get lost where a body ends: part of the light comes from behind it.
constexpr float lostAtEdges = 0.5F;  ///< in standard deviations: about 3 of 10
constexpr float lostAnywhere = 3.0F; ///< about 1 of 700

} // namespace

void composeDepth(const Sprite& sprite, const Placement& place, double distance_m,
                  const NoiseTable& noise, std::uint32_t salt, cv::Mat& depth, cv::Mat& infrared) {
    const std::vector<int> columns = nearestPixels(place.origin.x, sprite.origin.x, place.scale,
                                                   sprite.color.cols, depth.cols, colorWidth);
    const std::vector<int> rows = nearestPixels(place.origin.y, sprite.origin.y, place.scale,
                                                sprite.color.rows, depth.rows, colorHeight);
    const auto axis = static_cast<float>(distance_m);
    for (int y = 0; y < depth.rows; ++y) {
        const int row = rows[static_cast<std::size_t>(y)];
        if (row < 0)
            continue;
        const auto* cover = sprite.color.ptr<cv::Vec4b>(row);
        const auto* relief = sprite.relief.ptr<float>(row);
        const auto* reflectance = sprite.infrared.ptr<uchar>(row);
        const auto covered = [&](int x) {
            if (x < 0 || x >= depth.cols)
                return true;
            const int column = columns[static_cast<std::size_t>(x)];
            return column >= 0 && cover[column][3] > 127;
        };
        for (int x = 0; x < depth.cols; ++x) {
            if (!covered(x))
                continue;
            const int column = columns[static_cast<std::size_t>(x)];
            const auto index = static_cast<std::uint32_t>(y * depth.cols + x) + salt;
            const float deviation = noise.at(index);
            const float z = axis - relief[column];
            const bool edge = !covered(x - 1) || !covered(x + 1);
            const bool lost = deviation > (edge ? lostAtEdges : lostAnywhere);
            depth.at<float>(y, x) = lost ? 0 : z * 1000 + depthNoise_mm(z) * deviation;
            infrared.at<float>(y, x) =
                infraredReturn(reflectance[column], z) * (1 + 0.03F * noise.at(index + 7919));
        }
    }
}

} // namespace virtual_kinect::room
