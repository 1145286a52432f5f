#pragma once

#include "face/cascade_scales.h"

#include <opencv2/core.hpp>
#include <utility>
#include <vector>

/// Whether pictures of that width give the same when they are shrunk and then mirrored as when they
/// are mirrored and then shrunk. They do not where the rounding of the shrinking is not symmetric.
bool mirrorsExactly(int width, const CascadeScale& scale);

/// The picture of one scale after the other, and of its mirror image, in memory that is used again.
class CascadePyramid {
public:
    /// Begins with an 8-bit grey picture, which must stay as it is while it is asked about.
    void begin(const cv::Mat& whole);

    /// The whole picture, shrunk; valid until the next call.
    const cv::Mat& upright(const CascadeScale& scale);
    /// Its mirror image, shrunk; valid until the next call.
    const cv::Mat& mirrored(const CascadeScale& scale);

private:
    bool mirrorsExactlyAt(const CascadeScale& scale);

    cv::Mat picture;
    cv::Mat mirror; // empty while no scale needed it
    cv::Mat uprightNow;
    cv::Mat mirroredNow;
    float uprightScale = 0.0F; // of uprightNow, 0 for none
    std::vector<unsigned char> mirrorMemory;
    std::vector<unsigned char> uprightMemory;
    std::vector<unsigned char> mirroredMemory;
    int knownWidth = 0;                        // of the pictures that `known` is about
    std::vector<std::pair<float, bool>> known; // a scale, and whether it mirrors exactly
};
