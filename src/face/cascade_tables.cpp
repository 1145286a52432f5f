#include "face/cascade_tables.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr double min16 = std::numeric_limits<std::int16_t>::min();
constexpr double max16 = std::numeric_limits<std::int16_t>::max();
constexpr double maxContrast = 65000.0;
constexpr double maxDeviation = 127.5;  // of numbers between 0 and 255
constexpr double leastDeviation = 10.0; // of windows that are looked at, about
/// Products with the contrast lose 16 bits; the factor must fit them.
constexpr double slopeUnit = 65536.0;
constexpr double maxSlope = 0.499;
/// What all weights of a stage, and what one of them, may come to, so that its sum fits 16 bits.
constexpr double weightRange = 64000.0;
constexpr double maxWeight = 32000.0;

// How far the product of contrast and slope can be from the exact one: the contrast is off by half
// a unit and by the rounding of a float; the slope by half a unit of 2^-16, times at most 32768;
// the product of feature and norm that it stands for is rounded as well.
constexpr double contrastError = 0.55;
constexpr double slopeError = 0.27;
/// The rounding of the bounds' own arithmetic, in units of a stage's sum.
constexpr double stageError = 1e-3;
/// Stages of so many stumps have few enough sums to try them all.
constexpr std::size_t maxTriedStumps = 16;

/// What the library takes off each stage's threshold.
constexpr float stageTolerance = 1e-5F;

std::int16_t to16(double value) {
    return static_cast<std::int16_t>(std::clamp(value, min16, max16));
}

/// How often a feature of that range can be taken, a power of two, so that it still fits 16 bits
/// and the slope of its comparison its own limit.
int largestGain(int range, double slope) {
    int gain = 1;
    while (range * gain * 2 <= max16 && slope * gain * 2 <= maxSlope)
        gain *= 2;
    return gain;
}

/// Whether a double holds every sum of some of these numbers exactly, in any order.
bool sumsAreExact(const std::vector<float>& numbers) {
    double total = 0.0;
    double unit = std::numeric_limits<double>::max();
    for (const float number : numbers) {
        if (number == 0.0F)
            continue;
        int exponent = 0;
        std::frexp(number, &exponent);
        // A multiple of this, as all floats of its magnitude are.
        unit = std::min(unit, std::ldexp(1.0, exponent - std::numeric_limits<float>::digits));
        total += std::abs(static_cast<double>(number));
    }
    return total / unit < std::ldexp(1.0, std::numeric_limits<double>::digits - 1);
}

/// Contrast decides by a float's rounding, but never against the order of n.
std::uint32_t smallestNWithContrast(double area) {
    std::uint32_t lacking = 0;
    std::uint32_t enough = std::numeric_limits<std::uint32_t>::max();
    while (enough - lacking > 1) {
        const std::uint32_t middle = lacking + (enough - lacking) / 2;
        (CascadeTables::hasContrast(area, middle) ? enough : lacking) = middle;
    }
    return enough;
}

} // namespace

/// A stump whose feature has its shape. Threshold and leaves are those of what the kernel computes.
struct CascadeTables::PlannedStump {
    FeaturePlan feature;
    int gain = 1; ///< See KernelStump.
    double threshold = 0.0;
    double below = 0.0;
    double otherwise = 0.0;
    KernelRule rule{};

    KernelStump bounds(double contrastOffset, double extraMargin, double unit) const;
};

/// The feature F, shifted down, is F - q <= its exact value - q < threshold * contrast - q at most,
/// where q = (contrast * slope) >> 16 is rounded down as well.
KernelStump CascadeTables::PlannedStump::bounds(double contrastOffset, double extraMargin,
                                                double unit) const {
    const double scale = std::ldexp(gain, -feature.shift);
    const double slope = threshold * scale;
    const double center = slope * contrastOffset;
    const double error = std::abs(slope) * contrastError + slopeError + extraMargin;
    const double lostByShift =
        static_cast<double>(feature.lines.size()) * (1.0 - std::min(scale, 1.0));
    const std::int16_t certainlyBelow = to16(std::ceil(center - error - lostByShift));
    const std::int16_t possiblyBelow = to16(std::ceil(center + 1.0 + error));

    KernelStump stump{};
    const double weight = std::round((below - otherwise) / unit);
    stump.gain = static_cast<std::uint16_t>(gain);
    stump.slope = to16(std::round(slope * slopeUnit));
    stump.weight = to16(weight);
    stump.boundOfLow = weight > 0.0 ? certainlyBelow : possiblyBelow;
    stump.boundOfHigh = weight > 0.0 ? possiblyBelow : certainlyBelow;
    return stump;
}

