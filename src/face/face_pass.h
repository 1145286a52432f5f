#pragma once

#include "face/face_detection.h"
#include "face/face_options.h"
#include "face/face_tracks.h"

#include <QImage>
#include <QList>
#include <QRect>
#include <opencv2/core.hpp>
#include <opencv2/face.hpp>
#include <opencv2/objdetect.hpp>
#include <optional>
#include <stop_token>
#include <vector>

/// What a face pass searches with; made once per run.
struct FaceTools {
    cv::CascadeClassifier frontal;
    cv::CascadeClassifier profile; ///< Used when not empty.
    cv::Ptr<cv::face::FaceRecognizer> recognizer;
};

/// What one frame showed.
struct FacePass {
    std::vector<FaceObservation> faces; ///< In the order of the merged detections.
    int bodyRegionFaces = 0;            ///< Hits of the body-region pass, before they were merged.
};

/// The frame in gray, 8 bits, of its own size; empty for a null image.
cv::Mat grayFrame(const QImage& frame);

/// Finds the faces of one gray frame, on the whole and in the body regions (frame pixels), merges
/// them, and asks the recognizer about those that are good enough. `stop` is asked between the
/// detectors and between the faces; nothing is returned when it was requested before the end.
/// Throws cv::Exception where OpenCV does.
std::optional<FacePass> findFaces(cv::Mat& gray, FaceTools& tools, const face::Options& options,
                                  const QList<QRect>& bodyRegions,
                                  const std::stop_token& stop = {});
