#include "face/cascade_scales.h"

#include <algorithm>

namespace {

constexpr int stripWidth = 32;
constexpr float fineFrom = 2.0F; ///< From this scale on every pixel begins a window.

/// The precision of the factor decides how a half is rounded.
template <typename Factor>
cv::Size times(cv::Size size, Factor factor) {
    return {cvRound(static_cast<Factor>(size.width) * factor),
            cvRound(static_cast<Factor>(size.height) * factor)};
}

/// All scales, from 1 up, whose window fits the picture.
std::vector<float> fittingScales(cv::Size picture, cv::Size window, double scaleFactor) {
    std::vector<float> scales;
    for (double factor = 1.0;; factor *= scaleFactor) {
        const cv::Size scaled = times(window, factor);
        if (scaled.width > picture.width || scaled.height > picture.height)
            return scales;
        scales.push_back(static_cast<float>(factor));
    }
}

/// Those whose window is not below the minimum; the one that comes nearest where there is none.
std::vector<float> wantedScales(const std::vector<float>& scales, cv::Size window,
                                cv::Size minSize) {
    std::vector<float> wanted;
    for (const float scale : scales) {
        const cv::Size scaled = times(window, scale);
        if (scaled.width >= minSize.width && scaled.height >= minSize.height)
            wanted.push_back(scale);
    }
    if (!wanted.empty() || scales.empty())
        return wanted;
    const auto distance = [&](float scale) {
        const cv::Size scaled = times(window, scale);
        const double dx = double(minSize.width) - scaled.width;
        const double dy = double(minSize.height) - scaled.height;
        return dx * dx + dy * dy;
    };
    return {*std::min_element(scales.begin(), scales.end(),
                              [&distance](float a, float b) { return distance(a) < distance(b); })};
}

int windowsAlong(int picture, int window, int step) {
    const int places = std::max(picture + 1 - window, 0);
    return (places + step - 1) / step;
}

/// Rows of windows are dealt out in strips, as many as 32 columns of the first scale's windows fit.
/// The size of a strip is computed from the rounded-down number of rows, so where that divides
/// evenly and a row was rounded away, the last row belongs to no strip.
int rowsInStrips(int picture, int window, int step, int strips) {
    const int places = std::max(picture + 1 - window, 0);
    const int rows = std::max((places / step + strips - 1) / strips, 1);
    return std::min(strips * rows, windowsAlong(picture, window, step));
}

} // namespace

std::vector<CascadeScale> cascadeScales(cv::Size picture, cv::Size window, double scaleFactor,
                                        cv::Size minSize) {
    std::vector<CascadeScale> result;
    int strips = 0;
    for (const float scale :
         wantedScales(fittingScales(picture, window, scaleFactor), window, minSize)) {
        CascadeScale next;
        next.scale = scale;
        next.picture = cv::Size(cvRound(static_cast<float>(picture.width) / scale),
                                cvRound(static_cast<float>(picture.height) / scale));
        next.hit = times(window, scale);
        next.step = scale < fineFrom ? 2 : 1;
        if (result.empty()) {
            const int places = std::max(next.picture.width + 1 - window.width, 0);
            strips = (places + stripWidth - 1) / stripWidth;
        }
        if (strips == 0)
            return {};
        next.windows =
            cv::Size(windowsAlong(next.picture.width, window.width, next.step),
                     rowsInStrips(next.picture.height, window.height, next.step, strips));
        result.push_back(next);
    }
    return result;
}
