#include "awareness/speaker_notes.h"

#include "awareness/overlay_geometry.h"
#include "voice/speaker_zones.h"

#include <algorithm>
#include <cstdlib>

using namespace Qt::StringLiterals;

void tagSpeakers(QList<FaceOverlay>& overlays, const VoiceDirectionStatus& voice,
                 bool invertAudioDirection, int imageWidth) {
    const std::optional<int> voiceZone =
        speakerZones::ofVoice(voice.angleDegrees, invertAudioDirection);
    if (!voice.hasDirection || !voice.fresh || !voiceZone)
        return;
    const auto isCandidate = [&](const FaceOverlay& overlay) {
        const auto zone = speakerZones::ofPosition(
            double(overlayGeometry::boxCenter(overlay.rect).x()) / std::max(imageWidth, 1));
        return zone && std::abs(*zone - *voiceZone) <= 1;
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