bool CascadeTables::hasContrast(double area, double n) {
    constexpr double tooLarge = 0.1;
    return n > 0.0 && area * static_cast<double>(static_cast<float>(1.0 / std::sqrt(n))) < tooLarge;
}

std::optional<CascadeTables> CascadeTables::make(const CascadeData& cascade, double extraMargin) {
    CascadeTables tables;
    tables.fixed.innerWidth = cascade.window.width - 2;
    tables.fixed.innerHeight = cascade.window.height - 2;
    const double area = static_cast<double>(tables.fixed.innerWidth) * tables.fixed.innerHeight;
    if (area * maxDeviation > maxContrast)
        return std::nullopt;
    tables.fixed.contrastOffset =
        static_cast<std::int32_t>(area * (maxDeviation + leastDeviation) / 2.0);
    tables.fixed.smallestN = smallestNWithContrast(area);
    for (const CascadeData::Stage& stage : cascade.stages) {
        if (!tables.addStage(cascade, stage, extraMargin))
            return std::nullopt;
    }
    tables.fixed.stageCount = static_cast<int>(tables.stages.size());
    return tables;
}

std::optional<CascadeTables::PlannedStump> CascadeTables::plan(const CascadeData& cascade,
                                                               const CascadeData::Stump& stump) {
    int shift = 0;
    double slope = std::abs(static_cast<double>(stump.threshold));
    for (; slope > maxSlope; slope /= 2.0)
        ++shift;
    std::optional<FeaturePlan> feature = planFeature(cascade.features[stump.feature], shift);
    if (!feature)
        return std::nullopt;
    PlannedStump planned{.feature = std::move(*feature),
                         .threshold = double(stump.threshold),
                         .below = double(stump.below),
                         .otherwise = double(stump.otherwise),
                         .rule = {1.0F, stump.threshold, stump.below, stump.otherwise}};
    if (planned.feature.shape != FeatureShape::composite)
        planned.gain = largestGain(planned.feature.range, slope);
    // The negative of what is below is above; where both are equal lies within the bounds.
    if (planned.feature.negated) {
        planned.threshold = -planned.threshold;
        std::swap(planned.below, planned.otherwise);
        planned.rule.sign = -1.0F;
    }
    return planned;
}

bool CascadeTables::addStage(const CascadeData& cascade, const CascadeData::Stage& stage,
                             double extraMargin) {
    std::vector<PlannedStump> planned;
    std::vector<float> leaves;
    double unit = std::numeric_limits<double>::min();
    double spread = 0.0;
    for (std::size_t i = stage.firstStump; i < stage.firstStump + stage.stumpCount; ++i) {
        std::optional<PlannedStump> stump = plan(cascade, cascade.stumps[i]);
        if (!stump)
            return false;
        leaves.insert(leaves.end(), {cascade.stumps[i].below, cascade.stumps[i].otherwise});
        const double difference = std::abs(stump->below - stump->otherwise);
        spread += difference;
        unit = std::max({unit, difference / maxWeight, spread / weightRange});
        planned.push_back(std::move(*stump));
    }
    if (!sumsAreExact(leaves))
        return false;
    std::stable_sort(planned.begin(), planned.end(),
                     [](const PlannedStump& a, const PlannedStump& b) {
                         return a.feature.shape < b.feature.shape;
                     });

    double base = 0.0;        // the sum if nothing is below
    double weights[2] = {};   // of all negative, of all positive ones
    double roundings[2] = {}; // how far the rounded weights can be from the exact ones
    KernelStage& bounds = stages.emplace_back();
    addRuns(bounds, planned);
    for (PlannedStump& stump : planned) {
        const KernelStump entry = stump.bounds(fixed.contrastOffset, extraMargin, unit);
        base += stump.otherwise;
        weights[entry.weight > 0 ? 1 : 0] += entry.weight;
        const double rounding = (stump.below - stump.otherwise) / unit - entry.weight;
        roundings[rounding > 0.0 ? 1 : 0] += rounding;
        stumps.push_back(entry);
        rules.push_back(stump.rule);
        plans.push_back(std::move(stump.feature));
    }
    // The sum lies between both weights; its range is laid into the middle of 16 bits.
    const double start = std::round(-(weights[0] + weights[1]) / 2.0);
    bounds.threshold = static_cast<double>(stage.threshold - stageTolerance);
    const double wanted = start + (bounds.threshold - base) / unit;
    bounds.start = to16(start);
    bounds.passAbove = to16(std::ceil(wanted - roundings[0] + stageError) - 1.0);
    bounds.failBelow = to16(std::ceil(wanted - roundings[1] - stageError));
    if (planned.size() <= maxTriedStumps)
        tryAllSums(bounds, planned);
    return (weights[1] - weights[0]) / 2.0 + 1.0 < max16;
}

