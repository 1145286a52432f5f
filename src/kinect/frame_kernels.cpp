// Compiled once for each instruction set, with LUMENO_KERNELS naming the namespace. Nothing in here
// may instantiate an inline function of a library: the linker would keep one copy of it for the
// whole program, and perhaps the one that an older processor cannot run.

#include "kinect/frame_kernels.h"
#include "frames/sensor_facts.h"

#if defined(__AVX512VBMI__)
#include <immintrin.h> // its functions have no copy of their own to keep
#endif

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

/// A block of pixels, 256 bytes, to 192 bytes. Each store writes four bytes past its four pixels,
/// which the next one overwrites: that takes half the time of putting full registers together.
inline void packBlock(const unsigned char* source, unsigned char* rgb, bool rgbx) {
    for (std::size_t i = 0; i < blockPixels; i += 4) {
        Bytes16 in;
        __builtin_memcpy(&in, source + i * 4, sizeof in);
        const Bytes16 packed = rgbx ? __builtin_shufflevector(in, in, 0, 1, 2, 4, 5, 6, 8, 9, 10,
                                                              12, 13, 14, 3, 7, 11, 15)
                                    : __builtin_shufflevector(in, in, 2, 1, 0, 6, 5, 4, 10, 9, 8,
                                                              14, 13, 12, 3, 7, 11, 15);
        if (i + 4 < blockPixels)
            __builtin_memcpy(rgb + i * 3, &packed, sizeof packed);
        else
            __builtin_memcpy(rgb + i * 3, &packed, 12);
    }
}

