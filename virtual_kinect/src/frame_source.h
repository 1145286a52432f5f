#pragma once

#include "calibration_file.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace virtual_kinect {

/// The three pictures of one moment, rows from top to bottom without padding.
struct FrameSet {
    int colorWidth = 0;
    int colorHeight = 0;
    std::vector<std::uint8_t> bgrx; ///< colorWidth x colorHeight x 4 bytes
    int depthWidth = 0;
    int depthHeight = 0;
    std::vector<float> infrared; ///< depthWidth x depthHeight, 0 to 65535
    std::vector<float> depth;    ///< depthWidth x depthHeight, millimetres, 0 without a reading
};

/// What a virtual device shows: a function from the frame number to pictures, so that every run
/// shows the same.
class FrameSource {
public:
    virtual ~FrameSource() = default;

    virtual std::string serialNumber() const = 0;
    /// How its cameras see; typical values where that is not known.
    virtual Calibration calibration() const = 0;
    /// After so many frames what is shown begins again.
    virtual std::uint64_t framesInARound() const = 0;
    /// Whether nothing is shown from frame `number` on.
    virtual bool ends(std::uint64_t /*number*/) const { return false; }
    /// When frame `number` is due, counted from the start of the streams; rises with the number.
    virtual std::chrono::microseconds timeOf(std::uint64_t number) const = 0;
    /// Fills `out` wholly with frame `number`, using its buffers again; they may hold anything
    /// before. Throws std::exception when the frame cannot be had. Called by one thread at a time,
    /// with rising numbers that may leave some out.
    virtual void render(std::uint64_t number, FrameSet& out) = 0;
};

/// The built-in room, with the serial number "virtual-room".
std::unique_ptr<FrameSource> makeRoomSource();

} // namespace virtual_kinect
