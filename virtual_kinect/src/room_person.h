#pragma once

#include "room_face.h"
#include "room_sprite.h"
#include "room_story.h"

#include <vector>

namespace virtual_kinect::room {

/// Height of the middle of a person's head above the floor, in metres.
double headHeight_m(Person who);

/// All pictures of one person that the story needs, drawn once.
class PersonSprites {
public:
    explicit PersonSprites(Person who);

    const Sprite& body(const PersonMoment& moment) const;
    const Sprite& head(const PersonMoment& moment) const;

private:
    std::vector<Sprite> heads;                                   ///< from far left to far right
    std::vector<Sprite> standing;                                ///< likewise
    std::vector<Sprite> walkingAhead, walkingLeft, walkingRight; ///< by phase of the step
};

/// The face of one of the two people, or of nobody who is in the room (for the poster).
FaceLook ownerFace();
FaceLook strangerFace();
FaceLook posterFace();

} // namespace virtual_kinect::room
