#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

/// The inner loops of the cascade search. They are compiled several times, for different
/// instruction sets, and all of those find the same windows.
///
/// Features are computed in 16 bits from integral sums modulo 2^16, for many neighbouring windows
/// at once. Their comparisons and the sums of a stage are bounded from both sides; where the bounds
/// leave a window open, its stage is summed up exactly.

/// How the corners of a feature are put together. D(x) is the difference of the two corners at one
/// side of a stripe of the feature.
enum class FeatureShape : std::uint8_t {
    edge,      ///< 2 D(b) - D(a) - D(c); corners a0 a1 b0 b1 c0 c1.
    line,      ///< 2 (D(c) - D(b)) - (D(d) - D(a)); corners a0 a1 b0 b1 c0 c1 d0 d1.
    wideLine,  ///< 3 (D(c) - D(b)) - (D(d) - D(a)); corners as for a line.
    quarters,  ///< Diagonal quarters less the others; corners of a 3 x 3 grid, row by row.
    composite, ///< The sum of several halved or quartered lines, each with a multiplier of its own.
};

/// One line of a composite feature.
struct KernelPart {
    std::int32_t corner[8];
    std::int16_t multiplier; ///< 2 or 3: (D(c) - D(b)) times this less (D(d) - D(a)).
};

/// A feature F, its comparison and its weight. F is taken times `gain` or shifted down (see
/// composite). With q = (contrast * slope) >> 16, the feature is certainly or possibly
/// below its threshold where F - q is below one of the two bounds.
struct KernelStump {
    std::int32_t corner[9]; ///< Elements from a window's first sum; of a composite: first part,
                            ///< number of parts and by how many bits each is shifted down.
    std::uint16_t gain;     ///< What F is taken times, for closer bounds.
    std::int16_t slope;
    std::int16_t boundOfLow;  ///< The bound that gives the smaller sum of the stage.
    std::int16_t boundOfHigh; ///< The bound that gives the larger sum of the stage.
    std::int16_t weight;      ///< What "below" adds to the stage's sum, in the stage's unit.
};

/// The same stump as its cascade has it.
struct KernelRule {
    float sign; ///< 1, or -1 where the kernel's feature is the negative.
    float threshold;
    float below;
    float otherwise;
};

struct KernelStage {
    /// Stumps of equal shape lie together.
    struct Run {
        FeatureShape shape;
        std::uint32_t first;
        std::uint32_t count;
    };
    static constexpr int maxRuns = 5;
    Run runs[maxRuns];
    int runCount;
    double threshold;       ///< What the exact sum must not be below.
    std::int16_t start;     ///< Where both sums of the stage begin.
    std::int16_t passAbove; ///< The window passes where the low sum is above this,
    std::int16_t failBelow; ///< and fails where the high sum is below this.
};

/// The sums of one scale picture. `sums16` holds rows of `stride` elements; where the step is 2,
/// the even columns of a row come first and the odd ones at `stride / 2`. The other two are
/// cv::integral's, modulo 2^32.
struct KernelPicture {
    const std::uint16_t* sums16;
    std::size_t stride;
    const std::int32_t* sums;
    const std::int32_t* squares;
    std::size_t sumStride;
    int step;     ///< From window to window, in both directions: 1 or 2.
    int windowsX; ///< Windows in a row.
    int windowsY; ///< Rows of windows.
};

/// What the kernel needs to know of a cascade. A window's contrast is the square root of
/// n = area * (sum of squares) - (sum)^2 over its inner part; it is kept less `contrastOffset`.
struct KernelCascade {
    const KernelStump* stumps;
    const KernelRule* rules; ///< One for each stump.
    const KernelPart* parts;
    const KernelStage* stages;
    int stageCount;
    int innerWidth; ///< Of the part that gives the contrast: one pixel less on each side.
    int innerHeight;
    std::int32_t contrastOffset;
    std::uint32_t smallestN; ///< Windows with a smaller n are left out.
};

/// Memory for the rows that are worked on together; see stripBytes.
struct KernelMemory {
    unsigned char* bytes;
};

/// Is told of each window that passed all stages: its column and row, counted in windows, in
/// ascending order of y, then x.
struct KernelListener {
    void* context;
    void (*found)(void* context, int x, int y);
};

struct CascadeKernels {
    const char* name; ///< For tests and benchmarks.
    /// Bytes of KernelMemory for rows of that many windows.
    std::size_t (*stripBytes)(std::size_t windowsX);
    void (*search)(const KernelPicture& picture, const KernelCascade& cascade,
                   const KernelMemory& memory, const KernelListener& listener);
    /// Copies the low halves of one row of sums; deals them out to even and odd columns where the
    /// step is 2.
    void (*narrow)(const std::int32_t* sums, std::uint16_t* sums16, std::size_t count,
                   std::size_t stride, int step);
    /// One row of the integral of squares, modulo 2^32, but for its first element, which nobody
    /// needs: the sums of the row above plus those of the squares of `count` pixels up to there.
    /// Both rows and the pixels are read, and `sums` is written, up to 16 elements behind their
    /// end.
    void (*addSquares)(const unsigned char* pixels, const std::int32_t* above, std::int32_t* sums,
                       std::size_t count);
};

/// All kernels that this processor can run, the fastest first; never empty.
std::span<const CascadeKernels> supportedCascadeKernels();
