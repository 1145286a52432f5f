#include "voice/voice_reading.h"

#include <QRegularExpression>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// Where the event does not say so itself, a direction is of low confidence below this.
constexpr double lowConfidenceBelow = 0.35;

QRegularExpression keyPattern(const QString& key, const QString& value) {
    return QRegularExpression(u"\""_s + QRegularExpression::escape(key) + u"\"\\s*:\\s*"_s + value);
}

/// Signs, digits and points only: a number is cut at its exponent.
QRegularExpression numberPattern(const QString& key) {
    return keyPattern(key, u"([-+0-9.]+)"_s);
}

QRegularExpression booleanPattern(const QString& key) {
    return keyPattern(key, u"(true|false)"_s);
}

/// The start of a text, up to its opening quote.
QRegularExpression stringPattern(const QString& key) {
    return keyPattern(key, u"\""_s);
}

/// All that is searched comes from fromUtf8() and so is valid; looking at all of it again before
/// each search would take longer than the search.
QRegularExpressionMatch firstMatch(const QString& text, const QRegularExpression& pattern) {
    return pattern.match(text, 0, QRegularExpression::NormalMatch,
                         QRegularExpression::DontCheckSubjectStringMatchOption);
}

double numberIn(const QString& text, const QRegularExpression& pattern, bool& ok) {
    const QRegularExpressionMatch match = firstMatch(text, pattern);
    ok = false;
    return match.hasMatch() ? match.captured(1).toDouble(&ok) : 0.0;
}

bool booleanIn(const QString& text, const QRegularExpression& pattern, bool fallback) {
    const QRegularExpressionMatch match = firstMatch(text, pattern);
    return match.hasMatch() ? match.captured(1) == u"true"_s : fallback;
}

/// Up to the next quote: there are no escapes. Where the first such text has no end, no later one
/// has, since its quotes would have ended the first.
QString stringIn(const QString& text, const QRegularExpression& pattern) {
    const QRegularExpressionMatch match = firstMatch(text, pattern);
    const qsizetype end = match.hasMatch() ? text.indexOf(u'"', match.capturedEnd()) : -1;
    return end < 0 ? QString() : text.sliced(match.capturedEnd(), end - match.capturedEnd());
}

/// Fills in what the event says. Without a readable angle and confidence nothing changes.
void applyEvent(VoiceDirectionStatus& status, const VoiceFiles& files, qint64 nowMs) {
    static const QRegularExpression anglePattern = numberPattern(u"direction_angle_degrees"_s);
    static const QRegularExpression confidencePattern = numberPattern(u"direction_confidence"_s);
    static const QRegularExpression lowPattern = booleanPattern(u"direction_low_confidence"_s);
    static const QRegularExpression livePattern = booleanPattern(u"live_processing"_s);
    static const QRegularExpression statusPattern = stringPattern(u"status"_s);
    static const QRegularExpression errorPattern = stringPattern(u"error"_s);

    const QString text = QString::fromUtf8(files.eventBytes);
    bool hasAngle = false;
    bool hasConfidence = false;
    const double angle = numberIn(text, anglePattern, hasAngle);
    const double confidence = numberIn(text, confidencePattern, hasConfidence);
    if (!hasAngle || !hasConfidence)
        return;
    status.hasDirection = true;
    status.angleDegrees = angle;
    status.confidence = confidence;
    status.lowConfidence = booleanIn(text, lowPattern, confidence < lowConfidenceBelow);
    status.eventTimeMs = files.eventModifiedMs;

    // Unsigned, so that an event from the future is not recent; it also lets absurd times wrap.
    const quint64 age = static_cast<quint64>(nowMs) - static_cast<quint64>(status.eventTimeMs);
    const bool recent = age <= recentVoiceEventMs;
    if (!status.running)
        status.running = recent && booleanIn(text, livePattern, false);
    const QString serviceStatus = stringIn(text, statusPattern);
    status.fresh = recent && status.running && serviceStatus == u"running"_s;

    const double ageSeconds = static_cast<double>(static_cast<qint64>(age)) / 1000.0;
    status.reason =
        status.fresh ? u"live Auralis event JSON"_s
                     : u"stale Auralis event "_s + QString::number(ageSeconds, 'f', 1) + u"s old"_s;
    if (!serviceStatus.isEmpty() && serviceStatus != u"running"_s)
        status.reason = serviceStatus;
    if (const QString error = stringIn(text, errorPattern); !error.isEmpty())
        status.reason = error;
}

