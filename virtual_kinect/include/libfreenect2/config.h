#pragma once

// What a build of the sensor library says about itself. This one always has standard C++ threading,
// so that a timed wait ends in time; it has no hardware pipelines.

#define LIBFREENECT2_VERSION "0.2.0"
#define LIBFREENECT2_API_VERSION ((0 << 16) | 2)
#define LIBFREENECT2_THREADING_STDLIB
#define LIBFREENECT2_WITH_CXX11_SUPPORT
#define LIBFREENECT2_API
