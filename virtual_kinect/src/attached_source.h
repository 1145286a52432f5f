#pragma once

#include "replay.h"

namespace virtual_kinect {

/// The source that `wanted` names: nothing when it is empty, "room" for the built-in room, else the
/// folder of a recording; played as `replay` says. Null, after one error line, when that cannot be
/// shown. Throws nothing.
std::unique_ptr<FrameSource> makeAttachedSource(const std::string& wanted,
                                                const Replay& replay = {});

} // namespace virtual_kinect
