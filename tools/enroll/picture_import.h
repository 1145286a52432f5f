#pragma once

#include "enroll/sitting.h"

#include <QString>
#include <variant>

namespace enroll {

/// A photograph as the sensor would have taken it: turned upright, in grey, and no larger than the
/// sensor's frames, since the limits of sharpness hold for those. One sentence instead when the
/// file is no picture, is damaged, or is larger than 64 megapixels.
std::variant<cv::Mat, QString> readPhotograph(const QString& path);

/// Cuts the one face of a photograph as the program cuts it. One sentence with the cure instead
/// when there is none, several, or one that is not good enough. `timeMs` is when it is imported.
std::variant<KeptSample, QString> sampleFromPicture(const QString& path, Detectors& detectors,
                                                    qint64 timeMs);

} // namespace enroll
