#pragma once

#include "face/face_options.h"
#include "face/owner_samples.h"

#include <opencv2/face.hpp>
#include <stop_token>
#include <string>
#include <vector>

/// Trains the local binary pattern recognizer (radius 1, 8 neighbors, grid of 8 x 8, no threshold
/// of its own) on the samples, in their order. `samples` must not be empty. `stop` is asked every
/// few samples; null when it ended the work. Throws cv::Exception where OpenCV does.
cv::Ptr<cv::face::LBPHFaceRecognizer> trainOwnerModel(const std::vector<TrainingSample>& samples,
                                                      const std::stop_token& stop = {});

/// Writes the model to `path`, byte for byte as its own write() would, after creating the folder
/// and its missing ancestors. The file appears whole or not at all: a new file is written beside it
/// and, once it is on the disk, renamed over it. A new file has the mode that the process's umask
/// gives, an earlier one keeps its mode, and a link in its place is followed. Returns false when
/// that fails or `stop`, which is asked between the samples, ended it, leaving what was there
/// before; never throws.
bool writeOwnerModel(const cv::face::LBPHFaceRecognizer& model, const std::string& path,
                     const std::stop_token& stop = {});
