#pragma once

#include "face/face_options.h"

#include <opencv2/core.hpp>
#include <string_view>

/// What the light makes of a face, in grey levels from 0 to 255.
struct FaceLight {
    double mean = 0.0;
    double deviation = 0.0; ///< Standard deviation: the contrast.
};

/// Mean and contrast of an 8-bit grey crop.
FaceLight faceLight(const cv::Mat& face);

/// Variance of the Laplacian of an 8-bit grey crop, in grey levels squared: higher is sharper.
double faceSharpness(const cv::Mat& face);

/// Judges whether a face is good enough for recognition. `face` is an 8-bit grey crop, usually a
/// view into the frame: at its edges the sharpness then looks at the frame's own neighbouring
/// pixels. Returns "accepted", or the first test that fails: "too_small", "too_dark", "too_bright",
/// "low_contrast", "too_blurry".
std::string_view faceQuality(const cv::Mat& face, const Options& options);
