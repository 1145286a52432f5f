#include "voice/voice_reading.h"

#include "support/log_capture.h"
#include "support/processor_time.h"

#include <QTest>

#include <limits>

using namespace Qt::StringLiterals;

class VoiceReadingTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void withoutAnyFileNothingIsFound();
    void aServiceWithoutAReadableEventIsToldFromNone();
    void aFreshEventIsShownWithItsAngle();
    void anOldEventOfALivingServiceIsStale();
    void aDeadPidIsOverruledByARecentEventThatIsProcessing();
    void onlyARecentProcessingEventOverrulesADeadPid_data();
    void onlyARecentProcessingEventOverrulesADeadPid();
    void anEventIsRecentForTwoSeconds_data();
    void anEventIsRecentForTwoSeconds();
    void anEventFromTheFutureIsNeverFreshAndHasANegativeAge();
    void absurdTimesAreNotRecent_data();
    void absurdTimesAreNotRecent();
    void confidenceDecidesWhereTheEventDoesNotSay_data();
    void confidenceDecidesWhereTheEventDoesNotSay();
    void anEventWithoutAngleAndConfidenceIsNoDirection_data();
    void anEventWithoutAngleAndConfidenceIsNoDirection();
    void numbersAreReadUpToTheirExponent_data();
    void numbersAreReadUpToTheirExponent();
    void onlyTheStatusRunningIsFresh_data();
    void onlyTheStatusRunningIsFresh();
    void anErrorWinsOverTheStatus();
    void anErrorDoesNotEndFreshness();
    void troubleWithTheRecorderShowsAsDegraded_data();
    void troubleWithTheRecorderShowsAsDegraded();
    void theFirstOccurrenceOfAKeyCountsWhereverItStands();
    void malformedTextIsReadAsFarAsItGoes();
    void textsWithPlaceholdersQuotesAndUnicodeStayAsTheyAre_data();
    void textsWithPlaceholdersQuotesAndUnicodeStayAsTheyAre();
    void inversionChangesTheMappingAndNotTheAngle();
    void thePidIsDecimalAndPositive_data();
    void thePidIsDecimalAndPositive();
    void theLogLineQuotesTextsAndNothingElse();
    void hostileTextsTakeLinearTime_data();
    void hostileTextsTakeLinearTime();
    void theReasonIsLoggedAsQDebugQuotesIt();
};

namespace {

constexpr qint64 now = 1'700'000'000'000;
const QString suffix = u" | audio direction mapping: normal | audio_direction_inverted=false"
                       " | attention only, no trust granted"_s;

/// Files whose event was written `ageMs` before now.
VoiceFiles files(const QByteArray& event, qint64 ageMs = 500, bool processAlive = true) {
    VoiceFiles found;
    found.processAlive = processAlive;
    found.eventPath = u"/home/somebody/event.json"_s;
    found.eventExists = true;
    found.eventOpened = true;
    found.eventBytes = event;
    found.eventModifiedMs = now - ageMs;
    return found;
}

VoiceDirectionStatus read(const VoiceFiles& found) {
    return voiceDirectionStatus(found, now, false);
}

/// An event with angle and confidence and `more` keys.
QByteArray eventText(const QByteArray& more = R"("status": "running")") {
    return R"({"direction_angle_degrees": -12.4, "direction_confidence": 0.8, )" + more + "}";
}

QString statusLine(const VoiceDirectionStatus& status) {
    return voiceStatusText(status).whole();
}

} // namespace

void VoiceReadingTest::withoutAnyFileNothingIsFound() {
    VoiceFiles none;
    none.eventPath = u"/nowhere/event.json"_s;
    const VoiceDirectionStatus status = read(none);
    QVERIFY(!status.running && !status.hasDirection && !status.fresh && !status.inverted);
    QVERIFY(status.lowConfidence);
    QCOMPARE(status.eventTimeMs, 0);
    QCOMPARE(status.source, u"/nowhere/event.json"_s);
    QCOMPARE(status.reason, u"Auralis live event JSON not found"_s);
    QCOMPARE(
        statusLine(status),
        u"Auralis: stopped/stale | direction unavailable | Auralis live event JSON not found"_s +
            suffix);

    none.processAlive = true;
    QCOMPARE(statusLine(read(none)),
             u"Auralis: stale | direction unavailable | Auralis live event JSON not found"_s +
                 suffix);
}

