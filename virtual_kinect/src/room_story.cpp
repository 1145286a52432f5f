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

constexpr double outsideRight = 2.9, outsideLeft = -2.9, doorDistance = 2.3;

constexpr std::array ownerPath{
    Waypoint{ownerWalksIn.from, outsideRight, doorDistance, -sidewaysDegrees},
    Waypoint{5.5, 0, standingDistance, -sidewaysDegrees},
    Waypoint{ownerFrontal.from, 0, standingDistance, 0},
    Waypoint{ownerFrontal.to, 0, standingDistance, 0},
    Waypoint{ownerVeryClose.from, 0, closeDistance, 0},
    Waypoint{ownerVeryClose.to, 0, closeDistance, 0},
    Waypoint{ownerFrontalAgain.from, 0, standingDistance, 0},
    Waypoint{ownerFrontalAgain.to, 0, standingDistance, 0},
    Waypoint{ownerProfileLeft.from, 0, standingDistance, -sidewaysDegrees},
    Waypoint{ownerProfileLeft.to, 0, standingDistance, -sidewaysDegrees},
    Waypoint{ownerProfileRight.from, 0, standingDistance, sidewaysDegrees},
    Waypoint{ownerProfileRight.to, 0, standingDistance, sidewaysDegrees},
    Waypoint{ownerFrontalThird.from, 0, standingDistance, 0},
    Waypoint{ownerFrontalThird.to, 0, standingDistance, 0},
    Waypoint{35.0, 0, standingDistance, sidewaysDegrees},
    Waypoint{37.2, outsideRight, doorDistance, sidewaysDegrees},
    Waypoint{40.8, outsideRight, doorDistance, -sidewaysDegrees},
    Waypoint{42.8, ownerBesideX, standingDistance, -sidewaysDegrees},
    Waypoint{ownerReturned.from, ownerBesideX, standingDistance, 0},
    Waypoint{ownerReturned.to, ownerBesideX, standingDistance, 0},
    Waypoint{57.5, ownerBesideX, standingDistance, sidewaysDegrees},
    Waypoint{strangerAlone.from, outsideRight, doorDistance, sidewaysDegrees}};

constexpr std::array strangerPath{
    Waypoint{46.0, outsideLeft, doorDistance, sidewaysDegrees},
    Waypoint{48.3, strangerX, standingDistance, sidewaysDegrees},
    Waypoint{bothFrontal.from, strangerX, standingDistance, 0},
    Waypoint{strangerAlone.to, strangerX, standingDistance, 0},
    Waypoint{71.8, strangerX, standingDistance, -sidewaysDegrees},
    Waypoint{emptyAtLast.from, outsideLeft, doorDistance, -sidewaysDegrees}};

constexpr double stepCycle_m = 1.35; ///< two steps of a calm walk

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
        const double cycles = length * eased / stepCycle_m;
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
    constexpr auto frames = static_cast<std::uint64_t>(loopSeconds * framesPerSecond);
    return static_cast<double>(number % frames) / framesPerSecond;
}

std::vector<PersonMoment> peopleAt(double seconds) {
    std::vector<PersonMoment> people;
    if (const auto owner = momentOn(ownerPath, Person::Owner, seconds))
        people.push_back(*owner);
    if (const auto stranger = momentOn(strangerPath, Person::Stranger, seconds))
        people.push_back(*stranger);
    std::ranges::sort(people, std::ranges::greater{}, &PersonMoment::z_m);
    return people;
}

} // namespace virtual_kinect::room
