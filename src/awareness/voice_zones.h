#pragma once

#include "app/face_overlay.h"
#include "app/voice_direction_status.h"

#include <QList>

/// Which sixth of the view, 0 (left) to 5 (right), a voice from `angleDegrees` (-60 … +60 across
/// the view, farther out counts as the outermost) comes from; mirrored when `inverted`.
int voiceZone(double angleDegrees, bool inverted);

/// Which sixth of an image that is `imageWidth` pixels wide the centre of a box stands in.
int overlayZone(const QRect& box, int imageWidth);

/// Writes into every overlay's `speakerNote` how it stands to a fresh voice reading; a reading that
/// is not fresh or has no direction changes nothing. Attention only: names, scores and trust stay.
void tagSpeakers(QList<FaceOverlay>& overlays, const VoiceDirectionStatus& voice,
                 bool invertAudioDirection, int imageWidth);
