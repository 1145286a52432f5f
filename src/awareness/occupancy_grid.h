#pragma once

#include <bit>
#include <cstdint>
#include <vector>

/// The band of depth in which a standing person is looked for: the room's working distance, in
/// millimetres, both ends inclusive.
inline constexpr float nearestBody_mm = 1600.0F;
inline constexpr float farthestBody_mm = 3800.0F;

/// Side of a grid cell in depth pixels.
inline constexpr int cellPixels = 4;

/// How many floats lie between the band's near end and this depth in millimetres. Positive floats
/// are ordered as their bit patterns are, and negative values, infinities and NaN all lie above
/// them, so that one unsigned comparison tells for every value whether it is in the band.
inline std::uint32_t bodyDepthStep(float depth_mm) {
    return std::bit_cast<std::uint32_t>(depth_mm) - std::bit_cast<std::uint32_t>(nearestBody_mm);
}

/// The band's far end as such a number; it takes 24 bits.
inline constexpr std::uint32_t farthestBodyStep =
    std::bit_cast<std::uint32_t>(farthestBody_mm) - std::bit_cast<std::uint32_t>(nearestBody_mm);

/// Back from a step to millimetres.
inline float bodyDepthAt(std::uint32_t step) {
    return std::bit_cast<float>(step + std::bit_cast<std::uint32_t>(nearestBody_mm));
}

/// Which 4x4-pixel cells of a depth frame are occupied, one bit a cell. Trailing columns and rows
/// of the frame that do not fill a cell are ignored.
class OccupancyGrid {
public:
    /// A cell is occupied when at least 4 of its 16 pixels are body depths. `depth_mm` holds
    /// width x height millimetre values, row by row; width and height are at least 4.
    OccupancyGrid(const float* depth_mm, int width, int height);

    int width() const { return cellsWide; }
    int height() const { return cellsHigh; }

    /// The cells of row `y` from left to right, 64 to a word, the lowest bit first; bits past the
    /// width are zero.
    const std::uint64_t* row(int y) const {
        return bits.data() + static_cast<std::size_t>(y) * wordsPerRow;
    }
    std::size_t words() const { return wordsPerRow; }

private:
    int cellsWide;
    int cellsHigh;
    std::size_t wordsPerRow;
    std::vector<std::uint64_t> bits;
};
