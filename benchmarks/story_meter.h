#pragma once

#include "app/face_overlay.h"
#include "room_story.h"

#include <QList>
#include <optional>

/// Compares what the program shows of the virtual room with what happens there: how soon people are
/// marked, and for how long something wrong is shown. All times are seconds since the first frame.
class StoryMeter {
public:
    /// The face worker's overlays, as the tiles have them from now on.
    void heard(const QList<FaceOverlay>& overlays);
    /// A tile was painted, which shows what was heard last.
    void painted(double seconds);

    /// One figure a line. A delay is the longest of all rounds of the story that showed what is
    /// meant; rounds that did not are counted.
    void print() const;

    /// Whether somebody is in sight at that time.
    static bool somebodyThere(double seconds);

private:
    /// How long after the beginning of a stretch of the story something was first shown.
    struct Delay {
        std::optional<double> longest; ///< Of all rounds that showed it.
        int missing = 0;               ///< Rounds that did not.
        bool shown = false;            ///< In this round.
    };

    void measureDelay(Delay& delay, virtual_kinect::room::Span span, double story, bool shown);
    void measureMistakes(double story, double elapsed);
    static void print(const char* name, const Delay& delay);

    QList<FaceOverlay> overlays;
    double lastPainted = 0.0;
    Delay ownerNamed;
    Delay strangerMarked;
    double tooManyBoxes = 0.0;   ///< Seconds with more faces marked than people are there,
    double lastSeenInView = 0.0; ///< with "last seen" beside a face that is turned to the sensor,
    double standingFor = 0.0;    ///< and with people standing, which both are looked for in.
};
