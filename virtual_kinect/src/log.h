#pragma once

#include <libfreenect2/logger.h>

#include <string>

namespace virtual_kinect {

/// Hands "[virtual kinect] <text>" to the logger in use.
void log(libfreenect2::Logger::Level level, const std::string& text);

} // namespace virtual_kinect
