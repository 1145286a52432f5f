#pragma once

#include <opencv2/core.hpp>
#include <vector>

/// One scale at which a picture is searched.
struct CascadeScale {
    float scale = 1.0F; ///< Of the picture to the scale picture.
    cv::Size picture;   ///< Size of the scale picture, in pixels.
    cv::Size hit;       ///< Size of a hit, in pixels of the picture.
    int step = 1;       ///< Pixels of the scale picture from window to window.
    cv::Size windows;   ///< Windows that are looked at, in a row and in a column.
};

/// The scales at which cv::CascadeClassifier searches a picture for windows of that size, in
/// ascending order. `scaleFactor` must be above 1. Empty where the picture is smaller than the
/// window.
std::vector<CascadeScale> cascadeScales(cv::Size picture, cv::Size window, double scaleFactor,
                                        cv::Size minSize);