void VoiceReadingTest::aServiceWithoutAReadableEventIsToldFromNone() {
    VoiceFiles unreadable = files({});
    unreadable.eventOpened = false;
    QCOMPARE(read(unreadable).reason, u"Auralis running; no fresh direction event"_s);
    QVERIFY(read(unreadable).running);
    QCOMPARE(read(unreadable).eventTimeMs, 0);
    unreadable.processAlive = false;
    QCOMPARE(read(unreadable).reason, u"Auralis stopped or unavailable"_s);
    QCOMPARE(statusLine(read(unreadable)),
             u"Auralis: stopped/stale | direction unavailable | Auralis stopped or unavailable"_s +
                 suffix);
}

void VoiceReadingTest::aFreshEventIsShownWithItsAngle() {
    const VoiceDirectionStatus status = read(files(eventText()));
    QVERIFY(status.running && status.hasDirection && status.fresh);
    QVERIFY(!status.lowConfidence);
    QCOMPARE(status.angleDegrees, -12.4);
    QCOMPARE(status.confidence, 0.8);
    QCOMPARE(status.eventTimeMs, now - 500);
    QCOMPARE(status.reason, u"live Auralis event JSON"_s);
    QCOMPARE(statusLine(status), u"Auralis: running/fresh | angle -12° | confidence 0.80"
                                 " | low confidence false | live Auralis event JSON"_s +
                                     suffix);
    const VoiceDirectionStatus low =
        read(files(eventText(R"("status": "running", "direction_low_confidence": true)")));
    QVERIFY(statusLine(low).contains(u" | low confidence true | "_s));
}

void VoiceReadingTest::anOldEventOfALivingServiceIsStale() {
    const VoiceDirectionStatus status = read(files(eventText(), 5000));
    QVERIFY(status.running && status.hasDirection && !status.fresh);
    QCOMPARE(status.reason, u"stale Auralis event 5.0s old"_s);
    QCOMPARE(statusLine(status),
             u"Auralis: stale | direction stale/inactive | stale Auralis event 5.0s old"_s +
                 suffix);
}

void VoiceReadingTest::aDeadPidIsOverruledByARecentEventThatIsProcessing() {
    const VoiceDirectionStatus status =
        read(files(eventText(R"("live_processing": true, "status": "running")"), 1000, false));
    QVERIFY(status.running && status.fresh);
    QVERIFY(statusLine(status).startsWith(u"Auralis: running/fresh | angle"_s));
}

void VoiceReadingTest::onlyARecentProcessingEventOverrulesADeadPid_data() {
    QTest::addColumn<QByteArray>("more");
    QTest::addColumn<qint64>("ageMs");
    QTest::newRow("not processing")
        << R"("live_processing": false, "status": "running")"_ba << qint64(0);
    QTest::newRow("silent about it") << R"("status": "running")"_ba << qint64(0);
    QTest::newRow("in capitals") << R"("live_processing": TRUE, "status": "running")"_ba
                                 << qint64(0);
    QTest::newRow("too old") << R"("live_processing": true, "status": "running")"_ba
                             << qint64(2001);
    QTest::newRow("too new") << R"("live_processing": true, "status": "running")"_ba << qint64(-1);
}

void VoiceReadingTest::onlyARecentProcessingEventOverrulesADeadPid() {
    QFETCH(QByteArray, more);
    QFETCH(qint64, ageMs);
    const VoiceDirectionStatus status = read(files(eventText(more), ageMs, false));
    QVERIFY(!status.running && !status.fresh && status.hasDirection);
    QVERIFY(statusLine(status).startsWith(u"Auralis: stopped/stale | direction stale"_s));
}

void VoiceReadingTest::anEventIsRecentForTwoSeconds_data() {
    QTest::addColumn<qint64>("ageMs");
    QTest::addColumn<QString>("reason");
    QTest::newRow("just written") << qint64(0) << u"live Auralis event JSON"_s;
    QTest::newRow("at the bound") << qint64(2000) << u"live Auralis event JSON"_s;
    QTest::newRow("past the bound") << qint64(2001) << u"stale Auralis event 2.0s old"_s;
    QTest::newRow("rounded up") << qint64(2950) << u"stale Auralis event 3.0s old"_s;
    QTest::newRow("a day") << qint64(86'400'000) << u"stale Auralis event 86400.0s old"_s;
}

void VoiceReadingTest::anEventIsRecentForTwoSeconds() {
    QFETCH(qint64, ageMs);
    QTEST(read(files(eventText(), ageMs)).reason, "reason");
}

