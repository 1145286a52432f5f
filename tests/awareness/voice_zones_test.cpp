#include "awareness/overlays.h"
#include "awareness/voice_zones.h"

#include <QTest>

#include <limits>

using namespace Qt::StringLiterals;

class VoiceZonesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void anglesFallIntoSixZones_data();
    void anglesFallIntoSixZones();
    void boxesFallIntoSixZonesByTheirCentre();
    void oneCandidateIsThePossibleSpeaker();
    void neighbouringZonesCount();
    void severalCandidatesAreAmbiguous();
    void withoutACandidateTheVoiceIsUnmatched();
    void aLowConfidenceReadingIsUncertainForAll();
    void onlyTheVoiceIsMirrored();
    void anOldReadingTagsNobody_data();
    void anOldReadingTagsNobody();
};

namespace {

constexpr int width = 600; // zones of 100 pixels

QList<FaceOverlay> peopleAt(const QList<int>& centres) {
    QList<FaceOverlay> list;
    for (const int centre : centres)
        list.append(overlays::face(identity::unknown, QRect(centre - 10, 0, 21, 30)));
    return list;
}

VoiceDirectionStatus voiceFrom(double degrees) {
    VoiceDirectionStatus voice;
    voice.running = voice.hasDirection = voice.fresh = true;
    voice.lowConfidence = false;
    voice.angleDegrees = degrees;
    return voice;
}

QStringList notes(QList<FaceOverlay> list, const VoiceDirectionStatus& voice,
                  bool inverted = false) {
    tagSpeakers(list, voice, inverted, width);
    QStringList texts;
    for (const FaceOverlay& overlay : list)
        texts.append(overlay.speakerNote);
    return texts;
}

} // namespace

void VoiceZonesTest::anglesFallIntoSixZones_data() {
    QTest::addColumn<double>("degrees");
    QTest::addColumn<int>("zone");
    QTest::newRow("-60") << -60.0 << 0;
    QTest::newRow("far left") << -500.0 << 0;
    QTest::newRow("-40.01") << -40.01 << 0;
    QTest::newRow("-40") << -40.0 << 1;
    QTest::newRow("0") << 0.0 << 3;
    QTest::newRow("-0.01") << -0.01 << 2;
    QTest::newRow("59") << 59.0 << 5;
    QTest::newRow("60") << 60.0 << 5;
    QTest::newRow("far right") << 1e308 << 5;
    QTest::newRow("infinite") << std::numeric_limits<double>::infinity() << 5;
    QTest::newRow("not a number") << std::numeric_limits<double>::quiet_NaN() << 0;
}

void VoiceZonesTest::anglesFallIntoSixZones() {
    QFETCH(double, degrees);
    QFETCH(int, zone);
    QCOMPARE(voiceZone(degrees, false), zone);
    QCOMPARE(voiceZone(degrees, true), 5 - zone);
}

void VoiceZonesTest::boxesFallIntoSixZonesByTheirCentre() {
    QCOMPARE(overlayZone(QRect(QPoint(0, 0), QPoint(199, 9)), width), 0);
    QCOMPARE(overlayZone(QRect(QPoint(0, 0), QPoint(200, 9)), width), 1);
    QCOMPARE(overlayZone(QRect(590, 0, 10, 10), width), 5);
    QCOMPARE(overlayZone(QRect(5000, 0, 10, 10), width), 5);
    QCOMPARE(overlayZone(QRect(-5000, 0, 10, 10), width), 0);
    QCOMPARE(overlayZone(QRect(5, 0, 10, 10), 0), 5);
}

void VoiceZonesTest::oneCandidateIsThePossibleSpeaker() {
    QCOMPARE(notes(peopleAt({50, 350}), voiceFrom(0)), QStringList({u""_s, u"possible speaker"_s}));
}

void VoiceZonesTest::neighbouringZonesCount() {
    QCOMPARE(notes(peopleAt({250}), voiceFrom(0)), QStringList(u"possible speaker"_s));
    QCOMPARE(notes(peopleAt({450}), voiceFrom(0)), QStringList(u"possible speaker"_s));
    QCOMPARE(notes(peopleAt({150}), voiceFrom(0)), QStringList(u"voice unmatched"_s));
    QCOMPARE(notes(peopleAt({550}), voiceFrom(0)), QStringList(u"voice unmatched"_s));
}

void VoiceZonesTest::severalCandidatesAreAmbiguous() {
    QCOMPARE(notes(peopleAt({250, 50, 350}), voiceFrom(0)),
             QStringList({u"speaker ambiguous"_s, u""_s, u"speaker ambiguous"_s}));
}

void VoiceZonesTest::withoutACandidateTheVoiceIsUnmatched() {
    QCOMPARE(notes(peopleAt({50, 150}), voiceFrom(50)),
             QStringList({u"voice unmatched"_s, u"voice unmatched"_s}));
    QVERIFY(notes({}, voiceFrom(0)).isEmpty());
}

void VoiceZonesTest::aLowConfidenceReadingIsUncertainForAll() {
    VoiceDirectionStatus voice = voiceFrom(0);
    voice.lowConfidence = true;
    QCOMPARE(notes(peopleAt({50, 350}), voice),
             QStringList({u"speaker uncertain"_s, u"speaker uncertain"_s}));
}

void VoiceZonesTest::onlyTheVoiceIsMirrored() {
    QCOMPARE(notes(peopleAt({50, 550}), voiceFrom(-60), true),
             QStringList({u""_s, u"possible speaker"_s}));
}

void VoiceZonesTest::anOldReadingTagsNobody_data() {
    QTest::addColumn<bool>("hasDirection");
    QTest::addColumn<bool>("fresh");
    QTest::newRow("no direction") << false << true;
    QTest::newRow("not fresh") << true << false;
}

void VoiceZonesTest::anOldReadingTagsNobody() {
    VoiceDirectionStatus voice = voiceFrom(0);
    QFETCH(bool, hasDirection);
    QFETCH(bool, fresh);
    voice.hasDirection = hasDirection;
    voice.fresh = fresh;
    QCOMPARE(notes(peopleAt({350}), voice), QStringList(u""_s));
}

QTEST_APPLESS_MAIN(VoiceZonesTest)
#include "voice_zones_test.moc"
