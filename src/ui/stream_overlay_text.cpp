#include "ui/stream_overlay_text.h"

#include "app/face_overlay.h"
#include "app/voice_direction_status.h"
#include "voice/speaker_zones.h"

#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

// More than fits on the widest screen in small print, and few enough to be laid out at once.
constexpr qsizetype maximumCharacters = 2000;

bool overridesDirection(QChar character) {
    const char16_t code = character.unicode();
    return (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
}

bool breaksTheLine(QChar character) {
    const QChar::Category category = character.category();
    return category == QChar::Other_Control || category == QChar::Separator_Line ||
           category == QChar::Separator_Paragraph;
}

/// The confidence as a whole number, rounded half up; 0 where there is none to show.
int shownConfidence(double confidence) {
    const double rounded = std::trunc(confidence + 0.5);
    if (!(rounded > 0.0))
        return 0;
    constexpr int maximum = std::numeric_limits<int>::max();
    return rounded < maximum ? static_cast<int>(rounded) : maximum;
}

bool hasFreshDirection(const VoiceDirectionStatus& status) {
    return status.fresh && status.hasDirection;
}

} // namespace

QString streamText::singleLine(const QString& text) {
    QString line;
    bool inBreak = false;
    for (const QChar character : text) {
        const bool isBreak = breaksTheLine(character);
        if (overridesDirection(character) || (isBreak && inBreak))
            continue;
        inBreak = isBreak;
        if (line.size() == maximumCharacters) {
            if (line.back().isHighSurrogate())
                line.chop(1);
            return line + u'…';
        }
        line += isBreak ? QChar(u' ') : character;
    }
    return line;
}

QString streamText::caption(const FaceOverlay& overlay) {
    const QString separator = u" • "_s;
    QString text = singleLine(overlay.label);
    if (!overlay.tier.isEmpty())
        text += separator + singleLine(overlay.tier);
    if (overlay.hasDistance)
        text += separator + QString::number(overlay.distanceMeters, 'f', 1) + u'm';
    else if (overlay.depthMissing)
        text += separator + u"no depth"_s;
    if (!overlay.speakerNote.isEmpty())
        text += separator + singleLine(overlay.speakerNote);
    if (overlay.stale)
        text += u" - "_s + singleLine(overlay.status);
    if (const int confidence = shownConfidence(overlay.confidence); confidence > 0)
        text += u' ' + QString::number(confidence);
    return text;
}

std::optional<int> streamText::activeSpeakerLight(const VoiceDirectionStatus& status) {
    if (!hasFreshDirection(status))
        return std::nullopt;
    return speakerZones::ofVoice(status.angleDegrees, status.inverted);
}

streamText::VoiceLines streamText::voiceLines(const VoiceDirectionStatus& status) {
    if (hasFreshDirection(status)) {
        return {u"Speaker direction: "_s + QString::number(status.angleDegrees, 'f', 0) +
                    u"° confidence "_s + QString::number(status.confidence, 'f', 2) +
                    u" | mapping "_s + (status.inverted ? u"inverted"_s : u"normal"_s),
                status.lowConfidence ? u"low confidence - attention only"_s
                                     : u"live Auralis direction - attention only"_s};
    }
    return {status.running ? u"Auralis running; no fresh direction data"_s
                           : u"Speaker direction unavailable / no fresh data"_s,
            singleLine(status.reason)};
}
