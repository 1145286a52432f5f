#include "enroll/distances.h"

#include <algorithm>
#include <cstdlib>

namespace enroll {

using namespace Qt::StringLiterals;

SideRange sidesOf(Distance distance) {
    switch (distance) {
    case Distance::Near:
        return {170, 240};
    case Distance::Middle:
        return {115, 165};
    case Distance::Far:
        break;
    }
    return {84, 110};
}

std::optional<Distance> distanceOf(int sidePx) {
    for (const Distance distance : allDistances) {
        const SideRange sides = sidesOf(distance);
        if (sidePx >= sides.least && sidePx <= sides.most)
            return distance;
    }
    return std::nullopt;
}

Distance nearestDistance(int sidePx) {
    const auto gap = [sidePx](Distance distance) {
        const SideRange sides = sidesOf(distance);
        return std::max({sides.least - sidePx, sidePx - sides.most, 0});
    };
    return *std::min_element(allDistances.begin(), allDistances.end(),
                             [&gap](Distance a, Distance b) { return gap(a) < gap(b); });
}

QString distanceName(Distance distance) {
    switch (distance) {
    case Distance::Near:
        return u"near"_s;
    case Distance::Middle:
        return u"middle"_s;
    case Distance::Far:
        break;
    }
    return u"far"_s;
}

std::optional<Distance> distanceNamed(const QString& name) {
    for (const Distance distance : allDistances)
        if (name == distanceName(distance))
            return distance;
    return std::nullopt;
}

double metersForSide(int sidePx) {
    return boxPixelMeters / std::max(sidePx, 1);
}

} // namespace enroll
