#pragma once

#include "face/cascade_data.h"

#include <opencv2/core.hpp>
#include <vector>

/// Small rendered 8-bit grey pictures on which a cascade is tried when it is loaded.
std::vector<cv::Mat> trialPictures();

/// The cascade with its stages in an order that takes less work on pictures like this one: a window
/// has to pass all stages, in whatever order they are asked, and training puts some that leave few
/// windows out before others that leave out many. Both cascades find the same windows. The first
/// stage keeps its place, since it decides which windows are skipped. A stage must have a stump.
CascadeData quicklyOrdered(const CascadeData& cascade, const cv::Mat& picture);
