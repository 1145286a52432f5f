#pragma once

#include "enroll/frame_grade.h"
#include "face/face_options.h"
#include "frames/depth_frame.h"

#include <QImage>
#include <QList>
#include <QRect>
#include <QSize>
#include <opencv2/core.hpp>
#include <opencv2/objdetect.hpp>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace enroll {

/// The detectors, loaded once per run.
struct Detectors {
    cv::CascadeClassifier frontal;
    cv::CascadeClassifier profile; ///< Empty where its file is missing: then frontal faces only.
    face::Options options;
};

/// Loads the cascades that the options name, as the Control Center's worker does. Nothing when the
/// frontal one cannot be loaded.
std::optional<Detectors> loadDetectors(face::Options options);

/// What to say when the detectors cannot be loaded: one sentence.
QString cascadeSentence();

/// One face of a frame.
struct FaceLook {
    cv::Rect box;                 ///< The detector's own box, clipped to the frame.
    std::string detector;         ///< As FaceDetection names it.
    FaceMeasures measures;        ///< Of the box.
    cv::Mat input;                ///< What the recogniser is asked about: 160 x 160, grey.
    std::optional<double> meters; ///< Distance from the sensor, where depth tells it.
};

/// What one frame showed.
struct FrameLook {
    std::vector<FaceLook> faces; ///< In the order of the merged detections.
    qint64 timeMs = 0;           ///< Of the caller's clock.
};

/// Finds, measures and cuts the faces of one grey frame, exactly as recognition does. `bodyRegions`
/// (frame pixels) are searched enlarged for small faces. Throws cv::Exception where OpenCV does.
FrameLook lookAtFrame(cv::Mat& gray, Detectors& detectors, const QList<QRect>& bodyRegions,
                      qint64 timeMs, const std::stop_token& stop = {});

/// Measures the faces' distances in the depth of the same moment, as the overlays' are measured.
/// Without depth nothing changes.
void measureDistances(FrameLook& look, const DepthFrame& depth, const QSize& frameSize);

/// The faces that are large enough to be recognised.
std::vector<const FaceLook*> largeFaces(const FrameLook& look, const face::Options& options);

/// The face with the largest box; null when there is none.
const FaceLook* largestFace(const FrameLook& look);

} // namespace enroll
