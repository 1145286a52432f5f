#pragma once

#include <opencv2/core.hpp>
#include <opencv2/face.hpp>
#include <optional>
#include <vector>

namespace enroll {

/// Recogniser distances from one picture to each of many. The pictures are 8-bit grey, 160 x 160,
/// as recognizerInput() makes them; a distance is the one that the recogniser would give for a
/// picture and a sample, 0 for equal ones.
class SampleIndex {
public:
    void add(const cv::Mat& picture);
    /// Takes out the picture with this number; the numbers behind it move down.
    void remove(std::size_t number);

    std::size_t size() const { return pictures.size(); }

    /// One distance for each picture, in the order in which they were added.
    std::vector<double> distancesTo(const cv::Mat& picture) const;
    /// The least of them; nothing without a picture.
    std::optional<double> nearestTo(const cv::Mat& picture) const;

private:
    std::vector<cv::Mat> pictures;
    cv::Ptr<cv::face::LBPHFaceRecognizer> model; ///< Labels are numbers of pictures.
};

} // namespace enroll
