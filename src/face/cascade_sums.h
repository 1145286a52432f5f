#pragma once

#include "face/cascade_kernels.h"

#include <opencv2/core.hpp>
#include <vector>

/// The sums of one scale picture after the other, in memory that is used again.
class CascadeSums {
public:
    explicit CascadeSums(const CascadeKernels& loops) : kernels(loops) {}

    /// How long a row of sums is for pictures of that width: elements.
    static std::size_t strideFor(int width);

    /// Sums up a scale picture of a CascadePyramid; valid until the next call.
    KernelPicture of(const cv::Mat& picture, std::size_t stride, int step);

private:
    const CascadeKernels& kernels;
    std::vector<std::int32_t> sums;
    std::vector<std::int32_t> squares;
    std::vector<std::uint16_t> sums16;
};
