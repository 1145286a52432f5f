#pragma once

#include "face/cascade_data.h"
#include "face/cascade_kernels.h"

#include <array>
#include <optional>
#include <vector>

/// One line of a composite feature; see KernelPart.
struct FeatureLine {
    std::array<cv::Point, 8> corners;
    int multiplier = 2;
};

/// A feature as the kernels compute it. Corners are places in the picture of sums, counted from the
/// window's upper left corner.
struct FeaturePlan {
    FeatureShape shape = FeatureShape::edge;
    std::vector<cv::Point> corners;
    std::vector<FeatureLine> lines; ///< Of a composite.
    int shift = 0;        ///< Of a composite: each of its lines is shifted down by so many bits.
    bool negated = false; ///< What is computed is the feature's negative.
    int range = 0;        ///< The largest value of either sign; not of a composite.
};

/// Finds the shape that gives the feature. One whose values leave 16 bits, or that is to be shifted
/// down by at least `minShift` bits, becomes a composite. Nothing for a shape that is not known.
std::optional<FeaturePlan> planFeature(const CascadeData::Feature& feature, int minShift);