void VoiceReadingTest::anEventFromTheFutureIsNeverFreshAndHasANegativeAge() {
    const VoiceDirectionStatus status = read(files(eventText(), -1500));
    QVERIFY(status.running && !status.fresh);
    QCOMPARE(status.reason, u"stale Auralis event -1.5s old"_s);
    QVERIFY(!read(files(eventText(), -1)).fresh);
    QCOMPARE(read(files(eventText(), -1)).reason, u"stale Auralis event -0.0s old"_s);
}

void VoiceReadingTest::absurdTimesAreNotRecent_data() {
    QTest::addColumn<qint64>("modifiedMs");
    QTest::addColumn<qint64>("nowMs");
    constexpr qint64 most = std::numeric_limits<qint64>::max();
    constexpr qint64 least = std::numeric_limits<qint64>::min();
    QTest::newRow("before the epoch") << qint64(-1) << now;
    QTest::newRow("the end of time") << most << now;
    QTest::newRow("the beginning of time") << least << now;
    QTest::newRow("a clock at the beginning") << most << least;
    QTest::newRow("a clock at the end") << least << most;
}

void VoiceReadingTest::absurdTimesAreNotRecent() {
    QFETCH(qint64, modifiedMs);
    QFETCH(qint64, nowMs);
    VoiceFiles found = files(eventText());
    found.eventModifiedMs = modifiedMs;
    const VoiceDirectionStatus status = voiceDirectionStatus(found, nowMs, false);
    QCOMPARE(status.eventTimeMs, modifiedMs);
    // From the latest time to the earliest is one step around: the rule takes that for 1 ms.
    QCOMPARE(status.fresh, modifiedMs > 0 && nowMs < 0);
}

void VoiceReadingTest::confidenceDecidesWhereTheEventDoesNotSay_data() {
    QTest::addColumn<QByteArray>("keys");
    QTest::addColumn<bool>("low");
    QTest::newRow("0.3") << R"("direction_confidence": 0.3)"_ba << true;
    QTest::newRow("just below") << R"("direction_confidence": 0.3499)"_ba << true;
    QTest::newRow("0.35 exactly") << R"("direction_confidence": 0.35)"_ba << false;
    QTest::newRow("negative") << R"("direction_confidence": -1)"_ba << true;
    QTest::newRow("said to be low")
        << R"("direction_confidence": 0.9, "direction_low_confidence": true)"_ba << true;
    QTest::newRow("said not to be low")
        << R"("direction_confidence": 0.1, "direction_low_confidence" : false)"_ba << false;
    QTest::newRow("said in quotes")
        << R"("direction_confidence": 0.9, "direction_low_confidence": "true")"_ba << false;
}

void VoiceReadingTest::confidenceDecidesWhereTheEventDoesNotSay() {
    QFETCH(QByteArray, keys);
    QTEST(read(files(R"({"direction_angle_degrees": 1, )" + keys + "}")).lowConfidence, "low");
}

void VoiceReadingTest::anEventWithoutAngleAndConfidenceIsNoDirection_data() {
    QTest::addColumn<QByteArray>("event");
    const QByteArray tail = R"(, "status": "restarting", "error": "arecord gone"})";
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("no angle") << R"({"direction_confidence": 0.8)" + tail;
    QTest::newRow("no confidence") << R"({"direction_angle_degrees": 5)" + tail;
    QTest::newRow("angle in quotes")
        << R"({"direction_confidence": 1, "direction_angle_degrees": "5")" + tail;
    QTest::newRow("angle null")
        << R"({"direction_confidence": 1, "direction_angle_degrees": null)" + tail;
    QTest::newRow("angle with two points")
        << R"({"direction_confidence": 1, "direction_angle_degrees": 1.2.3)" + tail;
    QTest::newRow("angle of signs")
        << R"({"direction_confidence": 1, "direction_angle_degrees": +-)" + tail;
    QTest::newRow("angle out of range") << R"({"direction_confidence": 1,
        "direction_angle_degrees": )" + QByteArray(400, '9') +
                                               tail;
    QTest::newRow("other capitals")
        << R"({"direction_confidence": 1, "Direction_Angle_Degrees": 5)" + tail;
    QTest::newRow("single quotes")
        << R"({'direction_confidence': 1, 'direction_angle_degrees': 5)" + tail;
    QTest::newRow("binary") << QByteArray("\0\xff\xfe\x80\r\n\0\x01", 8).repeated(500);
    QTest::newRow("UTF-16") << QByteArray(reinterpret_cast<const char*>(u"{\"direction_conf"), 32);
}

