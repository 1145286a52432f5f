#pragma once

// Included by cascade_kernels.cpp only, once for each instruction set.
#include "face/cascade_kernels.h"
#include "face/cascade_lanes.h"

namespace LUMENO_KERNELS {
namespace {

/// A run of neighbouring windows of one row that are worked on at once.
struct Block {
    const std::uint16_t* sums;
    const std::int16_t* contrast;
    std::uint32_t alive; ///< A bit for each window.
    std::int32_t x;      ///< Column of its first window, counted in windows.
    std::int32_t y;
};

struct Verdict {
    std::uint32_t passed;
    std::uint32_t open; ///< Neither passed nor failed for certain.
};

/// The difference of the two corners at one side of a stripe.
[[gnu::always_inline]] inline Sums side(const std::uint16_t* sums, const std::int32_t* corners) {
    return load(sums + corners[1]) - load(sums + corners[0]);
}

[[gnu::always_inline]] inline Sums middleLessEnds(const std::uint16_t* sums,
                                                  const std::int32_t* corner, Sums& middle) {
    middle = side(sums, corner + 4) - side(sums, corner + 2);
    return side(sums, corner) - side(sums, corner + 6);
}

/// The same for one window, not shifted.
inline std::int32_t featureAlone(FeatureShape shape, const std::uint16_t* sums,
                                 const KernelStump& stump, const KernelPart* parts) {
    const auto sideAt = [sums](const std::int32_t* corners) {
        return std::int32_t{sums[corners[1]]} - std::int32_t{sums[corners[0]]};
    };
    const auto line = [&sideAt](const std::int32_t* corner, std::int32_t multiplier) {
        const std::int32_t middle = sideAt(corner + 4) - sideAt(corner + 2);
        return std::int32_t{
            static_cast<std::int16_t>(multiplier * middle + sideAt(corner) - sideAt(corner + 6))};
    };
    const std::int32_t* corner = stump.corner;
    switch (shape) {
    case FeatureShape::edge:
        return static_cast<std::int16_t>(2 * sideAt(corner + 2) - sideAt(corner) -
                                         sideAt(corner + 4));
    case FeatureShape::line:
        return line(corner, 2);
    case FeatureShape::wideLine:
        return line(corner, 3);
    case FeatureShape::quarters: {
        std::int32_t value = 4 * sums[corner[4]];
        for (const int at : {0, 2, 6, 8})
            value += sums[corner[at]];
        for (const int at : {1, 3, 5, 7})
            value -= 2 * sums[corner[at]];
        return static_cast<std::int16_t>(value);
    }
    case FeatureShape::composite:
        break;
    }
    std::int32_t total = 0;
    for (std::int32_t i = 0; i < corner[1]; ++i)
        total += line(parts[corner[0] + i].corner, parts[corner[0] + i].multiplier);
    return total;
}

template <FeatureShape shape>
[[gnu::always_inline]] inline Numbers feature(const std::uint16_t* sums, const KernelStump& stump,
                                              const KernelPart* parts) {
    const std::int32_t* corner = stump.corner;
    if constexpr (shape == FeatureShape::edge) {
        const Sums middle = side(sums, corner + 2);
        return (Numbers)(middle + middle - side(sums, corner) - side(sums, corner + 4));
    } else if constexpr (shape == FeatureShape::line) {
        Sums middle;
        const Sums ends = middleLessEnds(sums, corner, middle);
        return (Numbers)(middle + middle + ends);
    } else if constexpr (shape == FeatureShape::wideLine) {
        Sums middle;
        const Sums ends = middleLessEnds(sums, corner, middle);
        return (Numbers)(middle + middle + middle + ends);
    } else if constexpr (shape == FeatureShape::quarters) {
        const Sums outer = load(sums + corner[0]) + load(sums + corner[2]) +
                           load(sums + corner[6]) + load(sums + corner[8]);
        const Sums between = load(sums + corner[1]) + load(sums + corner[3]) +
                             load(sums + corner[5]) + load(sums + corner[7]);
        const Sums center = load(sums + corner[4]);
        const Sums twice = center + center - between;
        return (Numbers)(twice + twice + outer);
    } else {
        Numbers total = {};
        const KernelPart* part = parts + corner[0];
        for (int i = 0; i < corner[1]; ++i, ++part) {
            Sums middle;
            const Sums ends = middleLessEnds(sums, part->corner, middle);
            const Sums value = middle * static_cast<std::uint16_t>(part->multiplier) + ends;
            total += (Numbers)value >> corner[2];
        }
        return total;
    }
}

/// How well a stage's sum is to be known.
enum class Bounds {
    upper, ///< Only from above, which tells the windows that fail for certain.
    both,
};

template <FeatureShape shape, Bounds bounds, int count>
[[gnu::always_inline]] inline void addRun(const KernelStump* stump, std::uint32_t stumps,
                                          const KernelPart* parts, const Block* blocks,
                                          Numbers (&low)[count], Numbers (&high)[count]) {
    for (const KernelStump* end = stump + stumps; stump != end; ++stump) {
        const Sums gain = stump->gain - Sums{};
        const Numbers slope = stump->slope - Numbers{};
        const Numbers boundOfLow = stump->boundOfLow - Numbers{};
        const Numbers boundOfHigh = stump->boundOfHigh - Numbers{};
        const Numbers weight = stump->weight - Numbers{};
#pragma GCC unroll 4
        for (int i = 0; i < count; ++i) {
            Numbers value = feature<shape>(blocks[i].sums, *stump, parts);
            if constexpr (shape != FeatureShape::composite)
                value = (Numbers)((Sums)value * gain); // lanes without a window may overflow
            const Numbers above = difference(value, highProduct(load(blocks[i].contrast), slope));
            if constexpr (bounds == Bounds::both)
                low[i] = addWhereAbove(low[i], weight, boundOfLow, above);
            high[i] = addWhereAbove(high[i], weight, boundOfHigh, above);
        }
    }
}

/// Bounds the stage's sums of some blocks and says which windows that decides. Where they are
/// bounded from above only, no window is said to have passed.
template <Bounds bounds, int count>
void boundStage(const KernelCascade& cascade, const KernelStage& stage, const Block* blocks,
                Verdict* verdicts) {
    Numbers low[count];
    Numbers high[count];
    for (int i = 0; i < count; ++i)
        low[i] = high[i] = stage.start - Numbers{};
    for (int r = 0; r < stage.runCount; ++r) {
        const KernelStage::Run& run = stage.runs[r];
        const auto add = [&]<FeatureShape shape>() {
            addRun<shape, bounds>(cascade.stumps + run.first, run.count, cascade.parts, blocks, low,
                                  high);
        };
        switch (run.shape) {
        case FeatureShape::edge:
            add.template operator()<FeatureShape::edge>();
            break;
        case FeatureShape::line:
            add.template operator()<FeatureShape::line>();
            break;
        case FeatureShape::wideLine:
            add.template operator()<FeatureShape::wideLine>();
            break;
        case FeatureShape::quarters:
            add.template operator()<FeatureShape::quarters>();
            break;
        case FeatureShape::composite:
            add.template operator()<FeatureShape::composite>();
            break;
        }
    }
    for (int i = 0; i < count; ++i) {
        std::uint32_t passed = 0;
        if constexpr (bounds == Bounds::both)
            passed = bitsOf(low[i] > stage.passAbove - Numbers{}) & blocks[i].alive;
        const std::uint32_t failed = bitsOf(high[i] < stage.failBelow - Numbers{});
        verdicts[i] = {passed, ~passed & ~failed & blocks[i].alive};
    }
}

} // namespace
} // namespace LUMENO_KERNELS
