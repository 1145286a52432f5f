#include "awareness/occupancy_grid.h"

#include <cstddef>
#include <cstring>

namespace {

constexpr int occupiedPixels = 4;

/// Marks the occupied cells of one grid row, a byte a cell. `columns` is room for four bytes a
/// cell. Plain loops that the compiler turns into vector code for whatever instruction set the
/// caller is compiled for; nothing here may be an inline function of a library, since the linker
/// keeps one copy of those for all callers.
[[gnu::always_inline]] inline void markRow(const float* depth_mm, std::size_t stride,
                                           std::size_t cells, unsigned char* columns,
                                           unsigned char* occupied) {
    const float* const rows[cellPixels] = {depth_mm, depth_mm + stride, depth_mm + 2 * stride,
                                           depth_mm + 3 * stride};
    for (std::size_t x = 0; x < cells * cellPixels; ++x) {
        std::uint32_t inBand = 0;
        for (const float* row : rows) {
            std::uint32_t value = 0;
            __builtin_memcpy(&value, row + x, sizeof value);
            constexpr std::uint32_t nearest = std::bit_cast<std::uint32_t>(nearestBody_mm);
            inBand += value - nearest <= farthestBodyStep ? 1U : 0U;
        }
        columns[x] = static_cast<unsigned char>(inBand);
    }
    for (std::size_t cell = 0; cell < cells; ++cell) {
        std::uint32_t four = 0;
        __builtin_memcpy(&four, columns + cell * cellPixels, sizeof four);
        // The product's highest byte is the sum of the four counts.
        occupied[cell] = (four * 0x01010101U) >> 24 >= occupiedPixels ? 1 : 0;
    }
}

using MarkRow = void (*)(const float*, std::size_t, std::size_t, unsigned char*, unsigned char*);

void markRowPortable(const float* depth_mm, std::size_t stride, std::size_t cells,
                     unsigned char* columns, unsigned char* occupied) {
    markRow(depth_mm, stride, cells, columns, occupied);
}

#ifdef __x86_64__
[[gnu::target("avx2")]] void markRowAvx2(const float* depth_mm, std::size_t stride,
                                         std::size_t cells, unsigned char* columns,
                                         unsigned char* occupied) {
    markRow(depth_mm, stride, cells, columns, occupied);
}
#endif

MarkRow fastestMarkRow() {
#ifdef __x86_64__
    if (__builtin_cpu_supports("avx2"))
        return markRowAvx2;
#endif
    return markRowPortable;
}

/// Eight bytes of 0 or 1 as the eight lowest bits, the first byte lowest.
std::uint64_t packEight(const unsigned char* bytes) {
    static_assert(std::endian::native == std::endian::little);
    std::uint64_t eight = 0;
    std::memcpy(&eight, bytes, sizeof eight);
    return (eight * 0x0102040810204080U) >> 56;
}

} // namespace

OccupancyGrid::OccupancyGrid(const float* depth_mm, int width, int height)
    : cellsWide(width / cellPixels), cellsHigh(height / cellPixels),
      wordsPerRow((static_cast<std::size_t>(cellsWide) + 63) / 64),
      bits(wordsPerRow * static_cast<std::size_t>(cellsHigh)) {
    static const MarkRow markRowOf = fastestMarkRow();
    const std::size_t cells = static_cast<std::size_t>(cellsWide);
    const std::size_t stride = static_cast<std::size_t>(width);
    std::vector<unsigned char> columns(cells * cellPixels);
    std::vector<unsigned char> occupied(wordsPerRow * 64); // the bytes past the width stay zero
    for (int y = 0; y < cellsHigh; ++y) {
        const std::size_t top = static_cast<std::size_t>(y) * cellPixels;
        markRowOf(depth_mm + top * stride, stride, cells, columns.data(), occupied.data());
        std::uint64_t* words = bits.data() + static_cast<std::size_t>(y) * wordsPerRow;
        for (std::size_t byte = 0; byte < occupied.size(); byte += 8)
            words[byte / 64] |= packEight(occupied.data() + byte) << byte % 64;
    }
}
