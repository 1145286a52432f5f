#pragma once

#include "app/face_overlay.h"
#include "app/voice_direction_status.h"

#include <QList>

/// Writes into every overlay's `speakerNote` whether it may be the speaker of a fresh voice
/// reading; a reading that is not fresh or has no direction changes nothing. Attention only: names,
/// scores and trust stay. `imageWidth` is the colour image's.
void tagSpeakers(QList<FaceOverlay>& overlays, const VoiceDirectionStatus& voice,
                 bool invertAudioDirection, int imageWidth);
