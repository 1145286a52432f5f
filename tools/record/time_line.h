#pragma once

#include <cstdint>
#include <optional>

namespace record {

/// The sensor's time stamps count eighths of a millisecond in 32 bits.
inline constexpr double msPerStamp = 0.125;

/// Makes rising times of a sensor's time stamps, which start anywhere and begin again at 0 after
/// six days. A time stamp that does not rise, since the sensor started its clock anew, becomes the
/// time before and one frame's distance, so that a recording goes on.
class TimeLine {
public:
    /// Time of the frame with that stamp, in stamps since the first.
    std::int64_t advance(std::uint32_t stamp);
    /// Time of another frame of the same moment, which may be before or after.
    std::int64_t beside(std::uint32_t stamp) const;
    /// How many stamps did not rise.
    int repaired() const { return repairs; }

private:
    std::optional<std::uint32_t> newestStamp;
    std::int64_t newestTime = 0;
    int repairs = 0;
};

} // namespace record
