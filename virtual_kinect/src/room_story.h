#pragma once

#include <cstdint>
#include <vector>

/// What happens in the built-in room, when and where: a loop that tests can rely on.
///
/// Places are metres seen from the sensor: x to the right in the picture, z in front; angles are
/// radians, 0 facing the sensor, positive turned towards the picture's right.
namespace virtual_kinect::room {

constexpr int framesPerSecond = 30;
/// Length of the story; frame n shows the moment n modulo this.
constexpr double loopSeconds = 76.0;

/// A stretch of the story, in seconds from its beginning.
struct Span {
    double from = 0, to = 0;
};

constexpr Span emptyAtFirst{0.0, 3.0};
constexpr Span ownerWalksIn{3.0, 6.1};
constexpr Span ownerFrontal{6.1, 15.0};    ///< at standingDistance
constexpr Span ownerVeryClose{17.0, 20.0}; ///< at closeDistance
constexpr Span ownerFrontalAgain{22.0, 23.0};
constexpr Span ownerProfileLeft{23.6, 26.1};
constexpr Span ownerProfileRight{27.3, 29.8};
constexpr Span ownerFrontalThird{30.4, 34.5};
constexpr Span ownerAway{36.8, 41.2}; ///< nobody is in sight
constexpr Span ownerReturned{43.4, 57.0};
constexpr Span bothFrontal{48.9, 57.0};
constexpr Span strangerAlone{59.2, 71.2};
constexpr Span emptyAtLast{74.0, loopSeconds};

constexpr double standingDistance = 1.95, closeDistance = 0.85;
/// Where the two stand while both are in the room.
constexpr double ownerBesideX = 0.65, strangerX = -0.70;

/// How far people turn when they walk or show their profile: a little short of a right angle, since
/// nobody turns exactly square to a camera, and the profile detector finds such faces best.
constexpr double sidewaysDegrees = 78;

enum class Person { Owner, Stranger };

/// One person at one moment.
struct PersonMoment {
    Person who = Person::Owner;
    double x_m = 0, z_m = 0;
    double lift_m = 0; ///< of the whole body, from walking and breathing
    double yaw = 0;
    double stride = -1; ///< phase of the step from 0 to below 1; negative while standing
};

/// Seconds from the story's beginning that frame `number` shows, 0 to below loopSeconds.
double storySeconds(std::uint64_t number);

/// Who is in or near the picture at a moment of the story, farthest first.
std::vector<PersonMoment> peopleAt(double seconds);

} // namespace virtual_kinect::room