void VoiceReadingTest::anEventWithoutAngleAndConfidenceIsNoDirection() {
    QFETCH(QByteArray, event);
    const VoiceDirectionStatus status = read(files(event));
    QVERIFY(status.running && !status.hasDirection && !status.fresh && status.lowConfidence);
    QCOMPARE(status.angleDegrees, 0.0);
    QCOMPARE(status.confidence, 0.0);
    QCOMPARE(status.eventTimeMs, 0);
    QCOMPARE(status.reason, u"Auralis running; no fresh direction event"_s);
}

void VoiceReadingTest::numbersAreReadUpToTheirExponent_data() {
    QTest::addColumn<QByteArray>("written");
    QTest::addColumn<double>("angle");
    QTest::newRow("exponent") << "1.5e1"_ba << 1.5;
    QTest::newRow("plus") << "+7"_ba << 7.0;
    QTest::newRow("no leading digit") << "-.5"_ba << -0.5;
    QTest::newRow("no trailing digit") << "3."_ba << 3.0;
    QTest::newRow("leading zeros") << "007"_ba << 7.0;
    QTest::newRow("beyond the view") << "170"_ba << 170.0;
    QTest::newRow("hexadecimal") << "0x10"_ba << 0.0;
    QTest::newRow("comma") << "2,5"_ba << 2.0;
}

void VoiceReadingTest::numbersAreReadUpToTheirExponent() {
    QFETCH(QByteArray, written);
    const VoiceDirectionStatus status =
        read(files(R"({"direction_confidence": 1, "direction_angle_degrees" :)" + written + "}"));
    QVERIFY(status.hasDirection);
    QTEST(status.angleDegrees, "angle");
}

void VoiceReadingTest::onlyTheStatusRunningIsFresh_data() {
    QTest::addColumn<QByteArray>("more");
    QTest::addColumn<QString>("reason");
    QTest::newRow("other word") << R"("status": "calibrating")"_ba << u"calibrating"_s;
    QTest::newRow("other case") << R"("status": "Running")"_ba << u"Running"_s;
    QTest::newRow("blank around") << R"("status": "running ")"_ba << u"running "_s;
    QTest::newRow("no status") << R"("more": 1)"_ba << u"stale Auralis event 0.5s old"_s;
    QTest::newRow("empty status") << R"("status": "")"_ba << u"stale Auralis event 0.5s old"_s;
    QTest::newRow("status is no text")
        << R"("status": true)"_ba << u"stale Auralis event 0.5s old"_s;
}

void VoiceReadingTest::onlyTheStatusRunningIsFresh() {
    QFETCH(QByteArray, more);
    const VoiceDirectionStatus status = read(files(eventText(more)));
    QVERIFY(status.running && status.hasDirection && !status.fresh);
    QTEST(status.reason, "reason");
}

void VoiceReadingTest::anErrorWinsOverTheStatus() {
    const VoiceDirectionStatus status =
        read(files(eventText(R"("error": "no microphone", "status": "stopped")")));
    QCOMPARE(status.reason, u"no microphone"_s);
    QVERIFY(!status.fresh);
}

void VoiceReadingTest::anErrorDoesNotEndFreshness() {
    const VoiceDirectionStatus status =
        read(files(eventText(R"("status": "running", "error": "arecord: overrun")")));
    QVERIFY(status.fresh);
    QCOMPARE(status.reason, u"arecord: overrun"_s);
    QVERIFY(statusLine(status).startsWith(u"Auralis: running/fresh | angle -12°"_s));
    QVERIFY(statusLine(status).contains(u" | low confidence false | arecord: overrun | "_s));
}

void VoiceReadingTest::troubleWithTheRecorderShowsAsDegraded_data() {
    QTest::addColumn<QByteArray>("more");
    QTest::addColumn<qint64>("ageMs");
    QTest::addColumn<bool>("alive");
    QTest::addColumn<QString>("prefix");
    const QString degraded = u"Auralis: degraded/restarting | direction stale/inactive | "_s;
    QTest::newRow("recorder, recent")
        << R"("error": "arecord: device busy")"_ba << qint64(100) << true << degraded;
    QTest::newRow("recorder, old") << R"("error": "no arecord", "status": "running")"_ba
                                   << qint64(3'600'000) << true << degraded;
    QTest::newRow("recorder, stopped")
        << R"("error": "arecord")"_ba << qint64(9000) << false << degraded;
    QTest::newRow("restarting") << R"("status": "restarting")"_ba << qint64(100) << true
                                << degraded;
    QTest::newRow("other case") << R"("error": "Arecord, Restarting")"_ba << qint64(100) << true
                                << u"Auralis: stale | direction stale/inactive | "_s;
}

