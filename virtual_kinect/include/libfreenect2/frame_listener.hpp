#pragma once

#include <libfreenect2/config.h>

#include <cstddef>
#include <cstdint>

namespace libfreenect2 {

/// One picture of one stream, rows from top to bottom without padding.
class LIBFREENECT2_API Frame {
public:
    /// The streams, combinable as bits.
    enum Type {
        Color = 1, ///< 1920x1080 from a sensor, BGRX or RGBX
        Ir = 2,    ///< 512x424 from a sensor, float, 0 to 65535
        Depth = 4  ///< 512x424 from a sensor, float millimetres; 0 where there is no reading
    };

    /// What the bytes of a pixel are. Informative: `status` tells errors.
    enum Format { Invalid = 0, Raw = 1, Float = 2, BGRX = 4, RGBX = 5, Gray = 6 };

    std::size_t width;
    std::size_t height;
    std::size_t bytes_per_pixel;
    unsigned char* data;     ///< 16-byte aligned; null in a broken frame
    std::uint32_t timestamp; ///< in units of 0.125 ms, from the start of the streams
    std::uint32_t sequence;  ///< frame number, from 0; equal in the frames of one moment
    float exposure;
    float gain;
    float gamma;
    std::uint32_t status; ///< 0 when the frame is good
    Format format;

    /// A frame of width x height pixels, with uninitialised memory of its own unless `memory` is
    /// given; given memory stays its giver's and must outlive the frame.
    Frame(std::size_t width, std::size_t height, std::size_t bytes_per_pixel,
          unsigned char* memory = nullptr);
    virtual ~Frame();
    Frame(const Frame&) = delete;
    Frame& operator=(const Frame&) = delete;

protected:
    unsigned char* rawdata; ///< the frame's own memory; null when it was given
};

/// Receives frames from a device.
class LIBFREENECT2_API FrameListener {
public:
    virtual ~FrameListener();

    /// Called on the device's thread for each new frame. Returns true to keep the frame, which must
    /// then be deleted by the listener; with false it stays the device's and must not be used
    /// again.
    virtual bool onNewFrame(Frame::Type type, Frame* frame) = 0;
};

} // namespace libfreenect2
