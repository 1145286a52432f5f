#include "awareness/voice_zones.h"

#include "awareness/overlay_geometry.h"

#include <algorithm>
#include <cstdlib>

using namespace Qt::StringLiterals;

namespace {

constexpr int zones = 6;
constexpr double halfViewDegrees = 60.0;
constexpr double lastZoneFrom = 0.999;

/// The zone of a position across the view, 0 at its left edge and 1 at its right.
int zoneOf(double position) {
    if (!(position >= 0.0)) // also what is no number
        return 0;
    return position > lastZoneFrom ? zones - 1 : int(zones * position);
}

} // namespace

int voiceZone(double angleDegrees, bool inverted) {
    const int zone = zoneOf((angleDegrees + halfViewDegrees) / (2 * halfViewDegrees));
    return inverted ? zones - 1 - zone : zone;
}

int overlayZone(const QRect& box, int imageWidth) {
    return zoneOf(double(boxCenter(box).x()) / std::max(imageWidth, 1));
}

void tagSpeakers(QList<FaceOverlay>& overlays, const VoiceDirectionStatus& voice,
                 bool invertAudioDirection, int imageWidth) {
    if (!voice.hasDirection || !voice.fresh)
        return;
    const int zone = voiceZone(voice.angleDegrees, invertAudioDirection);
    const auto isCandidate = [zone, imageWidth](const FaceOverlay& overlay) {
        return std::abs(overlayZone(overlay.rect, imageWidth) - zone) <= 1;
    };
    const auto candidates = std::count_if(overlays.cbegin(), overlays.cend(), isCandidate);
    for (FaceOverlay& overlay : overlays) {
        if (voice.lowConfidence)
            overlay.speakerNote = u"speaker uncertain"_s;
        else if (candidates == 0)
            overlay.speakerNote = u"voice unmatched"_s;
        else if (isCandidate(overlay))
            overlay.speakerNote = candidates == 1 ? u"possible speaker"_s : u"speaker ambiguous"_s;
    }
}
