#include "enroll/stations.h"

#include <array>

namespace enroll {

using namespace Qt::StringLiterals;

namespace {

// The straight look is what recognition meets most, so it is wanted twice.
constexpr int straightLooks = 2;

constexpr std::array stationTable{
    Station{Distance::Near, Pose::Front, 1, straightLooks},
    Station{Distance::Near, Pose::ChinUp},
    Station{Distance::Near, Pose::ChinDown},
    Station{Distance::Near, Pose::TurnedLeft},
    Station{Distance::Near, Pose::TurnedRight},
    Station{Distance::Near, Pose::ProfileLeft},
    Station{Distance::Near, Pose::ProfileRight},
    Station{Distance::Middle, Pose::Front, 1, straightLooks},
    Station{Distance::Middle, Pose::ChinUp},
    Station{Distance::Middle, Pose::ChinDown},
    Station{Distance::Middle, Pose::TurnedLeft},
    Station{Distance::Middle, Pose::TurnedRight},
    Station{Distance::Middle, Pose::ProfileLeft},
    Station{Distance::Middle, Pose::ProfileRight},
    Station{Distance::Far, Pose::Front, 1, straightLooks},
    Station{Distance::Far, Pose::ChinUp},
    Station{Distance::Far, Pose::ChinDown},
    Station{Distance::Far, Pose::TurnedLeft},
    Station{Distance::Far, Pose::TurnedRight},
    Station{Distance::Far, Pose::Front, 2, straightLooks},
    Station{Distance::Middle, Pose::Front, 2, straightLooks},
    Station{Distance::Near, Pose::Front, 2, straightLooks},
};

QString placeWords(Distance distance) {
    switch (distance) {
    case Distance::Near:
        return u"Stand about 1 m from the sensor"_s;
    case Distance::Middle:
        return u"Stand about 1.4 m from the sensor"_s;
    case Distance::Far:
        break;
    }
    return u"Stand about 2 m from the sensor"_s;
}

QString poseWords(Pose pose) {
    switch (pose) {
    case Pose::Front:
        return u"look straight at it"_s;
    case Pose::ChinUp:
        return u"lift your chin a little"_s;
    case Pose::ChinDown:
        return u"lower your chin a little"_s;
    case Pose::TurnedLeft:
        return u"turn your head a little to your left"_s;
    case Pose::TurnedRight:
        return u"turn your head a little to your right"_s;
    // The sensor's picture is not mirrored: a face that looks to the picture's left looks to its
    // own right.
    case Pose::ProfileLeft:
        return u"turn your head to your right until only your left cheek shows"_s;
    case Pose::ProfileRight:
        break;
    }
    return u"turn your head to your left until only your right cheek shows"_s;
}

} // namespace

std::span<const Station> allStations() {
    return stationTable;
}

QString poseName(Pose pose) {
    switch (pose) {
    case Pose::Front:
        return u"front"_s;
    case Pose::ChinUp:
        return u"chin-up"_s;
    case Pose::ChinDown:
        return u"chin-down"_s;
    case Pose::TurnedLeft:
        return u"turned-left"_s;
    case Pose::TurnedRight:
        return u"turned-right"_s;
    case Pose::ProfileLeft:
        return u"profile-left"_s;
    case Pose::ProfileRight:
        break;
    }
    return u"profile-right"_s;
}

bool poseMatches(Pose pose, const std::string& detector) {
    switch (pose) {
    case Pose::ProfileLeft:
        return detector == "profile_left";
    case Pose::ProfileRight:
        return detector == "profile_right";
    default:
        return detector == "frontal";
    }
}

QString stationName(const Station& station) {
    return distanceName(station.distance) + u'-' + poseName(station.pose);
}

QString stationPrompt(const Station& station) {
    const QString prompt =
        placeWords(station.distance) + u" and "_s + poseWords(station.pose) + u'.';
    return station.light == 1
               ? prompt
               : u"Change the light with a lamp: "_s + prompt.at(0).toLower() + prompt.mid(1);
}

} // namespace enroll
