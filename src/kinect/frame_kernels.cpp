// Compiled once for each instruction set, with LUMENO_KERNELS naming the namespace. Nothing in here
// may instantiate an inline function of a library: the linker would keep one copy of it for the
// whole program, and perhaps the one that an older processor cannot run.

#include "kinect/frame_kernels.h"
#include "kinect/sensor_facts.h"

namespace LUMENO_KERNELS {
namespace {

constexpr std::size_t blockPixels = 64;
constexpr std::size_t pixelsAhead = 1024;
constexpr float largestFloat = __FLT_MAX__;
constexpr float near_mm = DepthPalette::near_mm;
constexpr float far_mm = DepthPalette::far_mm;

using Bytes16 = unsigned char __attribute__((vector_size(16)));

/// Asks for the memory of the block that comes 4 KB later. Frames come from another processor's
/// cache or from memory, and images go there: without this a colour frame takes nearly twice as
/// long.
inline void prefetchLaterBlock(const unsigned char* source, unsigned char* rgb) {
    constexpr std::size_t cacheLine = 64;
    for (std::size_t at = 0; at < blockPixels * 4; at += cacheLine)
        __builtin_prefetch(source + pixelsAhead * 4 + at);
    for (std::size_t at = 0; at < blockPixels * 3; at += cacheLine)
        __builtin_prefetch(rgb + pixelsAhead * 3 + at, 1);
}

/// Calls `convert(source, rgb)` for whole blocks of pixels, the last of them through padded copies.
template <typename Convert>
void forEachBlock(const unsigned char* source, unsigned char* rgb, std::size_t pixels,
                  Convert convert) {
    std::size_t done = 0;
    for (; done + pixelsAhead + blockPixels <= pixels; done += blockPixels) {
        prefetchLaterBlock(source + done * 4, rgb + done * 3);
        convert(source + done * 4, rgb + done * 3);
    }
    for (; done + blockPixels <= pixels; done += blockPixels)
        convert(source + done * 4, rgb + done * 3);
    if (done == pixels)
        return;
    unsigned char paddedSource[blockPixels * 4] = {};
    unsigned char paddedRgb[blockPixels * 3];
    __builtin_memcpy(paddedSource, source + done * 4, (pixels - done) * 4);
    convert(paddedSource, paddedRgb);
    __builtin_memcpy(rgb + done * 3, paddedRgb, (pixels - done) * 3);
}

/// 16 pixels, 64 bytes, to 48 bytes.
inline void pack16(const unsigned char* source, unsigned char* rgb, bool rgbx) {
    Bytes16 in[4];
    __builtin_memcpy(in, source, sizeof in);
    Bytes16 packed[4]; // twelve bytes each, then four that do not matter
    for (int i = 0; i < 4; ++i) {
        packed[i] = rgbx ? __builtin_shufflevector(in[i], in[i], 0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13,
                                                   14, 3, 7, 11, 15)
                         : __builtin_shufflevector(in[i], in[i], 2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13,
                                                   12, 3, 7, 11, 15);
    }
    const Bytes16 out[3] = {__builtin_shufflevector(packed[0], packed[1], 0, 1, 2, 3, 4, 5, 6, 7, 8,
                                                    9, 10, 11, 16, 17, 18, 19),
                            __builtin_shufflevector(packed[1], packed[2], 4, 5, 6, 7, 8, 9, 10, 11,
                                                    16, 17, 18, 19, 20, 21, 22, 23),
                            __builtin_shufflevector(packed[2], packed[3], 8, 9, 10, 11, 16, 17, 18,
                                                    19, 20, 21, 22, 23, 24, 25, 26, 27)};
    __builtin_memcpy(rgb, out, sizeof out);
}

void packColor(const unsigned char* source, unsigned char* rgb, std::size_t pixels, bool rgbx) {
    const auto packBlock = [](bool isRgbx) {
        return [isRgbx](const unsigned char* in, unsigned char* out) {
            for (std::size_t i = 0; i < blockPixels; i += 16)
                pack16(in + i * 4, out + i * 3, isRgbx);
        };
    };
    if (rgbx)
        forEachBlock(source, rgb, pixels, packBlock(true));
    else
        forEachBlock(source, rgb, pixels, packBlock(false));
}

InfraredRange infraredRange(const unsigned char* floats, std::size_t pixels) {
    // Positive floats are ordered as their bit patterns are, and negative ones are negative
    // numbers.
    constexpr std::int32_t infinity = 0x7f800000;
    std::int32_t smallest = infinity;
    std::int32_t largest = 0;
    for (std::size_t i = 0; i < pixels; ++i) {
        std::int32_t bits = 0;
        __builtin_memcpy(&bits, floats + i * 4, 4);
        const std::int32_t low = bits > 0 ? bits : infinity;
        const std::int32_t high = bits < infinity ? bits : 0;
        smallest = low < smallest ? low : smallest;
        largest = high > largest ? high : largest;
    }
    InfraredRange range;
    range.found = largest > 0;
    if (range.found) {
        __builtin_memcpy(&range.minimum, &smallest, 4);
        __builtin_memcpy(&range.maximum, &largest, 4);
    }
    return range;
}

/// 16 grey values to 48 bytes.
inline void spreadGrey16(const unsigned char* grey, unsigned char* rgb) {
    Bytes16 in;
    __builtin_memcpy(&in, grey, sizeof in);
    const Bytes16 out[3] = {
        __builtin_shufflevector(in, in, 0, 0, 0, 1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4, 5),
        __builtin_shufflevector(in, in, 5, 5, 6, 6, 6, 7, 7, 7, 8, 8, 8, 9, 9, 9, 10, 10),
        __builtin_shufflevector(in, in, 10, 11, 11, 11, 12, 12, 12, 13, 13, 13, 14, 14, 14, 15, 15,
                                15)};
    __builtin_memcpy(rgb, out, sizeof out);
}

void infraredPixels(const unsigned char* floats, unsigned char* rgb, std::size_t pixels,
                    const InfraredScale& scale) {
    forEachBlock(floats, rgb, pixels, [s = scale](const unsigned char* in, unsigned char* out) {
        const double saturated = s.range * s.scale;
        unsigned char grey[blockPixels];
        for (std::size_t i = 0; i < blockPixels; ++i) {
            float value = 0.0F;
            __builtin_memcpy(&value, in + i * 4, 4);
            const bool valid = (value > 0.0F) & (value <= largestFloat);
            const double raised = (static_cast<double>(value) - s.minimum) * s.scale;
            const double level = static_cast<double>(value) > s.maximum ? saturated : raised;
            const double inRange = valid ? level : 0.0;
            const int truncated = static_cast<int>(inRange);
            const int low = truncated < 0 ? 0 : truncated;
            grey[i] = static_cast<unsigned char>(low > 255 ? 255 : low);
        }
        for (std::size_t i = 0; i < blockPixels; i += 16)
            spreadGrey16(grey + i, out + i * 3);
    });
}

bool depthPixels(const unsigned char* floats, unsigned char* rgb, std::size_t pixels,
                 const DepthPalette& palette) {
    int nearest = -1; // no index above it but noReading
    forEachBlock(floats, rgb, pixels, [&](const unsigned char* in, unsigned char* out) {
        int indices[blockPixels];
        int nearestInBlock = -1;
        for (std::size_t i = 0; i < blockPixels; ++i) {
            float depth = 0.0F;
            __builtin_memcpy(&depth, in + i * 4, 4);
            const bool valid =
                (depth >= sensor::nearestDepth_mm) & (depth <= sensor::farthestDepth_mm);
            // A NaN fails both comparisons of the clamp's first step and becomes the far end.
            const float below = depth < far_mm ? depth : far_mm;
            const float clamped = below > near_mm ? below : near_mm;
            const float nearness = 255.0F - ((clamped - near_mm) / (far_mm - near_mm)) * 255.0F;
            const int truncated = static_cast<int>(nearness);
            indices[i] = valid ? truncated : DepthPalette::noReading;
            const int seen = valid ? truncated : -1;
            nearestInBlock = seen > nearestInBlock ? seen : nearestInBlock;
        }
        nearest = nearestInBlock > nearest ? nearestInBlock : nearest;
        // Each store writes one byte past its pixel, which the next one overwrites.
        for (std::size_t i = 0; i + 1 < blockPixels; ++i)
            __builtin_memcpy(out + i * 3, palette.colors[indices[i]], 4);
        constexpr std::size_t last = blockPixels - 1;
        __builtin_memcpy(out + last * 3, palette.colors[indices[last]], 3);
    });
    return nearest >= 0;
}

} // namespace

extern const FrameKernels kernels;
const FrameKernels kernels = {LUMENO_KERNELS_NAME, packColor, infraredRange, infraredPixels,
                              depthPixels};

} // namespace LUMENO_KERNELS
