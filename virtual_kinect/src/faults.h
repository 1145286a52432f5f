#pragma once

#include "replay.h"

#include <chrono>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace virtual_kinect {

/// What goes wrong with the frames of some streams for a while.
struct FrameFault {
    enum Kind { Missing, NullData, WrongBytes, ZeroSize, Rgbx };

    Kind kind = Missing;
    unsigned int streams = 0; ///< libfreenect2::Frame::Type values combined with or
    std::uint64_t first = 0;
    std::uint64_t last = std::numeric_limits<std::uint64_t>::max(); ///< inclusive
};

/// What `throws=start` throws: like an exception of a graphics driver, none of the standard
/// library's.
struct ThrownAtStart {};

/// What goes wrong with a device.
struct Faults {
    bool noPermission = false;
    bool busy = false;
    bool throwsAtOpen = false;
    bool throwsAtStart = false;
    bool startFails = false;
    std::chrono::milliseconds slowStart{0};
    std::chrono::milliseconds slowStop{0};
    std::chrono::milliseconds slowClose{0};
    std::optional<std::uint64_t> unpluggedAt;
    std::uint64_t depthLate = 0; ///< How many frames infrared and depth come after colour.
    std::vector<FrameFault> frames;
    Replay replay; ///< no fault, but named in the same list

    /// Whether a fault of this kind holds for a stream's frame `number`.
    bool holds(FrameFault::Kind kind, unsigned int stream, std::uint64_t number) const;
};

/// Reads a comma list of faults; README.md has the words. A word that is none is left out and adds
/// one sentence about it to `complaints`.
Faults parseFaults(std::string_view list, std::vector<std::string>& complaints);

} // namespace virtual_kinect
