#pragma once

#include "face/face_options.h"

#include <opencv2/core.hpp>
#include <string_view>

/// Judges whether a face is good enough for recognition. `face` is an 8-bit grey crop, usually a
/// view into the frame: at its edges the sharpness then looks at the frame's own neighbouring
/// pixels. Returns "accepted", or the first test that fails: "too_small", "too_dark", "too_bright",
/// "low_contrast", "too_blurry".
std::string_view faceQuality(const cv::Mat& face, const Options& options);
