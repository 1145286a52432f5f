#include "awareness/overlays.h"
#include "awareness/speaker_notes.h"

#include <QTest>

#include <limits>

using namespace Qt::StringLiterals;

class SpeakerNotesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void oneCandidateIsThePossibleSpeaker();
    void neighbouringZonesCount();
    void severalCandidatesAreAmbiguous();
    void withoutACandidateTheVoiceIsUnmatched();
    void aLowConfidenceReadingIsUncertainForAll();
    void onlyTheVoiceIsMirrored();
    void theMiddleOfTheBoxCounts_data();
    void theMiddleOfTheBoxCounts();
    void anAngleThatIsNoNumberTagsNobody();
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

void SpeakerNotesTest::oneCandidateIsThePossibleSpeaker() {
    QCOMPARE(notes(peopleAt({50, 350}), voiceFrom(0)), QStringList({u""_s, u"possible speaker"_s}));
}

void SpeakerNotesTest::neighbouringZonesCount() {
    QCOMPARE(notes(peopleAt({250}), voiceFrom(0)), QStringList(u"possible speaker"_s));
    QCOMPARE(notes(peopleAt({450}), voiceFrom(0)), QStringList(u"possible speaker"_s));
    QCOMPARE(notes(peopleAt({150}), voiceFrom(0)), QStringList(u"voice unmatched"_s));
    QCOMPARE(notes(peopleAt({550}), voiceFrom(0)), QStringList(u"voice unmatched"_s));
}

void SpeakerNotesTest::severalCandidatesAreAmbiguous() {
    QCOMPARE(notes(peopleAt({250, 50, 350}), voiceFrom(0)),
             QStringList({u"speaker ambiguous"_s, u""_s, u"speaker ambiguous"_s}));
}

void SpeakerNotesTest::withoutACandidateTheVoiceIsUnmatched() {
    QCOMPARE(notes(peopleAt({50, 150}), voiceFrom(50)),
             QStringList({u"voice unmatched"_s, u"voice unmatched"_s}));
    QVERIFY(notes({}, voiceFrom(0)).isEmpty());
}

void SpeakerNotesTest::aLowConfidenceReadingIsUncertainForAll() {
    VoiceDirectionStatus voice = voiceFrom(0);
    voice.lowConfidence = true;
    QCOMPARE(notes(peopleAt({50, 350}), voice),
             QStringList({u"speaker uncertain"_s, u"speaker uncertain"_s}));
}

void SpeakerNotesTest::onlyTheVoiceIsMirrored() {
    QCOMPARE(notes(peopleAt({50, 550}), voiceFrom(-60), true),
             QStringList({u""_s, u"possible speaker"_s}));
}

void SpeakerNotesTest::theMiddleOfTheBoxCounts_data() {
    QTest::addColumn<QRect>("rect");
    QTest::addColumn<int>("imageWidth");
    QTest::addColumn<int>("zone");
    QTest::newRow("99") << QRect(QPoint(0, 0), QPoint(199, 9)) << width << 0;
    QTest::newRow("100") << QRect(QPoint(0, 0), QPoint(200, 9)) << width << 1;
    QTest::newRow("the right edge") << QRect(590, 0, 10, 10) << width << 5;
    QTest::newRow("right of the image") << QRect(5000, 0, 10, 10) << width << 5;
    QTest::newRow("left of the image") << QRect(-5000, 0, 10, 10) << width << 0;
    QTest::newRow("an image without width") << QRect(5, 0, 10, 10) << 0 << 5;
}

void SpeakerNotesTest::theMiddleOfTheBoxCounts() {
    QFETCH(QRect, rect);
    QFETCH(int, imageWidth);
    QFETCH(int, zone);
    for (int voiceZone = 0; voiceZone < 6; ++voiceZone) {
        QList<FaceOverlay> list{overlays::face(identity::unknown, rect)};
        tagSpeakers(list, voiceFrom(-50.0 + 20.0 * voiceZone), false, imageWidth);
        QCOMPARE(list[0].speakerNote,
                 qAbs(voiceZone - zone) <= 1 ? u"possible speaker"_s : u"voice unmatched"_s);
    }
}

void SpeakerNotesTest::anAngleThatIsNoNumberTagsNobody() {
    const double notANumber = std::numeric_limits<double>::quiet_NaN();
    for (const bool inverted : {false, true})
        QCOMPARE(notes(peopleAt({50, 350}), voiceFrom(notANumber), inverted),
                 QStringList({u""_s, u""_s}));
}

void SpeakerNotesTest::anOldReadingTagsNobody_data() {
    QTest::addColumn<bool>("hasDirection");
    QTest::addColumn<bool>("fresh");
    QTest::newRow("no direction") << false << true;
    QTest::newRow("not fresh") << true << false;
}

void SpeakerNotesTest::anOldReadingTagsNobody() {
    VoiceDirectionStatus voice = voiceFrom(0);
    QFETCH(bool, hasDirection);
    QFETCH(bool, fresh);
    voice.hasDirection = hasDirection;
    voice.fresh = fresh;
    QCOMPARE(notes(peopleAt({350}), voice), QStringList(u""_s));
}

QTEST_APPLESS_MAIN(SpeakerNotesTest)
#include "speaker_notes_test.moc"
