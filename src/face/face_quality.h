#pragma once

#include "face/face_options.h"

#include <opencv2/core.hpp>

/// What the light makes of a face, in gray levels from 0 to 255.
struct FaceLight {
    double mean = 0.0;
    double deviation = 0.0; ///< Standard deviation: the contrast.
};

/// Mean and contrast of an 8-bit gray crop.
FaceLight faceLight(const cv::Mat& face);

/// Variance of the Laplacian of an 8-bit gray crop, in gray levels squared: higher is sharper.
double faceSharpness(const cv::Mat& face);

/// Whether a face is good enough for recognition, or the first test that it fails; the tests are
/// made in this order.
enum class FaceQuality { TooSmall, TooDark, TooBright, LowContrast, TooBlurry, Accepted };

/// Judges a face for recognition. `face` is an 8-bit gray crop, usually a view into the frame: at
/// its edges the sharpness then looks at the frame's own neighboring pixels.
FaceQuality faceQuality(const cv::Mat& face, const face::Options& options);
