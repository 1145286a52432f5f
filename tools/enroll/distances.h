#pragma once

#include <QString>

#include <array>
#include <optional>

namespace enroll {

/// How far the owner stands from the sensor, told by the side of the face's box.
enum class Distance { Near, Middle, Far };

inline constexpr std::array allDistances{Distance::Near, Distance::Middle, Distance::Far};

/// Sides of the detector's box that count as one distance, in pixels, both inclusive.
struct SideRange {
    int least = 0;
    int most = 0;
};

/// Between two ranges lies a gap, so that samples of two distances really differ.
SideRange sidesOf(Distance distance);

/// The distance whose range holds the side; nothing in a gap, nearer or farther.
std::optional<Distance> distanceOf(int sidePx);

/// The distance whose range is nearest to the side, for pictures that cannot be taken again.
Distance nearestDistance(int sidePx);

/// "near", "middle", "far": part of the samples' names.
QString distanceName(Distance distance);
std::optional<Distance> distanceNamed(const QString& name);

/// Side of the detector's box in pixels times the distance in metres: a face's box is about 18 cm
/// wide, and the sensor's colour camera has a focal length of about 1066 pixels.
inline constexpr double boxPixelMeters = 192.0;

/// Where the box of a face has that side, in metres.
double metersForSide(int sidePx);

} // namespace enroll
