#pragma once

#include "app/face_overlay.h"
#include "app/identity.h"
#include "app/voice_direction_status.h"
#include "fuzz_input.h"

/// A box near an image or, now and then, anywhere.
inline QRect boxFrom(FuzzInput& input) {
    if (input.byte() % 8 == 0) {
        constexpr int far = 1'000'000;
        return QRect(input.between(-far, far), input.between(-far, far), input.between(-far, far),
                     input.between(-far, far));
    }
    return QRect(input.number<std::int16_t>() % 2200, input.number<std::int16_t>() % 1200,
                 input.between(-2, 700), input.between(-2, 700));
}

/// Well-known labels and any other text.
inline QString labelFrom(FuzzInput& input) {
    switch (input.byte() % 5) {
    case 0:
        return identity::owner;
    case 1:
        return identity::possibleOwner;
    case 2:
        return identity::person;
    case 3:
        return identity::unknown;
    default:
        return input.text();
    }
}

/// An overlay whose fields need not go together.
inline FaceOverlay overlayFrom(FuzzInput& input) {
    FaceOverlay overlay;
    overlay.rect = boxFrom(input);
    overlay.label = labelFrom(input);
    overlay.color = input.flag() ? QColor::fromRgba(input.number<QRgb>()) : QColor();
    const std::uint8_t flags = input.byte();
    overlay.stale = (flags & 1) != 0;
    overlay.hasDistance = (flags & 2) != 0;
    overlay.depthMissing = (flags & 4) != 0;
    overlay.bodyOnly = (flags & 8) != 0;
    overlay.faceEvidence = (flags & 16) != 0;
    if (overlay.hasDistance)
        overlay.distanceMeters = input.real();
    if ((flags & 32) != 0)
        overlay.confidence = input.real();
    if ((flags & 64) != 0) {
        overlay.detector = input.text();
        overlay.status = input.text();
        overlay.speakerNote = input.text();
        overlay.tier = input.text();
        overlay.reason = input.text();
    }
    return overlay;
}

inline QList<FaceOverlay> overlaysFrom(FuzzInput& input, int most) {
    QList<FaceOverlay> overlays(input.byte() % (most + 1));
    for (FaceOverlay& overlay : overlays)
        overlay = overlayFrom(input);
    return overlays;
}

/// A reading whose fields need not go together.
inline VoiceDirectionStatus voiceFrom(FuzzInput& input) {
    VoiceDirectionStatus status;
    const std::uint8_t flags = input.byte();
    status.running = (flags & 1) != 0;
    status.hasDirection = (flags & 2) != 0;
    status.fresh = (flags & 4) != 0;
    status.lowConfidence = (flags & 8) != 0;
    status.inverted = (flags & 16) != 0;
    status.angleDegrees = input.real();
    status.confidence = input.real();
    if ((flags & 32) != 0)
        status.reason = input.text();
    return status;
}
