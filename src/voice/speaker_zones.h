#pragma once

#include <optional>

/// The view from left to right in six equal zones. A voice comes from one of them, and everything
/// in the picture stands in one: the lights of a tile and the notes on people go by the same zones.
namespace speakerZones {

inline constexpr int count = 6;

/// The zone, 0 (left) to 5 (right), of a place between the view's left edge, 0.0, and its right
/// edge, 1.0. What lies outside is in the outermost zone; none for what is not a number.
std::optional<int> ofPosition(double position);

/// The zone of a voice from `angleDegrees`, -60 at the view's left edge and +60 at its right;
/// mirrored when `inverted`.
std::optional<int> ofVoice(double angleDegrees, bool inverted);

} // namespace speakerZones