/// Few stumps have few sums. Which of the kernel's sums belong to windows that pass is then known
/// exactly, also where a stage's threshold is one of its sums, which is how cascades are trained.
void CascadeTables::tryAllSums(KernelStage& stage, const std::vector<PlannedStump>& planned) const {
    struct Sum {
        double exact = 0.0;
        int kernel = 0;
    };
    std::vector<Sum> sums{{0.0, stage.start}};
    const KernelStump* next = stumps.data() + (stumps.size() - planned.size());
    for (const PlannedStump& stump : planned) {
        const int weight = (next++)->weight;
        const std::size_t half = sums.size();
        for (std::size_t at = 0; at < half; ++at) {
            sums.push_back({sums[at].exact + stump.below, sums[at].kernel + weight});
            sums[at].exact += stump.otherwise;
        }
    }
    int highestFailing = std::numeric_limits<std::int16_t>::min();
    int lowestPassing = std::numeric_limits<std::int16_t>::max();
    for (const Sum& sum : sums) {
        if (sum.exact < stage.threshold)
            highestFailing = std::max(highestFailing, sum.kernel);
        else
            lowestPassing = std::min(lowestPassing, sum.kernel);
    }
    stage.passAbove = static_cast<std::int16_t>(highestFailing);
    stage.failBelow = static_cast<std::int16_t>(lowestPassing);
}

/// Sorted stumps of equal shape make a run.
void CascadeTables::addRuns(KernelStage& stage, const std::vector<PlannedStump>& planned) {
    std::size_t next = stumps.size();
    for (const PlannedStump& stump : planned) {
        const KernelStage::Run* last =
            stage.runCount == 0 ? nullptr : &stage.runs[stage.runCount - 1];
        if (!last || last->shape != stump.feature.shape)
            stage.runs[stage.runCount++] = {stump.feature.shape, static_cast<std::uint32_t>(next),
                                            0};
        ++stage.runs[stage.runCount - 1].count;
        ++next;
    }
}

KernelCascade CascadeTables::forRows(std::size_t stride, int step) {
    Resolved& table = resolved[step == 2 ? 1 : 0];
    if (table.stride != stride)
        resolve(table, stride, step);
    KernelCascade cascade = fixed;
    cascade.stages = stages.data();
    cascade.stumps = table.stumps.data();
    cascade.rules = rules.data();
    cascade.parts = table.parts.data();
    return cascade;
}

void CascadeTables::resolve(Resolved& table, std::size_t stride, int step) const {
    const auto offset = [stride, step](cv::Point corner) {
        const auto row = static_cast<std::size_t>(corner.y) * stride;
        const auto x = static_cast<std::size_t>(corner.x);
        return static_cast<std::int32_t>(step == 2 ? row + x % 2 * (stride / 2) + x / 2 : row + x);
    };
    table.stride = stride;
    table.stumps = stumps;
    table.parts.clear();
    for (std::size_t i = 0; i < plans.size(); ++i) {
        const FeaturePlan& plan = plans[i];
        std::int32_t* corner = table.stumps[i].corner;
        if (plan.shape != FeatureShape::composite) {
            std::transform(plan.corners.begin(), plan.corners.end(), corner, offset);
            continue;
        }
        corner[0] = static_cast<std::int32_t>(table.parts.size());
        corner[1] = static_cast<std::int32_t>(plan.lines.size());
        corner[2] = plan.shift;
        for (const FeatureLine& line : plan.lines) {
            KernelPart& part = table.parts.emplace_back();
            std::transform(line.corners.begin(), line.corners.end(), part.corner, offset);
            part.multiplier = static_cast<std::int16_t>(line.multiplier);
        }
    }
}
