#pragma once

#include <filesystem>
#include <map>
#include <string>

namespace virtual_kinect {

/// What is known about the cameras of a recording or of the room. The values have the names of
/// libfreenect2's members, see camera_fields.h; those that are not given are 0.
struct Calibration {
    std::map<std::string, float> infrared;
    std::map<std::string, float> color;
    bool mirrored = true; ///< left and right are exchanged in the pictures, as sensors deliver them
    std::string serial;
};

/// Typical values of a sensor.
Calibration typicalCalibration();

/// Reads a recording's calibration.json. Throws std::exception, with a text for a person, when it
/// cannot be read, or a camera's focal lengths are not there.
Calibration readCalibration(const std::filesystem::path& file);

} // namespace virtual_kinect
