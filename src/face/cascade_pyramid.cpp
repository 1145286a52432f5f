#include "face/cascade_pyramid.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>

namespace {

/// The kernels read whole groups of pixels, also behind the last one.
constexpr std::size_t roomBehind = 64;

cv::Mat pictureIn(std::vector<unsigned char>& memory, cv::Size size) {
    const std::size_t bytes = static_cast<std::size_t>(size.area()) + roomBehind;
    if (memory.size() < bytes)
        memory.resize(bytes);
    return {size, CV_8U, memory.data()};
}

/// As the library computes it, in case that a version looks at it and not at the sizes.
double shrinking(const CascadeScale& scale) {
    return 1.0 / static_cast<double>(scale.scale);
}

void shrink(const cv::Mat& from, const CascadeScale& scale, cv::Mat& to) {
    cv::resize(from, to, scale.picture, shrinking(scale), shrinking(scale), cv::INTER_LINEAR_EXACT);
}

} // namespace

bool mirrorsExactly(int width, const CascadeScale& scale) {
    // Every column of the result mixes two columns, by the same numbers in all rows. Rows of black
    // and white pixels at random show any difference between those numbers.
    constexpr int rows = 64;
    cv::Mat picture(rows, width, CV_8U);
    cv::RNG(1).fill(picture, cv::RNG::UNIFORM, 0, 2);
    picture *= 255;
    cv::Mat mirror;
    cv::flip(picture, mirror, 1);
    const auto shrunk = [&scale](const cv::Mat& from) {
        cv::Mat to;
        cv::resize(from, to, cv::Size(scale.picture.width, rows), shrinking(scale), 1.0,
                   cv::INTER_LINEAR_EXACT);
        return to;
    };
    cv::Mat back;
    cv::flip(shrunk(picture), back, 1);
    return cv::norm(back, shrunk(mirror), cv::NORM_INF) == 0.0;
}

void CascadePyramid::begin(const cv::Mat& whole) {
    picture = whole;
    mirror.release();
    uprightScale = 0.0F;
    if (picture.cols != knownWidth) {
        knownWidth = picture.cols;
        known.clear();
    }
}

const cv::Mat& CascadePyramid::upright(const CascadeScale& scale) {
    if (uprightScale != scale.scale) {
        uprightNow = pictureIn(uprightMemory, scale.picture);
        shrink(picture, scale, uprightNow);
        uprightScale = scale.scale;
    }
    return uprightNow;
}

const cv::Mat& CascadePyramid::mirrored(const CascadeScale& scale) {
    mirroredNow = pictureIn(mirroredMemory, scale.picture);
    if (mirrorsExactlyAt(scale)) {
        cv::flip(upright(scale), mirroredNow, 1);
        return mirroredNow;
    }
    if (mirror.empty()) {
        mirror = pictureIn(mirrorMemory, picture.size());
        cv::flip(picture, mirror, 1);
    }
    shrink(mirror, scale, mirroredNow);
    return mirroredNow;
}

bool CascadePyramid::mirrorsExactlyAt(const CascadeScale& scale) {
    const auto found = std::find_if(known.begin(), known.end(),
                                    [&scale](const auto& one) { return one.first == scale.scale; });
    if (found != known.end())
        return found->second;
    return known.emplace_back(scale.scale, mirrorsExactly(picture.cols, scale)).second;
}
