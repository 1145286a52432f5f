#include "story_meter.h"

#include "app/identity.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

using namespace virtual_kinect;

namespace {

/// After a face came into view, or turned, it may take a moment until it is found.
constexpr double settling = 1.5;

/// Stretches in which everybody in the room stands and is in full view, and nobody left it a short
/// time before.
constexpr std::array standing{room::ownerFrontal, room::ownerFrontalThird, room::bothFrontal};

double storyOf(double seconds) {
    return std::fmod(seconds, room::loopSeconds);
}

bool isOwner(const FaceOverlay& overlay) {
    return overlay.label == identity::owner;
}

} // namespace

void StoryMeter::heard(const QList<FaceOverlay>& shown) {
    overlays = shown;
}

void StoryMeter::painted(double seconds) {
    const double story = storyOf(seconds);
    const bool owner = std::any_of(overlays.begin(), overlays.end(), [](const auto& overlay) {
        return isOwner(overlay) && !overlay.stale;
    });
    const bool stranger = std::any_of(overlays.begin(), overlays.end(), [](const auto& overlay) {
        return !isOwner(overlay) && !overlay.stale;
    });
    measureDelay(ownerNamed, room::ownerFrontal, story, owner);
    measureDelay(strangerMarked, room::bothFrontal, story, stranger);
    measureMistakes(story, std::clamp(seconds - lastPainted, 0.0, 1.0));
    lastPainted = seconds;
}

void StoryMeter::measureDelay(Delay& delay, room::Span span, double story, bool shown) {
    if (story < span.from) {
        delay.shown = false;
    } else if (story < span.to && shown && !delay.shown) {
        delay.shown = true;
        delay.longest = std::max(delay.longest.value_or(0.0), story - span.from);
    } else if (story >= span.to && !delay.shown) {
        delay.shown = true;
        ++delay.missing;
    }
}

void StoryMeter::measureMistakes(double story, double elapsed) {
    const bool stand = std::any_of(standing.begin(), standing.end(), [story](room::Span span) {
        return story >= span.from + settling && story < span.to;
    });
    if (!stand)
        return;
    standingFor += elapsed;
    if (overlays.size() > static_cast<qsizetype>(room::peopleAt(story).size()))
        tooManyBoxes += elapsed;
    if (std::any_of(overlays.begin(), overlays.end(), [](const auto& face) { return face.stale; }))
        lastSeenInView += elapsed;
}

void StoryMeter::print(const char* name, const Delay& delay) {
    if (delay.longest)
        std::printf("%s_after_s %.2f\n", name, *delay.longest);
    if (delay.missing > 0)
        std::printf("%s_never_in_rounds %d\n", name, delay.missing);
}

void StoryMeter::print() const {
    print("owner_named", ownerNamed);
    print("stranger_marked", strangerMarked);
    std::printf("people_standing_s %.1f\n", standingFor);
    std::printf("too_many_boxes_s %.2f\n", tooManyBoxes);
    std::printf("last_seen_in_view_s %.2f\n", lastSeenInView);
}

bool StoryMeter::somebodyThere(double seconds) {
    return !room::peopleAt(storyOf(seconds)).empty();
}
