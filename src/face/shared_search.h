#pragma once

#include "face/cascade_search.h"

#include <memory>
#include <opencv2/objdetect.hpp>
#include <span>
#include <stop_token>
#include <vector>

/// From now on the cascade searches by CascadeSearch. It goes on giving to the library whatever
/// that does not do: other pictures than 8-bit grey, a maximum size, a mask.
void searchBy(cv::CascadeClassifier& cascade, std::unique_ptr<CascadeSearch> search);

/// One of several searches of the same picture.
struct PictureSearch {
    cv::CascadeClassifier* cascade = nullptr;
    bool mirrored = false;        ///< Of the picture's mirror image.
    std::vector<cv::Rect> hits{}; ///< In pixels of what was searched.
};

/// Does for each of them what detectMultiScale() of its cascade does, with the same hits. Where all
/// are searched by CascadeSearch, they share what they need in common. `stop` is asked at least
/// before each search; once it is requested, the hits are not complete. Throws cv::Exception where
/// detectMultiScale() does.
void detectTogether(const cv::Mat& picture, std::span<PictureSearch> searches, double scaleFactor,
                    int minNeighbors, cv::Size minSize, const std::stop_token& stop);