void packColor(const unsigned char* source, unsigned char* rgb, std::size_t pixels, bool rgbx) {
    const auto pack = [](bool isRgbx) {
        return
            [isRgbx](const unsigned char* in, unsigned char* out) { packBlock(in, out, isRgbx); };
    };
    if (rgbx)
        forEachBlock(source, rgb, pixels, pack(true));
    else
        forEachBlock(source, rgb, pixels, pack(false));
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

/// 16 grey values to 48 bytes. One store for each register: copied as one piece, they would go over
/// the stack and be read back in other sizes than they were written in, which the processor is slow
/// at.
inline void spreadGrey16(const unsigned char* grey, unsigned char* rgb) {
    Bytes16 in;
    __builtin_memcpy(&in, grey, sizeof in);
    const Bytes16 first =
        __builtin_shufflevector(in, in, 0, 0, 0, 1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4, 5);
    const Bytes16 second =
        __builtin_shufflevector(in, in, 5, 5, 6, 6, 6, 7, 7, 7, 8, 8, 8, 9, 9, 9, 10, 10);
    const Bytes16 third = __builtin_shufflevector(in, in, 10, 11, 11, 11, 12, 12, 12, 13, 13, 13,
                                                  14, 14, 14, 15, 15, 15);
    __builtin_memcpy(rgb, &first, sizeof first);
    __builtin_memcpy(rgb + 16, &second, sizeof second);
    __builtin_memcpy(rgb + 32, &third, sizeof third);
}

void infraredPixels(const unsigned char* floats, unsigned char* rgb, std::size_t pixels,
                    const InfraredScale& scale) {
    forEachBlock(floats, rgb, pixels, [s = scale](const unsigned char* in, unsigned char* out) {
        const double saturated = s.range * s.scale;
        int levels[blockPixels];
        for (std::size_t i = 0; i < blockPixels; ++i) {
            float value = 0.0F;
            __builtin_memcpy(&value, in + i * 4, 4);
            const bool valid = (value > 0.0F) & (value <= largestFloat);
            const double raised = (static_cast<double>(value) - s.minimum) * s.scale;
            const double level = static_cast<double>(value) > s.maximum ? saturated : raised;
            levels[i] = static_cast<int>(valid ? level : 0.0);
        }
        unsigned char grey[blockPixels];
        for (std::size_t i = 0; i < blockPixels; ++i) {
            const int low = levels[i] < 0 ? 0 : levels[i];
            grey[i] = static_cast<unsigned char>(low > 255 ? 255 : low);
        }
        for (std::size_t i = 0; i < blockPixels; i += 16)
            spreadGrey16(grey + i, out + i * 3);
    });
}

/// The nearness 0 to 255 of a block of depths, or DepthPalette::noReading where a depth is not
/// valid. Gives the largest nearness of a valid depth, or -1.
inline int findNearness(const unsigned char* floats, int* nearness) {
    int nearest = -1;
    for (std::size_t i = 0; i < blockPixels; ++i) {
        float depth = 0.0F;
        __builtin_memcpy(&depth, floats + i * 4, 4);
        const bool valid = (depth >= sensor::nearestDepth_mm) & (depth <= sensor::farthestDepth_mm);
        // A NaN fails both comparisons of the clamp's first step and becomes the far end.
        const float below = depth < far_mm ? depth : far_mm;
        const float clamped = below > near_mm ? below : near_mm;
        const float level = 255.0F - ((clamped - near_mm) / (far_mm - near_mm)) * 255.0F;
        const int truncated = static_cast<int>(level);
        nearness[i] = valid ? truncated : DepthPalette::noReading;
        const int seen = valid ? truncated : -1;
        nearest = seen > nearest ? seen : nearest;
    }
    return nearest;
}

#if defined(__AVX512VBMI__)

/// Which bytes of the first two channels, then of those and the third, make each of the three
/// registers of a block of pixels.
struct Interleaving {
    unsigned char ofTwo[3][64]{};
    unsigned char ofAll[3][64]{};

    constexpr Interleaving() {
        for (int i = 0; i < 3 * 64; ++i) {
            const int pixel = i / 3;
            const int channel = i % 3;
            ofTwo[i / 64][i % 64] = static_cast<unsigned char>(channel == 1 ? 64 + pixel : pixel);
            ofAll[i / 64][i % 64] = static_cast<unsigned char>(channel == 2 ? 64 + pixel : i % 64);
        }
    }
};

constexpr Interleaving picks;

/// The palette with a register for each 64 entries of each channel, so that one instruction looks
/// up 64 pixels. This and the interleaving take half the time of one load and store per pixel.
class PixelColors {
public:
    explicit PixelColors(const DepthPalette& palette) {
        for (int channel = 0; channel < 3; ++channel) {
            unsigned char entries[256];
            for (int i = 0; i < 256; ++i)
                entries[i] = palette.colors[i][channel];
            for (int i = 0; i < 4; ++i)
                table[channel][i] = _mm512_loadu_si512(entries + i * 64);
            noReading[channel] = _mm512_set1_epi8(
                static_cast<char>(palette.colors[DepthPalette::noReading][channel]));
        }
    }

    void write(const int* nearness, unsigned char* rgb) const {
        unsigned char lowBytes[blockPixels];
        unsigned char missing[blockPixels];
        for (std::size_t i = 0; i < blockPixels; ++i) {
            lowBytes[i] = static_cast<unsigned char>(nearness[i]);
            missing[i] = nearness[i] == DepthPalette::noReading ? 0xff : 0;
        }
        const __m512i entry = _mm512_loadu_si512(lowBytes);
        const __mmask64 inUpperHalf = _mm512_movepi8_mask(entry);
        const __mmask64 isMissing = _mm512_movepi8_mask(_mm512_loadu_si512(missing));
        __m512i plane[3];
        for (int channel = 0; channel < 3; ++channel) {
            const __m512i* t = table[channel];
            const __m512i lower = _mm512_permutex2var_epi8(t[0], entry, t[1]);
            const __m512i upper = _mm512_permutex2var_epi8(t[2], entry, t[3]);
            plane[channel] = _mm512_mask_blend_epi8(
                isMissing, _mm512_mask_blend_epi8(inUpperHalf, lower, upper), noReading[channel]);
        }
        for (int part = 0; part < 3; ++part) {
            const __m512i two =
                _mm512_permutex2var_epi8(plane[0], _mm512_loadu_si512(picks.ofTwo[part]), plane[1]);
            const __m512i all =
                _mm512_permutex2var_epi8(two, _mm512_loadu_si512(picks.ofAll[part]), plane[2]);
            _mm512_storeu_si512(rgb + part * 64, all);
        }
    }

private:
    __m512i table[3][4];
    __m512i noReading[3];
};

#else

class PixelColors {
public:
    explicit PixelColors(const DepthPalette& colors) : palette(colors) {}

    /// Each store writes one byte past its pixel, which the next one overwrites.
    void write(const int* nearness, unsigned char* rgb) const {
        for (std::size_t i = 0; i + 1 < blockPixels; ++i)
            __builtin_memcpy(rgb + i * 3, palette.colors[nearness[i]], 4);
        constexpr std::size_t last = blockPixels - 1;
        __builtin_memcpy(rgb + last * 3, palette.colors[nearness[last]], 3);
    }

private:
    const DepthPalette& palette;
};

#endif

bool depthPixels(const unsigned char* floats, unsigned char* rgb, std::size_t pixels,
                 const DepthPalette& palette) {
    int nearest = -1;
    const PixelColors colors(palette);
    forEachBlock(floats, rgb, pixels, [&](const unsigned char* in, unsigned char* out) {
        int nearness[blockPixels];
        const int nearestInBlock = findNearness(in, nearness);
        nearest = nearestInBlock > nearest ? nearestInBlock : nearest;
        colors.write(nearness, out);
    });
    return nearest >= 0;
}

} // namespace

extern const FrameKernels kernels;
const FrameKernels kernels = {LUMENO_KERNELS_NAME, packColor, infraredRange, infraredPixels,
                              depthPixels};

} // namespace LUMENO_KERNELS
