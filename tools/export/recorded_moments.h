#pragma once

#include "recording_index.h"

#include <opencv2/core/mat.hpp>

#include <QString>

#include <cstddef>

namespace exporting {

/// The pictures of one moment as they were recorded.
struct RecordedPictures {
    cv::Mat color; ///< 8-bit BGR; empty in a recording without colour
    cv::Mat depth; ///< 16-bit millimetres, 0 where there is no reading
};

/// A recording that is read moment by moment.
class RecordedMoments {
public:
    /// Throws std::exception, with a text for a person, when the folder holds no whole recording
    /// with a calibration.
    explicit RecordedMoments(const QString& folder);

    std::size_t count() const { return index.moments.size(); }
    bool hasColor() const { return !index.moments.front().color.empty(); }
    const virtual_kinect::Calibration& calibration() const { return index.calibration; }
    cv::Size depthSize() const { return {index.depthWidth, index.depthHeight}; }
    cv::Size colorSize() const { return {index.colorWidth, index.colorHeight}; }

    /// The number that the moment's pictures have as their name.
    qint64 number(std::size_t at) const;
    /// Seconds since the epoch, or since the first moment when nobody wrote down when that was.
    double seconds(std::size_t at) const;
    /// Throws std::exception, with a text for a person, when a picture is damaged.
    RecordedPictures pictures(std::size_t at) const;

private:
    virtual_kinect::RecordingIndex index;
    double begin_s = 0;
};

} // namespace exporting
