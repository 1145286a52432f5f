#pragma once

#include "frame_source.h"

namespace virtual_kinect {

/// The source that `wanted` names: nothing when it is empty, "room" for the built-in room, else the
/// folder of a recording. Null, after one error line, when that cannot be shown. Throws nothing.
std::unique_ptr<FrameSource> makeAttachedSource(const std::string& wanted);

} // namespace virtual_kinect
