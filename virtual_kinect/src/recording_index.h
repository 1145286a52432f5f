#pragma once

#include "calibration_file.h"

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

namespace virtual_kinect {

/// The pictures of one moment of a recording.
struct RecordedMoment {
    std::filesystem::path color; ///< empty when the recording has none
    std::filesystem::path depth;
    std::filesystem::path infrared;    ///< empty when the recording has none
    std::chrono::microseconds time{0}; ///< since the first moment
};

/// What a recording's folder holds.
struct RecordingIndex {
    std::string name; ///< of the folder
    std::vector<RecordedMoment> moments;
    std::chrono::microseconds period{0}; ///< from the first moment to its return in the loop
    int colorWidth = 0;
    int colorHeight = 0; ///< both a sensor's when the recording has no colour
    int depthWidth = 0;  ///< also of the infrared pictures
    int depthHeight = 0;
    Calibration calibration; ///< typical values when the recording has none
};

/// Reads what is in a folder and looks at every picture's header. Throws std::exception, with a
/// text for a person, when the recording is incomplete or damaged: README.md has the rules.
RecordingIndex readRecordingIndex(const std::filesystem::path& folder);

} // namespace virtual_kinect