void VoiceReadingTest::troubleWithTheRecorderShowsAsDegraded() {
    QFETCH(QByteArray, more);
    QFETCH(qint64, ageMs);
    QFETCH(bool, alive);
    QFETCH(QString, prefix);
    const QString text = statusLine(read(files(eventText(more), ageMs, alive)));
    QCOMPARE(text.left(prefix.size()), prefix);
}

void VoiceReadingTest::theFirstOccurrenceOfAKeyCountsWhereverItStands() {
    const VoiceDirectionStatus status = read(files(R"({"deep": [{"direction_angle_degrees":
        7}], "direction_angle_degrees": 8, "status":"running","status":"stopped",
        "note": "\"direction_confidence\": 1", "direction_confidence"	:	0.5})"));
    QCOMPARE(status.angleDegrees, 7.0);
    QCOMPARE(status.confidence, 0.5); // the one in the note has a backslash before its quote
    QVERIFY(status.fresh);
}

void VoiceReadingTest::malformedTextIsReadAsFarAsItGoes() {
    const VoiceDirectionStatus status = read(files(
        R"(]]"direction_angle_degrees":3 "direction_confidence":.5 "status":"running" "err)"));
    QVERIFY(status.fresh);
    QCOMPARE(status.angleDegrees, 3.0);
}

void VoiceReadingTest::textsWithPlaceholdersQuotesAndUnicodeStayAsTheyAre_data() {
    QTest::addColumn<QByteArray>("error");
    QTest::addColumn<QString>("shown");
    QTest::newRow("placeholders") << "%1 of %2 %3 %4 %L1 %%"_ba << u"%1 of %2 %3 %4 %L1 %%"_s;
    QTest::newRow("unicode") << QByteArray("M\xc3\xbcll \xe2\x80\xae \xf0\x9f\x8e\xa4")
                             << u"M\u00fcll \u202e \U0001f3a4"_s;
    QTest::newRow("quote ends it") << R"(cut \"here\")"_ba << uR"(cut \)"_s;
    QTest::newRow("line breaks") << "one\ntwo\ttabs"_ba << u"one\ntwo\ttabs"_s;
    QTest::newRow("broken UTF-8") << QByteArray("a\xc3(b") << u"a\ufffd(b"_s;
    QTest::newRow("null character") << QByteArray("a\0b", 3) << u"a\0b"_s;
    QTest::newRow("mark-up") << "<b>x</b> &amp;"_ba << u"<b>x</b> &amp;"_s;
}

void VoiceReadingTest::textsWithPlaceholdersQuotesAndUnicodeStayAsTheyAre() {
    QFETCH(QByteArray, error);
    QFETCH(QString, shown);
    const QByteArray more = R"("status": "running", "error": ")" + error + '"';
    QCOMPARE(statusLine(read(files(eventText(more)))),
             u"Auralis: running/fresh | angle -12° | confidence 0.80 | low confidence false | "_s +
                 shown + suffix);
    QCOMPARE(statusLine(read(files(eventText(more), 5000))),
             u"Auralis: stale | direction stale/inactive | "_s + shown + suffix);
    QCOMPARE(read(files(eventText(R"("status": ")" + error + '"'))).reason, shown);
}

void VoiceReadingTest::inversionChangesTheMappingAndNotTheAngle() {
    const VoiceDirectionStatus status = voiceDirectionStatus(files(eventText()), now, true);
    QVERIFY(status.inverted);
    QCOMPARE(status.angleDegrees, -12.4);
    const QString text = statusLine(status);
    QVERIFY(text.contains(u" | angle -12° | "_s));
    QVERIFY(text.endsWith(u" | audio direction mapping: inverted | audio_direction_inverted=true"
                          " | attention only, no trust granted"_s));
}

void VoiceReadingTest::thePidIsDecimalAndPositive_data() {
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<qint64>("pid");
    QTest::newRow("plain") << "1234"_ba << qint64(1234);
    QTest::newRow("white space around") << " \t1234\r\n\n"_ba << qint64(1234);
    QTest::newRow("beyond 32 bits")
        << "9223372036854775807"_ba << std::numeric_limits<qint64>::max();
    QTest::newRow("beyond 64 bits") << "9223372036854775808"_ba << qint64(0);
    QTest::newRow("zero") << "0"_ba << qint64(0);
    QTest::newRow("negative") << "-1"_ba << qint64(0);
    QTest::newRow("empty") << ""_ba << qint64(0);
    QTest::newRow("two numbers") << "12 34"_ba << qint64(0);
    QTest::newRow("a word behind") << "12x"_ba << qint64(0);
    QTest::newRow("hexadecimal") << "0x12"_ba << qint64(0);
    QTest::newRow("fraction") << "12.0"_ba << qint64(0);
    QTest::newRow("plus sign") << "+12"_ba << qint64(12);
}

void VoiceReadingTest::thePidIsDecimalAndPositive() {
    QFETCH(QByteArray, content);
    QTEST(voiceServicePid(content), "pid");
}

void VoiceReadingTest::theLogLineQuotesTextsAndNothingElse() {
    const LogCapture log;
    qInfo() << "Qt Auralis direction:" << read(files(eventText()));
    qInfo() << "Qt Auralis direction:"
            << voiceDirectionStatus(files(eventText(R"("error": "say \n%1")"), 9000, false), now,
                                    true);
    QCOMPARE(log.lines().size(), 2);
    QCOMPARE(log.lines().at(0),
             u"Qt Auralis direction: running fresh angle -12.4 confidence 0.8 low false source "
             "\"/home/somebody/event.json\" mapping normal reason \"live Auralis event JSON\""_s);
    QCOMPARE(log.lines().at(1),
             u"Qt Auralis direction: stopped stale/unavailable angle -12.4 confidence 0.8 low "
             "false source \"/home/somebody/event.json\" mapping inverted reason "
             "\"say \\\\n%1\""_s);
}

void VoiceReadingTest::hostileTextsTakeLinearTime_data() {
    QTest::addColumn<QByteArray>("text");
    constexpr qsizetype size = 1024 * 1024;
    const auto filled = [](const QByteArray& start, const QByteArray& piece) {
        return start + piece.repeated((size - start.size()) / piece.size());
    };
    const QByteArray direction = eventText();
    QTest::newRow("blanks behind a key") << filled(direction + R"("error")", " ");
    QTest::newRow("blanks behind a colon") << filled(direction + R"("error":)", " \n");
    QTest::newRow("keys without end") << filled(direction, R"("error":)");
    QTest::newRow("keys with blanks") << filled(direction, R"("error"  :  )");
    QTest::newRow("a text without end") << filled(direction + R"("error":")", "x");
    QTest::newRow("texts without end") << filled(direction, R"("error":"x)");
    QTest::newRow("starts of keys") << filled(direction, R"("erro)");
    QTest::newRow("a number without end")
        << filled(R"("direction_confidence":1,"direction_angle_degrees":)", "1");
    QTest::newRow("a text of a mebibyte") << filled(direction + R"("error":")", "x") + '"';
}

void VoiceReadingTest::hostileTextsTakeLinearTime() {
    QFETCH(QByteArray, text);
    const auto quickest = [](const QByteArray& content) {
        qint64 best = std::numeric_limits<qint64>::max();
        for (int round = 0; round < 3; ++round) {
            const qint64 start = processorNs();
            read(files(content));
            best = std::min(best, processorNs() - start);
        }
        return best;
    };
    // As long and without a single key behind the direction: all six searches go to the end.
    const qint64 harmless = quickest(eventText({}) + QByteArray(text.size(), 'x'));
    const qint64 hostile = quickest(text);
    qInfo("%.2f ms, harmless %.2f ms", double(hostile) / 1e6, double(harmless) / 1e6);
    // Converting a number of a million digits is linear but slow; a search that tries every end for
    // every start would take ten thousand times as long and more.
    QVERIFY2(hostile < 1000 * harmless, "a search or a conversion is not linear");
}

void VoiceReadingTest::theReasonIsLoggedAsQDebugQuotesIt() {
    for (const QString& reason :
         {u"plain words, 100%1 of them"_s, QString(), u"a \"quote\""_s, u"back\\slash"_s,
          u"line\nbreak\ttab"_s, u"Gerät 😀 \u202E"_s, u"\u007f~ "_s}) {
        VoiceDirectionStatus status;
        status.reason = reason;
        QString line;
        QDebug(&line) << status << "after" << reason;
        QString tail;
        QDebug(&tail) << "reason" << reason << "after" << reason;
        QVERIFY2(line.endsWith(tail), qPrintable(line));
    }
}

QTEST_APPLESS_MAIN(VoiceReadingTest)
#include "voice_reading_test.moc"
