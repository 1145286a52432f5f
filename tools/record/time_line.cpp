#include "record/time_line.h"

namespace record {

namespace {

/// 30 frames a second.
constexpr std::int64_t frameDistance = 267;

} // namespace

std::int64_t TimeLine::advance(std::uint32_t stamp) {
    if (!newestStamp) {
        newestStamp = stamp;
        return 0;
    }
    const std::int64_t time = beside(stamp);
    if (time > newestTime) {
        newestTime = time;
    } else {
        newestTime += frameDistance;
        ++repairs;
    }
    newestStamp = stamp;
    return newestTime;
}

std::int64_t TimeLine::beside(std::uint32_t stamp) const {
    // The difference of 32 bits is right across the place where the stamps begin again.
    return newestTime + static_cast<std::int32_t>(stamp - newestStamp.value_or(stamp));
}

} // namespace record
