#pragma once

#include "frame_source.h"

namespace virtual_kinect {

/// How the frames of a source are played.
struct Replay {
    bool once = false;  ///< nothing comes after the last frame of the first round
    double start_s = 0; ///< time in the source at which the playing begins
    double speed = 1;   ///< above 1 faster than the source's own times

    bool operator==(const Replay&) const = default;
};

/// Plays `source` that way. Throws std::exception when it ends before the wanted start.
std::unique_ptr<FrameSource> makeReplayedSource(std::unique_ptr<FrameSource> source,
                                                const Replay& replay);

} // namespace virtual_kinect
