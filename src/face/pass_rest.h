#pragma once

#include <QtGlobal>
#include <vector>

/// Decides how long the face worker rests between two passes.
///
/// 1. Whatever is new keeps it awake for two seconds: another number of body regions, a track that
///    came or went, and a track that is not yet shown, since that one becomes an owner or a
///    stranger by being seen often.
/// 2. Otherwise it rests until `cycleMs` after the pass began. A face that stays in view is then
///    seen again before it counts as not seen (500 ms), also with a frame that comes a little late.
class PassRest {
public:
    static constexpr qint64 cycleMs = 380;
    static constexpr qint64 awakeMs = 2000;

    /// What a pass left behind.
    struct Outcome {
        std::vector<int> tracks; ///< Numbers of all tracks, in their order.
        bool unshownTrack = false;
        qsizetype bodyRegions = 0;

        bool operator==(const Outcome&) const = default;
    };

    /// How long to rest after a pass from `beganMs` to `endedMs` of a clock that does not jump:
    /// milliseconds, 0 for not at all.
    qint64 after(const Outcome& outcome, qint64 beganMs, qint64 endedMs);

private:
    Outcome last;
    qint64 awakeUntilMs = 0;
    bool begun = false;
};
