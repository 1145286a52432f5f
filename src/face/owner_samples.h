#pragma once

#include "face/face_options.h"

#include <opencv2/core.hpp>
#include <stop_token>
#include <string>
#include <vector>

/// One image of the owner.
struct TrainingSample {
    cv::Mat image; ///< 8-bit gray, exactly 160 x 160 pixels.
    int label = 1; ///< Class label; always the owner's.
};

inline constexpr int ownerClass = 1;     ///< The only label that is ever trained.
inline constexpr int sampleSidePx = 160; ///< Side of every sample and of every face predicted.

/// A face as the recognizer is asked about it: equalized, then scaled to 160 x 160. `crop` is an
/// 8-bit gray view of the detector's own box. What is saved as a sample after this step, and
/// scanned again, is at distance 0 of the same face. Throws cv::Exception for an empty crop or
/// another type.
cv::Mat recognizerInput(const cv::Mat& crop);

/// The files that loadTavinSamples() reads, in its order: regular files in `directory` and below
/// that are named .png, .jpg, .jpeg or .pgm in lower case. Empty for a missing directory.
std::vector<std::string> ownerSamplePaths(const std::string& directory,
                                          const std::stop_token& stop = {});

/// One of those files as it is trained: read as gray and squeezed to 160 x 160. The name says
/// nothing about the kind of picture: whatever OpenCV decodes is read. Empty when it cannot be
/// decoded, comes out in color (Radiance, color PFM), or is too large: more than 64 megapixels,
/// or more than 16 MiB for a kind whose header does not tell (see promisedSize()). Never throws for
/// what lies in a file.
cv::Mat readOwnerSample(const std::string& path);

/// Appends the owner's images found in `directory` and below to `samples`, in ascending order of
/// path components. Returns whether `samples` is non-empty; false for a missing directory. Files
/// that readOwnerSample() cannot read are skipped without a message. `stop` is asked between files
/// and ends the scan.
bool loadTavinSamples(const std::string& directory, std::vector<TrainingSample>& samples,
                      const std::stop_token& stop = {});
