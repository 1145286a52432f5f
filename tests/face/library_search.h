#pragma once

#include "face/cascade_data.h"

#include <opencv2/objdetect.hpp>
#include <vector>

/// The library's own search, to compare ours with.
cv::CascadeClassifier librarySearching(const CascadeData& cascade);

/// What the library's own object finds before it groups and clips, sorted().
std::vector<cv::Rect> libraryFinds(cv::CascadeClassifier& library, const cv::Mat& picture,
                                   double factor, cv::Size minSize = {});

/// By size, then from top to bottom and from left to right.
std::vector<cv::Rect> sorted(std::vector<cv::Rect> rects);
