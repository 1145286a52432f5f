#pragma once

#include "frame_source.h"
#include "room_story.h"

#include <cmath>
#include <opencv2/imgproc.hpp>

/// What the built-in room shows at a moment of its story, in grey.
inline cv::Mat roomFrame(double seconds) {
    using namespace virtual_kinect;
    FrameSet set;
    makeRoomSource()->render(std::uint64_t(std::lround(seconds * room::framesPerSecond)), set);
    cv::Mat gray;
    cv::cvtColor(cv::Mat(set.colorHeight, set.colorWidth, CV_8UC4, set.bgrx.data()), gray,
                 cv::COLOR_BGRA2GRAY);
    return gray;
}
