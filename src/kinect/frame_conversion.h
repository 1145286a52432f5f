#pragma once

#include <QImage>
#include <QList>

#include <cstddef>

struct FrameKernels;

/// A sensor frame as plain memory: row-major pixels without gaps, owned by somebody else.
struct FrameView {
    const unsigned char* data = nullptr; ///< Needs no alignment.
    std::size_t width = 0;               ///< In pixels.
    std::size_t height = 0;              ///< In pixels.
    std::size_t bytesPerPixel = 0;
    bool rgbx = false; ///< Colour pixels are R, G, B, X instead of B, G, R, X.
};

/// Whether the frame has data, a size and four bytes per pixel. What is not usable gives a null
/// image from each of the functions below, as does a size that QImage cannot hold.
bool isUsable(const FrameView& frame);

/// Turns frames into RGB888 images of the frame's own size, neither scaled nor mirrored, and keeps
/// nothing from one frame to the next. The images' memory comes from PicturePool and is the
/// receiver's to write until it becomes a StreamFrame.
class FrameConverter {
public:
    /// Converts with the fastest kernels of this processor.
    FrameConverter();
    /// Converts with `chosen` kernels, which must outlive the converter. All give the same bytes.
    explicit FrameConverter(const FrameKernels& chosen);

    /// The colour frame: R, G, B of every pixel as delivered; the fourth byte is dropped.
    QImage color(const FrameView& frame) const;

    /// The infrared frame (one float per pixel, raw intensity) as a grey image.
    ///
    /// 1. A value is valid when it is finite and greater than 0; invalid ones are black.
    /// 2. The grey range starts at the smallest valid value. It ends at the largest, unless that
    ///    lies above both 85 % of the way to it and 1200 above the smallest: then the range ends at
    ///    the higher of these two, and what is above is saturated.
    /// 3. Values are spread evenly over 0 to 255 and truncated. A range of 1 or less is not
    ///    stretched any further than 255 to the unit.
    ///
    /// Null when no value is valid or all valid values are equal. Computed in double precision.
    QImage infrared(const FrameView& frame) const;

    /// The depth frame (one float per pixel, millimetres) on the jet colour ramp: dark red up to
    /// 500 mm, dark blue from 4500 mm on, black where the value is not finite or outside 250 to
    /// 8000 mm. Null when no pixel is inside. Computed in single precision.
    QImage depth(const FrameView& frame) const;

    /// The depth frame's values, unchanged: width x height floats, row-major, in millimetres, 0
    /// where there is no reading. Empty when the frame is not usable; whether any value is valid
    /// does not matter.
    QList<float> rawDepth(const FrameView& frame) const;

private:
    const FrameKernels& kernels;
};
