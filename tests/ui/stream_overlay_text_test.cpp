#include "ui/stream_overlay_text.h"

#include "app/face_overlay.h"
#include "app/voice_direction_status.h"

#include <QTest>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinite = std::numeric_limits<double>::infinity();

FaceOverlay faceWithConfidence(double confidence) {
    FaceOverlay overlay;
    overlay.label = u"Unknown"_s;
    overlay.tier.clear();
    overlay.confidence = confidence;
    return overlay;
}

VoiceDirectionStatus freshDirection(double angleDegrees) {
    VoiceDirectionStatus status;
    status.running = true;
    status.hasDirection = true;
    status.fresh = true;
    status.lowConfidence = false;
    status.angleDegrees = angleDegrees;
    status.confidence = 0.875;
    return status;
}

} // namespace

Q_DECLARE_METATYPE(std::optional<int>)

class StreamOverlayTextTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aCaptionIsBuiltFromTheFieldsInOrder_data();
    void aCaptionIsBuiltFromTheFieldsInOrder();
    void aConfidenceIsRoundedAndShownAboveZero_data();
    void aConfidenceIsRoundedAndShownAboveZero();
    void anyDistanceIsWritten_data();
    void anyDistanceIsWritten();
    void theLightFollowsTheAngle_data();
    void theLightFollowsTheAngle();
    void noLightWithoutAFreshDirection_data();
    void noLightWithoutAFreshDirection();
    void voiceLinesSayWhatIsKnown_data();
    void voiceLinesSayWhatIsKnown();
    void aTextBecomesOneLine_data();
    void aTextBecomesOneLine();
    void aVeryLongTextIsCutBetweenCharacters();
    void everyTextOfACaptionBecomesOneLine();
};

void StreamOverlayTextTest::aCaptionIsBuiltFromTheFieldsInOrder_data() {
    QTest::addColumn<FaceOverlay>("overlay");
    QTest::addColumn<QString>("caption");

    QTest::newRow("no field set") << FaceOverlay() << u" • near"_s;

    FaceOverlay full;
    full.label = u"Tavin"_s;
    full.tier = u"near face"_s;
    full.hasDistance = true;
    full.distanceMeters = 2.24;
    full.depthMissing = true; // a known distance wins
    full.speakerNote = u"possible speaker"_s;
    full.stale = true;
    full.status = u"last seen 0.7s"_s;
    full.confidence = 41.5;
    QTest::newRow("every field") << full
                                 << u"Tavin • near face • 2.2m • possible speaker"
                                    u" - last seen 0.7s 42"_s;

    FaceOverlay fresh = full;
    fresh.stale = false;
    QTest::newRow("a status shows only when stale")
        << fresh << u"Tavin • near face • 2.2m • possible speaker 42"_s;

    FaceOverlay noDepth;
    noDepth.label = u"Unknown"_s;
    noDepth.tier.clear();
    noDepth.depthMissing = true;
    QTest::newRow("no depth, no tier") << noDepth << u"Unknown • no depth"_s;

    FaceOverlay staleWithoutStatus;
    staleWithoutStatus.label = u"Person"_s;
    staleWithoutStatus.tier.clear();
    staleWithoutStatus.stale = true;
    QTest::newRow("stale without a status") << staleWithoutStatus << u"Person - "_s;

    FaceOverlay percent;
    percent.label = u"%1 %2"_s;
    percent.tier = u"%3"_s;
    percent.hasDistance = true;
    percent.distanceMeters = 1.0;
    QTest::newRow("texts are no templates") << percent << u"%1 %2 • %3 • 1.0m"_s;
}

void StreamOverlayTextTest::aCaptionIsBuiltFromTheFieldsInOrder() {
    QFETCH(FaceOverlay, overlay);
    QTEST(streamText::caption(overlay), "caption");
}

