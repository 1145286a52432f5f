#pragma once

#include <QString>
#include <optional>

struct FaceOverlay;
struct VoiceDirectionStatus;

/// What the stream widget writes over a stream, and which speaker light is on. Values may be
/// anything (NaN, infinite, huge); texts may come from files.
namespace streamText {

/// `text` as one readable line: each run of line breaks and other control characters becomes one
/// space, characters that override the writing direction are dropped, so that they cannot
/// turn what follows, and what no screen has room for is cut off with "…".
QString singleLine(const QString& text);

/// Caption of an overlay, as one line: label, tier, distance in metres with one decimal or "no
/// depth", speaker note, status when stale, and the confidence rounded half up when that is above
/// 0.
QString caption(const FaceOverlay& overlay);

/// Index from 0 (left) to 5 of the light that stands for the direction, one for each speaker zone.
/// None without a fresh direction, nor for an angle that is not a number.
std::optional<int> activeSpeakerLight(const VoiceDirectionStatus& status);

struct VoiceLines {
    QString first;
    QString second;
};
/// The two lines under the lights, each as one line.
VoiceLines voiceLines(const VoiceDirectionStatus& status);

} // namespace streamText
