#pragma once

#include "enroll/distances.h"

#include <QString>
#include <span>
#include <string>

namespace enroll {

/// How the owner holds the head. The profiles are named as their detectors are.
enum class Pose { Front, ChinUp, ChinDown, TurnedLeft, TurnedRight, ProfileLeft, ProfileRight };

/// One thing that the owner is asked to do.
struct Station {
    Distance distance = Distance::Near;
    Pose pose = Pose::Front;
    int light = 1;  ///< 1, or 2 after the light in the room was changed.
    int wanted = 1; ///< Samples that fill it.
};

/// All stations in the order in which they are asked for: near, middle, far, and then back again in
/// a second light. They hold 28 samples when all are filled.
std::span<const Station> allStations();

/// Longest that a station is asked for, in milliseconds.
inline constexpr qint64 stationTimeoutMs = 20000;

/// "front", "chin-up", "profile-left": part of the samples' names.
QString poseName(Pose pose);

/// Whether a hit of this detector can be this pose. Only frontal faces and the two profiles can be
/// told apart; small turns of the head are believed.
bool poseMatches(Pose pose, const std::string& detector);

/// "near-front", the beginning of a sample's name.
QString stationName(const Station& station);

/// What the owner is asked to do, as one sentence.
QString stationPrompt(const Station& station);

} // namespace enroll
