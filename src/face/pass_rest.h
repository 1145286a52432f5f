#pragma once

#include "face/face_tracks.h"

#include <QtGlobal>

/// Decides how long the face worker rests between two passes.
///
/// 1. A body region more keeps it awake for two seconds from when the pass began that was told of
///    it; so does a face that is shown, from when it was first seen, and again from when it was
///    last seen if it is not seen any more.
/// 2. A face that is about to be shown keeps it awake for as long as every pass sees it, since it
///    becomes a stranger by being seen often.
/// 3. Otherwise it rests until `cycleMs` after the pass began. A face that stays in view is then
///    seen again before it counts as not seen (500 ms), also with a frame that comes a little late.
///
/// Other tracks are not looked at: in nearly every picture of a body some small hits that are no
/// faces come and go. A body region less only ends a rest that is under way (see the worker), for
/// its face is looked for no sooner by more passes.
class PassRest {
public:
    static constexpr qint64 cycleMs = 395;
    static constexpr qint64 awakeMs = 2000;

    /// A pass that is over.
    struct Pass {
        qint64 beganMs = 0; ///< By a clock that does not jump, as its end.
        qint64 endedMs = 0;
        qint64 seenMs = 0; ///< When it saw its faces, by the tracks' clock.
        qsizetype bodyRegions = 0;
    };

    /// How long to rest after a pass that left those tracks: milliseconds, 0 for not at all.
    qint64 after(const Pass& pass, const FaceTracks& tracks);

private:
    qsizetype lastBodyRegions = 0;
    qint64 awakeUntilMs = 0;
    bool begun = false;
};
