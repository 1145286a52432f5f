#pragma once

#include "face/cascade_data.h"
#include "face/cascade_kernels.h"
#include "face/cascade_pyramid.h"
#include "face/cascade_scales.h"
#include "face/cascade_sums.h"
#include "face/cascade_tables.h"

#include <memory>
#include <opencv2/core.hpp>
#include <span>
#include <stop_token>
#include <vector>

/// Searches 8-bit grey pictures with a cascade and finds what cv::CascadeClassifier finds, in a
/// fraction of its time: it computes the same numbers for many neighbouring windows at once.
///
/// What is computed, as far as detections depend on it:
/// 1. Scales grow from 1 by the scale factor while the window fits; see cascadeScales().
/// 2. Each scale picture is shrunk bit-exactly, and summed up with its squares.
/// 3. A window's contrast is n = area * (sum of squares) - (sum)^2 over the window less a pixel on
///    each side. Those with too little are left out.
/// 4. Windows lie two pixels apart below scale 2, else one. One that fails the first stage makes
///    its right neighbour be skipped.
/// 5. A feature, divided by the square root of n in float, is compared with its stump's threshold;
///    a stage passes if the sum of the leaves is not below its threshold less 1e-5.
class CascadeSearch {
public:
    /// Null where the cascade breaks an assumption of the tables. `extraMargin`: see CascadeTables.
    static std::unique_ptr<CascadeSearch>
    make(const CascadeData& cascade, const CascadeKernels& kernels, double extraMargin = 0.0);

    /// All windows that pass every stage, before they are grouped: in ascending order of scale, y,
    /// x. `picture` is 8-bit grey of any size, `scaleFactor` above 1. Throws std::bad_alloc only.
    std::vector<cv::Rect> candidates(const cv::Mat& picture, double scaleFactor, cv::Size minSize);

    /// One of several searches of the same picture.
    struct Task {
        CascadeSearch* search = nullptr;
        bool mirrored = false; ///< Of the picture's mirror image.
        std::vector<cv::Rect>
            found{}; ///< As from candidates(); of a mirror image, as they lie there.
    };
    /// Fills in what the tasks find. Scale pictures and sums that several of them need are made
    /// once. All were made for the same kernels. A stop is noticed at the next scale; then what was
    /// found is not complete.
    static void searchTogether(const cv::Mat& picture, std::span<Task> tasks, double scaleFactor,
                               cv::Size minSize, const std::stop_token& stop = {});

    cv::Size window() const { return windowSize; }

private:
    CascadeSearch(const CascadeData& cascade, CascadeTables prepared, const CascadeKernels& loops);
    void searchScale(KernelPicture picture, const CascadeScale& scale,
                     std::vector<cv::Rect>& found);

    const cv::Size windowSize;
    CascadeTables tables;
    const CascadeKernels& kernels;
    CascadePyramid pyramid;
    CascadeSums sums;
    std::vector<std::uint64_t> strip;
};