QString statusPrefix(const VoiceDirectionStatus& status) {
    if (status.fresh)
        return u"Auralis: running/fresh"_s;
    // The service restarts its recorder, "arecord", after an error. In a text of a megabyte the
    // compiled pattern is found ten times sooner than by QString::contains().
    static const QRegularExpression restarting(u"restarting|arecord"_s);
    if (firstMatch(status.reason, restarting).hasMatch())
        return u"Auralis: degraded/restarting"_s;
    return status.running ? u"Auralis: stale"_s : u"Auralis: stopped/stale"_s;
}

/// What is said of the direction, up to the reason.
QString statusBody(const VoiceDirectionStatus& status) {
    if (!status.hasDirection)
        return u" | direction unavailable | "_s;
    if (!status.fresh)
        return u" | direction stale/inactive | "_s;
    return u" | angle %1° | confidence %2 | low confidence %3 | "_s.arg(
        QString::number(status.angleDegrees, 'f', 0), QString::number(status.confidence, 'f', 2),
        status.lowConfidence ? u"true"_s : u"false"_s);
}

QString statusSuffix(const VoiceDirectionStatus& status) {
    return u" | audio direction mapping: %1 | audio_direction_inverted=%2"
           " | attention only, no trust granted"_s.arg(status.inverted ? u"inverted"_s
                                                                       : u"normal"_s,
                                                       status.inverted ? u"true"_s : u"false"_s);
}

/// Writes a text in quotes as QDebug does. QDebug looks up the category of every character, which
/// takes half a frame's time for a text of a megabyte; one that has nothing to escape goes whole.
void writeQuoted(QDebug& debug, const QString& text) {
    // Every character is looked at and no branch taken, so that the compiler can do many at once.
    unsigned special = 0;
    for (const QChar character : text) {
        const unsigned code = character.unicode();
        special |=
            unsigned(code - u' ' > u'~' - u' ') | unsigned(code == u'"') | unsigned(code == u'\\');
    }
    const QDebugStateSaver saver(debug);
    if (!special)
        debug.noquote().nospace() << u'"' << text << u'"';
    else
        debug << text;
}

} // namespace

qint64 voiceServicePid(const QByteArray& pidFileContent) {
    bool ok = false;
    const qint64 pid = QString::fromUtf8(pidFileContent).trimmed().toLongLong(&ok, 10);
    return ok && pid > 0 ? pid : 0;
}

VoiceDirectionStatus voiceDirectionStatus(const VoiceFiles& files, qint64 nowMs,
                                          bool invertAudioDirection) {
    VoiceDirectionStatus status;
    status.inverted = invertAudioDirection;
    status.running = files.processAlive;
    status.source = files.eventPath;
    if (!files.eventExists) {
        status.reason = u"Auralis live event JSON not found"_s;
        return status;
    }
    status.reason = status.running ? u"Auralis running; no fresh direction event"_s
                                   : u"Auralis stopped or unavailable"_s;
    if (files.eventOpened)
        applyEvent(status, files, nowMs);
    return status;
}

StatusText voiceStatusText(const VoiceDirectionStatus& status) {
    return {statusPrefix(status) + statusBody(status), status.reason, statusSuffix(status)};
}

QDebug operator<<(QDebug debug, const VoiceDirectionStatus& status) {
    debug << (status.running ? "running" : "stopped")
          << (status.fresh ? "fresh" : "stale/unavailable") << "angle" << status.angleDegrees
          << "confidence" << status.confidence << "low" << status.lowConfidence << "source"
          << status.source << "mapping" << (status.inverted ? "inverted" : "normal") << "reason";
    writeQuoted(debug, status.reason);
    return debug;
}
