#include "room_story.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <optional>
#include <span>

namespace virtual_kinect::room {
namespace {

struct Waypoint {
    double seconds, x_m, z_m, yawDegrees;
};

constexpr double kOutsideRight = 2.9, kOutsideLeft = -2.9, kDoorDistance = 2.3;

constexpr std::array kOwnerPath{
    Waypoint{kOwnerWalksIn.from, kOutsideRight, kDoorDistance, -kSidewaysDegrees},
    Waypoint{5.5, 0, kStandingDistance, -kSidewaysDegrees},
    Waypoint{kOwnerFrontal.from, 0, kStandingDistance, 0},
    Waypoint{kOwnerFrontal.to, 0, kStandingDistance, 0},
    Waypoint{kOwnerVeryClose.from, 0, kCloseDistance, 0},
    Waypoint{kOwnerVeryClose.to, 0, kCloseDistance, 0},
    Waypoint{kOwnerFrontalAgain.from, 0, kStandingDistance, 0},
    Waypoint{kOwnerFrontalAgain.to, 0, kStandingDistance, 0},
    Waypoint{kOwnerProfileLeft.from, 0, kStandingDistance, -kSidewaysDegrees},
    Waypoint{kOwnerProfileLeft.to, 0, kStandingDistance, -kSidewaysDegrees},
    Waypoint{kOwnerProfileRight.from, 0, kStandingDistance, kSidewaysDegrees},
    Waypoint{kOwnerProfileRight.to, 0, kStandingDistance, kSidewaysDegrees},
    Waypoint{kOwnerFrontalThird.from, 0, kStandingDistance, 0},
    Waypoint{kOwnerFrontalThird.to, 0, kStandingDistance, 0},
    Waypoint{35.0, 0, kStandingDistance, kSidewaysDegrees},
    Waypoint{37.2, kOutsideRight, kDoorDistance, kSidewaysDegrees},
    Waypoint{40.8, kOutsideRight, kDoorDistance, -kSidewaysDegrees},
    Waypoint{42.8, kOwnerBesideX, kStandingDistance, -kSidewaysDegrees},
    Waypoint{kOwnerReturned.from, kOwnerBesideX, kStandingDistance, 0},
    Waypoint{kOwnerReturned.to, kOwnerBesideX, kStandingDistance, 0},
    Waypoint{57.5, kOwnerBesideX, kStandingDistance, kSidewaysDegrees},
    Waypoint{kStrangerAlone.from, kOutsideRight, kDoorDistance, kSidewaysDegrees}};

constexpr std::array kStrangerPath{
    Waypoint{46.0, kOutsideLeft, kDoorDistance, kSidewaysDegrees},
    Waypoint{48.3, kStrangerX, kStandingDistance, kSidewaysDegrees},
    Waypoint{kBothFrontal.from, kStrangerX, kStandingDistance, 0},
    Waypoint{kStrangerAlone.to, kStrangerX, kStandingDistance, 0},
    Waypoint{71.8, kStrangerX, kStandingDistance, -kSidewaysDegrees},
    Waypoint{kEmptyAtLast.from, kOutsideLeft, kDoorDistance, -kSidewaysDegrees}};

constexpr double kStepCycle_m = 1.35; ///< two steps of a calm walk

double wave(double seconds, double period) {
    return std::sin(2 * std::numbers::pi * seconds / period);
}

std::optional<PersonMoment> momentOn(std::span<const Waypoint> path, Person who, double seconds) {
    if (seconds < path.front().seconds || seconds >= path.back().seconds)
        return std::nullopt;
    const auto next = std::ranges::upper_bound(path, seconds, {}, &Waypoint::seconds);
    const Waypoint &a = *(next - 1), &b = *next;
    const double t = (seconds - a.seconds) / (b.seconds - a.seconds);
    const double eased = t * t * (3 - 2 * t);

    PersonMoment moment;
    moment.who = who;
    moment.x_m = std::lerp(a.x_m, b.x_m, eased);
    moment.z_m = std::lerp(a.z_m, b.z_m, eased);
    moment.yaw = std::lerp(a.yawDegrees, b.yawDegrees, eased) * std::numbers::pi / 180;
    const double length = std::hypot(b.x_m - a.x_m, b.z_m - a.z_m);
    if (length > 0) {
        const double cycles = length * eased / kStepCycle_m;
        moment.stride = cycles - std::floor(cycles);
        moment.lift_m = 0.015 * std::abs(wave(moment.stride, 1.0));
    }
    // Nobody stands like a post: a slow sway, and breathing.
    moment.x_m += 0.010 * wave(seconds, 3.1) + 0.005 * wave(seconds, 1.7);
    moment.z_m += 0.018 * wave(seconds, 4.3);
    moment.lift_m += 0.003 * wave(seconds, 3.7);
    return moment;
}

} // namespace

double storySeconds(std::uint64_t number) {
    constexpr auto frames = static_cast<std::uint64_t>(kLoopSeconds * kFramesPerSecond);
    return static_cast<double>(number % frames) / kFramesPerSecond;
}

std::vector<PersonMoment> peopleAt(double seconds) {
    std::vector<PersonMoment> people;
    if (const auto owner = momentOn(kOwnerPath, Person::Owner, seconds))
        people.push_back(*owner);
    if (const auto stranger = momentOn(kStrangerPath, Person::Stranger, seconds))
        people.push_back(*stranger);
    std::ranges::sort(people, std::ranges::greater{}, &PersonMoment::z_m);
    return people;
}

} // namespace virtual_kinect::room
