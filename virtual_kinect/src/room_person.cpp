#include "room_person.h"

#include "room_body.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace virtual_kinect::room {
namespace {

constexpr int headSteps = 6, bodySteps = 4; ///< pictures from the front to the side
constexpr int stridePhases = 8;
constexpr double headPixelsPerMeter = 1000, bodyPixelsPerMeter = 420;
constexpr double quarterTurn = std::numbers::pi / 2;

std::size_t viewIndex(double yaw, int steps) {
    const long step = std::lround(yaw / quarterTurn * steps);
    return static_cast<std::size_t>(std::clamp<long>(step, -steps, steps) + steps);
}

/// One picture per step from the far left over the front to the far right. People are the same on
/// both sides, so the left half is the right one mirrored.
template <typename Draw>
std::vector<Sprite> drawAllRound(int steps, const Draw& draw) {
    std::vector<Sprite> views(static_cast<std::size_t>(2 * steps + 1));
    for (int step = 0; step <= steps; ++step) {
        const auto middle = static_cast<std::size_t>(steps),
                   offset = static_cast<std::size_t>(step);
        views[middle + offset] = draw(quarterTurn * step / steps);
        if (step > 0)
            views[middle - offset] = mirrored(views[middle + offset]);
    }
    return views;
}

Sprite drawBody(const BodyLook& look, const Wardrobe& clothes, double yaw, double stride) {
    // Only a step seen from the side reaches far.
    const double reach = stride >= 0 && yaw != 0 ? 0.48 : 0.34;
    SpriteCanvas canvas({-reach, reach, -0.03, 0.9 * look.height_m, bodyPixelsPerMeter}, yaw);
    for (const Surface& part : makeBody(look, clothes, stride))
        canvas.draw(part);
    return canvas.finish();
}

} // namespace

FaceLook ownerFace() {
    FaceLook look;
    look.skin = {132, 162, 205};
    look.hair = {34, 44, 60};
    look.lips = {95, 90, 165};
    look.iris = {70, 80, 60};
    look.coarseGrain = {22, 22};
    look.fineGrain = {5, 5};
    look.coarseStrength = 0.06F;
    look.fineStrength = 0.015F;
    look.seed = 11;
    return look;
}

FaceLook strangerFace() {
    FaceLook look;
    look.skin = {120, 152, 190};
    look.hair = {120, 125, 130};
    look.lips = {90, 85, 140};
    look.iris = {90, 70, 45};
    look.halfWidth = 85;
    look.halfHeight = 116;
    look.jaw = 0.12F;
    look.eyeDistance = 34;
    look.browWeight = 5.5F;
    look.hairline = 84;
    look.hairLength = -70;
    look.beard = 0.9F;
    look.coarseGrain = {40, 7};
    look.fineGrain = {16, 3.5};
    look.coarseStrength = 0.09F;
    look.fineStrength = 0.11F;
    look.seed = 29;
    return look;
}

FaceLook posterFace() {
    FaceLook look;
    look.skin = {150, 175, 215};
    look.hair = {60, 110, 170};
    look.lips = {70, 60, 190};
    look.iris = {130, 100, 60};
    look.halfWidth = 76;
    look.halfHeight = 112;
    look.browWeight = 3;
    look.hairline = 70;
    look.hairLength = -140;
    look.coarseGrain = {30, 7};
    look.fineGrain = {3, 12};
    look.coarseStrength = 0.08F;
    look.fineStrength = 0.12F;
    look.seed = 47;
    return look;
}

double headHeight_m(Person who) {
    const bool owner = who == Person::Owner;
    const BodyLook body = owner ? ownerBody() : strangerBody();
    const FaceLook face = owner ? ownerFace() : strangerFace();
    return body.height_m - face.halfHeight * 0.001 - 0.01;
}

PersonSprites::PersonSprites(Person who) {
    const bool owner = who == Person::Owner;
    const FaceLook face = owner ? ownerFace() : strangerFace();
    const BodyLook look = owner ? ownerBody() : strangerBody();
    const Wardrobe clothes(look);

    const std::vector<Surface> head = makeHead(face);
    heads = drawAllRound(headSteps, [&](double yaw) {
        SpriteCanvas canvas({-0.15, 0.15, -0.14, 0.14, headPixelsPerMeter}, yaw);
        for (const Surface& part : head)
            canvas.draw(part);
        return canvas.finish();
    });
    standing =
        drawAllRound(bodySteps, [&](double yaw) { return drawBody(look, clothes, yaw, -1); });
    for (int phase = 0; phase < stridePhases; ++phase) {
        const double stride = static_cast<double>(phase) / stridePhases;
        walkingAhead.push_back(drawBody(look, clothes, 0, stride));
        walkingRight.push_back(drawBody(look, clothes, quarterTurn, stride));
        walkingLeft.push_back(mirrored(walkingRight.back()));
    }
}

const Sprite& PersonSprites::body(const PersonMoment& moment) const {
    if (moment.stride < 0)
        return standing[viewIndex(moment.yaw, bodySteps)];
    const auto phase = static_cast<std::size_t>(moment.stride * stridePhases) % stridePhases;
    if (std::abs(moment.yaw) < quarterTurn / 2)
        return walkingAhead[phase];
    return moment.yaw < 0 ? walkingLeft[phase] : walkingRight[phase];
}

const Sprite& PersonSprites::head(const PersonMoment& moment) const {
    return heads[viewIndex(moment.yaw, headSteps)];
}

} // namespace virtual_kinect::room