void StreamOverlayTextTest::aConfidenceIsRoundedAndShownAboveZero_data() {
    QTest::addColumn<double>("confidence");
    QTest::addColumn<QString>("caption");
    QTest::newRow("0.4") << 0.4 << u"Unknown"_s;
    QTest::newRow("0.5") << 0.5 << u"Unknown 1"_s;
    QTest::newRow("1.49") << 1.49 << u"Unknown 1"_s;
    QTest::newRow("negative") << -3.0 << u"Unknown"_s;
    QTest::newRow("not a number") << notANumber << u"Unknown"_s;
    QTest::newRow("infinite") << infinite << u"Unknown 2147483647"_s;
    QTest::newRow("minus infinite") << -infinite << u"Unknown"_s;
    QTest::newRow("1e308") << 1e308 << u"Unknown 2147483647"_s;
    QTest::newRow("largest int") << 2147483647.0 << u"Unknown 2147483647"_s;
}

void StreamOverlayTextTest::aConfidenceIsRoundedAndShownAboveZero() {
    QFETCH(double, confidence);
    QTEST(streamText::caption(faceWithConfidence(confidence)), "caption");
}

void StreamOverlayTextTest::anyDistanceIsWritten_data() {
    QTest::addColumn<double>("distance");
    QTest::addColumn<QString>("end");
    QTest::newRow("half up") << 0.96 << u" • 1.0m"_s;
    QTest::newRow("not a number") << notANumber << u" • nanm"_s;
    QTest::newRow("infinite") << infinite << u" • infm"_s;
    QTest::newRow("1e308") << 1e308 << u".0m"_s;
}

void StreamOverlayTextTest::anyDistanceIsWritten() {
    QFETCH(double, distance);
    QFETCH(QString, end);
    FaceOverlay overlay = faceWithConfidence(0.0);
    overlay.hasDistance = true;
    overlay.distanceMeters = distance;
    QVERIFY2(streamText::caption(overlay).endsWith(end), qPrintable(streamText::caption(overlay)));
}

void StreamOverlayTextTest::theLightFollowsTheAngle_data() {
    QTest::addColumn<double>("angle");
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("mirrored");
    QTest::newRow("-60") << -60.0 << 0 << 5;
    QTest::newRow("-40.1") << -40.1 << 0 << 5;
    QTest::newRow("-39.9") << -39.9 << 1 << 4;
    QTest::newRow("-0.1") << -0.1 << 2 << 3;
    QTest::newRow("0") << 0.0 << 3 << 2;
    QTest::newRow("39.9") << 39.9 << 4 << 1;
    QTest::newRow("59.8") << 59.8 << 5 << 0;
    QTest::newRow("60") << 60.0 << 5 << 0;
    QTest::newRow("left of the view") << -75.0 << 0 << 5;
    QTest::newRow("right of the view") << 75.0 << 5 << 0;
    QTest::newRow("infinite") << infinite << 5 << 0;
    QTest::newRow("minus infinite") << -infinite << 0 << 5;
    QTest::newRow("1e308") << 1e308 << 5 << 0;
}

void StreamOverlayTextTest::theLightFollowsTheAngle() {
    QFETCH(double, angle);
    QFETCH(int, index);
    QFETCH(int, mirrored);
    VoiceDirectionStatus status = freshDirection(angle);
    QCOMPARE(streamText::activeSpeakerLight(status), std::optional(index));
    status.inverted = true;
    QCOMPARE(streamText::activeSpeakerLight(status), std::optional(mirrored));
}

void StreamOverlayTextTest::noLightWithoutAFreshDirection_data() {
    QTest::addColumn<VoiceDirectionStatus>("status");
    VoiceDirectionStatus stale = freshDirection(10.0);
    stale.fresh = false;
    VoiceDirectionStatus unknown = freshDirection(10.0);
    unknown.hasDirection = false;
    QTest::newRow("no data") << VoiceDirectionStatus();
    QTest::newRow("not fresh") << stale;
    QTest::newRow("no direction") << unknown;
    QTest::newRow("angle is not a number") << freshDirection(notANumber);
}

void StreamOverlayTextTest::noLightWithoutAFreshDirection() {
    QFETCH(VoiceDirectionStatus, status);
    QVERIFY(!streamText::activeSpeakerLight(status));
    status.inverted = true;
    QVERIFY(!streamText::activeSpeakerLight(status));
}

