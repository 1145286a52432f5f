#include "voice/speaker_zones.h"

#include <cmath>

namespace {

constexpr double halfViewDegrees = 60.0;
constexpr double lastZoneFrom = 0.999;

} // namespace

std::optional<int> speakerZones::ofPosition(double position) {
    if (std::isnan(position))
        return std::nullopt;
    if (position < 0.0)
        return 0;
    return position > lastZoneFrom ? count - 1 : int(count * position);
}

std::optional<int> speakerZones::ofVoice(double angleDegrees, bool inverted) {
    const std::optional<int> zone =
        ofPosition((angleDegrees + halfViewDegrees) / (2 * halfViewDegrees));
    return zone && inverted ? count - 1 - *zone : zone;
}
