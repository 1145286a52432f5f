#pragma once

#include "face/cascade_data.h"
#include "face/cascade_features.h"
#include "face/cascade_kernels.h"

#include <optional>
#include <vector>

/// A cascade prepared for the kernels: every feature as one of their shapes, every comparison and
/// every stage with bounds that are certain.
class CascadeTables {
public:
    /// Nothing when the cascade breaks an assumption of the kernels' arithmetic: another shape of
    /// feature, a window whose contrast leaves 16 bits, or leaves whose sum a double does not hold
    /// exactly. `extraMargin` widens the bounds of all comparisons, so that more windows are summed
    /// exactly; for tests.
    static std::optional<CascadeTables> make(const CascadeData& cascade, double extraMargin = 0.0);

    /// For pictures with rows of `stride` sums, `step` being 1 or 2; valid until the next call with
    /// that step.
    KernelCascade forRows(std::size_t stride, int step);

    /// Whether a window with this n = area * (sum of squares) - (sum)^2 has enough contrast to be
    /// looked at.
    static bool hasContrast(double area, double n);

private:
    struct Resolved {
        std::size_t stride = 0;
        std::vector<KernelStump> stumps;
        std::vector<KernelPart> parts;
    };
    struct PlannedStump;

    static std::optional<PlannedStump> plan(const CascadeData& cascade,
                                            const CascadeData::Stump& stump);
    bool addStage(const CascadeData& cascade, const CascadeData::Stage& stage, double extraMargin);
    void tryAllSums(KernelStage& stage, const std::vector<PlannedStump>& planned) const;
    void addRuns(KernelStage& stage, const std::vector<PlannedStump>& planned);
    void resolve(Resolved& table, std::size_t stride, int step) const;

    std::vector<FeaturePlan> plans;  // of each stump, in the kernels' order
    std::vector<KernelStump> stumps; // without corners
    std::vector<KernelRule> rules;
    std::vector<KernelStage> stages;
    KernelCascade fixed{};
    Resolved resolved[2]; // for steps 1 and 2
};
