#pragma once

#include "calibration_file.h"
#include "export/camera.h"
#include "export/recorded_moments.h"

#include <opencv2/core/mat.hpp>

#include <QString>

#include <memory>

namespace exporting {

/// The depth camera's view of one moment without distortion, with a colour for each depth pixel.
struct RegisteredPictures {
    cv::Mat color; ///< 8-bit BGR of the depth picture's size; empty in a recording without colour
    cv::Mat depth; ///< 16-bit millimetres, 0 where there is no reading
};

/// Takes the distortion out of the depth and finds each depth pixel's colour.
class Registration {
public:
    virtual ~Registration() = default;

    /// How it is done, for the person.
    virtual QString description() const = 0;
    virtual RegisteredPictures apply(const RecordedPictures& recorded) const = 0;
};

/// For cameras without distortion that look through the same place, as the stand-in's room is drawn
/// and as test pictures are made. Null when the calibration is another.
std::unique_ptr<Registration> makePinholeRegistration(const RecordedMoments& recording);

/// For a sensor's cameras, by libfreenect2. Null in builds without that library.
std::unique_ptr<Registration> makeSensorRegistration(const RecordedMoments& recording);

/// The depth camera of a recording as it is recorded, mirrored perhaps.
Camera depthCamera(const RecordedMoments& recording);

/// Exchanges left and right, so that what is left of the sensor gets a negative x.
RegisteredPictures mirrored(const RegisteredPictures& pictures);
Camera mirrored(Camera camera);

} // namespace exporting
