#pragma once

#include "frame_source.h"

#include <filesystem>

namespace virtual_kinect {

/// Plays the recording in a folder in a loop. Throws std::exception, with a text for a person, when
/// the recording is incomplete or damaged, or its first frame cannot be decoded.
std::unique_ptr<FrameSource> makeRecordingSource(const std::filesystem::path& folder);

} // namespace virtual_kinect
