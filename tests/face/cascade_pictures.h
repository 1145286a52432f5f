#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

/// Small 8-bit grey pictures to compare searches on: noise of several grains, gradients, flat ones,
/// faces, and sizes around those of a window.
struct NamedPicture {
    std::string name;
    cv::Mat picture;
};
std::vector<NamedPicture> cascadePictures();

/// Noise, blurred over `grain` pixels, of the whole range of grey levels.
cv::Mat noisePicture(cv::Size size, int grain, std::uint64_t seed);
