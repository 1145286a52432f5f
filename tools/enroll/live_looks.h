#pragma once

#include "enroll/frame_look.h"

#include <functional>
#include <optional>

namespace tool {
class Console;
}

namespace enroll {

/// Opens the sensor and hands every look to `onLook` until it returns true, `seconds` have passed
/// since the first picture, or the person ends it. Returns the exit status to end with when the
/// sensor failed, after a complaint; nothing otherwise. Turns events.
std::optional<int> watchSensor(const Detectors& detectors, int seconds, tool::Console& console,
                               const std::function<bool(const FrameLook&)>& onLook);

} // namespace enroll
