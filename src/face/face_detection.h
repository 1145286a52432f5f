#pragma once

#include "face/face_options.h"

#include <QList>
#include <QRect>
#include <opencv2/core.hpp>
#include <opencv2/objdetect.hpp>
#include <stop_token>
#include <string>
#include <vector>

/// One hit of one detector.
struct FaceDetection {
    cv::Rect rect;        ///< Face box in pixels of the whole gray frame.
    std::string detector; ///< "frontal", "profile_left" or "profile_right"; from a body region with
                          ///< "+far_crop" appended.
};

/// Loads a Haar cascade. False when the file is missing, empty, damaged, of another kind or not a
/// regular file; never throws. It is searched by CascadeSearch where that is known to find the
/// same; otherwise by the library, and an information line says so.
bool loadCascade(cv::CascadeClassifier& cascade, const std::string& path);

namespace face {

/// Intersection over union of two boxes, 0 to 1; 0 when either has no area or they do not meet.
double rectIou(const cv::Rect& a, const cv::Rect& b);

} // namespace face

/// Rank of a detector among hits of equal size: 3 for exactly "frontal", 2 for exactly
/// "profile_left" or "profile_right", 1 for anything else, names with "+far_crop" included.
int detectorPriority(const std::string& detector);

/// Runs one cascade over one 8-bit gray image and returns the hits in full-resolution pixels, in
/// the cascade's order. The image is shrunk by `detectScale` when that is below 1.0; otherwise it
/// is searched as it is, and then its own pixels are equalized in place. Throws cv::Exception where
/// OpenCV does, for example for an image of another type.
std::vector<cv::Rect> detectFaces(cv::CascadeClassifier& cascade, cv::Mat& gray,
                                  const face::Options& options);

/// Runs the detectors that `options.detector` selects over one 8-bit gray image and returns their
/// merged hits. A null profile cascade skips the profile
/// detectors. What detectors need in common is made once, with the same pixels as if detectFaces()
/// had made it for each; `gray` is changed as detectFaces() says. `stop` is asked before each
/// detector, and ends the search with what was found so far.
std::vector<FaceDetection> detectFacesMulti(cv::CascadeClassifier& frontalCascade,
                                            cv::CascadeClassifier* profileCascade, cv::Mat& gray,
                                            const face::Options& options,
                                            const std::stop_token& stop = {});

/// Searches the upper part of each body, enlarged, so that small faces of people far from the
/// sensor are found. `bodyRegions` are in pixels of `gray`, which is not changed; regions outside
/// it, or too small after clipping, are skipped. Returns the merged hits in pixels of `gray`.
std::vector<FaceDetection> detectFacesInBodyRegions(cv::CascadeClassifier& frontalCascade,
                                                    cv::CascadeClassifier* profileCascade,
                                                    const cv::Mat& gray,
                                                    const face::Options& options,
                                                    const QList<QRect>& bodyRegions,
                                                    const std::stop_token& stop = {});

/// Merges hits that mean the same face (intersection over union of 0.35 and more). Larger boxes
/// come first, at equal size the detector with the higher priority.
std::vector<FaceDetection> dedupeDetections(std::vector<FaceDetection> detections);