void StreamOverlayTextTest::voiceLinesSayWhatIsKnown_data() {
    QTest::addColumn<VoiceDirectionStatus>("status");
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("second");

    QTest::newRow("no data") << VoiceDirectionStatus()
                             << u"Speaker direction unavailable / no fresh data"_s
                             << u"Auralis direction event unavailable"_s;
    VoiceDirectionStatus running;
    running.running = true;
    running.reason = u"event is\nold"_s;
    QTest::newRow("running without a direction")
        << running << u"Auralis running; no fresh direction data"_s << u"event is old"_s;
    VoiceDirectionStatus notFresh = freshDirection(12.0);
    notFresh.fresh = false;
    notFresh.running = false;
    notFresh.reason = u"stale"_s;
    QTest::newRow("not fresh") << notFresh << u"Speaker direction unavailable / no fresh data"_s
                               << u"stale"_s;
    QTest::newRow("confident") << freshDirection(-12.4)
                               << u"Speaker direction: -12° confidence 0.88 | mapping normal"_s
                               << u"live Auralis direction - attention only"_s;
    VoiceDirectionStatus low = freshDirection(59.6);
    low.lowConfidence = true;
    low.inverted = true;
    low.confidence = 0.1;
    QTest::newRow("low confidence, mirrored")
        << low << u"Speaker direction: 60° confidence 0.10 | mapping inverted"_s
        << u"low confidence - attention only"_s;
}

void StreamOverlayTextTest::voiceLinesSayWhatIsKnown() {
    QFETCH(VoiceDirectionStatus, status);
    const streamText::VoiceLines lines = streamText::voiceLines(status);
    QTEST(lines.first, "first");
    QTEST(lines.second, "second");
}

void StreamOverlayTextTest::aTextBecomesOneLine_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("line");
    QTest::newRow("plain") << u"a  b • ü"_s << u"a  b • ü"_s;
    QTest::newRow("empty") << QString() << QString();
    QTest::newRow("line breaks") << u"a\r\nb\nc"_s << u"a b c"_s;
    QTest::newRow("null characters") << QString::fromUtf16(u"a\0\0b", 4) << u"a b"_s;
    QTest::newRow("tab") << u"a\tb"_s << u"a b"_s;
    QTest::newRow("unicode line and paragraph") << u"a\u2028b\u2029c"_s << u"a b c"_s;
    // Would be taken for a shorter version of the text when it is elided.
    QTest::newRow("version separator") << u"a\u009cb"_s << u"a b"_s;
    QTest::newRow("direction override") << u"a\u202eb\u2066c\u2069"_s << u"abc"_s;
    QTest::newRow("right to left") << u"שלום"_s << u"שלום"_s;
    QTest::newRow("joined emoji") << u"👩\u200d🚀"_s << u"👩\u200d🚀"_s;
}

void StreamOverlayTextTest::aTextBecomesOneLine() {
    QFETCH(QString, text);
    QTEST(streamText::singleLine(text), "line");
}

void StreamOverlayTextTest::aVeryLongTextIsCutBetweenCharacters() {
    const QString endless = u"a"_s + u"😀"_s.repeated(5'000'000);
    const QString line = streamText::singleLine(endless);
    QVERIFY(line.size() <= 2001);
    QCOMPARE(line.back(), QChar(u'…'));
    QVERIFY(line.chopped(1).back().isLowSurrogate());
    QCOMPARE(streamText::singleLine(u"b"_s.repeated(2000)), u"b"_s.repeated(2000));
}

void StreamOverlayTextTest::everyTextOfACaptionBecomesOneLine() {
    FaceOverlay overlay;
    overlay.label = u"a\nb"_s;
    overlay.tier = u"c\nd"_s;
    overlay.speakerNote = u"e\nf"_s;
    overlay.stale = true;
    overlay.status = u"g\nh"_s;
    QCOMPARE(streamText::caption(overlay), u"a b • c d • e f - g h"_s);
}

QTEST_APPLESS_MAIN(StreamOverlayTextTest)

#include "stream_overlay_text_test.moc"
