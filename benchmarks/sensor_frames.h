#pragma once

#include "kinect/frame_conversion.h"

#include <vector>

/// One frame set of the sensor's sizes, as it delivers them: noise for colour, and smooth surfaces
/// with noise and a tenth of the pixels without a reading for infrared and depth. The same in every
/// run.
struct SensorFrames {
    using Bytes = std::vector<unsigned char>;

    SensorFrames();

    FrameView colorView() const;
    FrameView infraredView() const;
    FrameView depthView() const;

    Bytes color;    ///< BGRX.
    Bytes infrared; ///< Floats.
    Bytes depth;    ///< Floats, millimetres.
};
