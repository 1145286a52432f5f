#include "enroll/report.h"

#include <QTest>

using namespace enroll;
using namespace Qt::StringLiterals;

namespace {

/// A sitting after which nothing is missing.
SittingResult fullResult() {
    SittingResult result;
    result.kept = 24;
    result.framesLookedAt = 31;
    result.sitting = {24, 10, 8, 6, 2};
    result.folder = {24, 10, 8, 6, 2};
    result.rehearsal = Rehearsal{24, 22, 38.4};
    return result;
}

void count(SittingResult& result, Flaw flaw, int frames) {
    result.tally[std::size_t(flaw)] = frames;
}

} // namespace

class ReportTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everythingIsReported();
    void theMostFrequentReasonComesFirst();
    void nothingIsSaidOfReasonsWithoutFrames();
    void aSittingWithoutSamplesIsNeverGood();
    void whoWalksAboutNeedsLess();
    void everyFlawHasWordsOfItsOwn();
};

void ReportTest::everythingIsReported() {
    SittingResult result = fullResult();
    count(result, Flaw::TooSmall, 5);
    count(result, Flaw::None, 24);
    count(result, Flaw::Copy, 2);
    QVERIFY(isGood(result));
    QCOMPARE(
        reportLines(result, face::Options()),
        (QStringList{u"Kept 24 of 31 frames: 10 near, 8 middle, 6 far."_s,
                     u"Not kept: 5 too far, 2 a copy."_s,
                     u"Rehearsal, each sitting told by the others: 22 of 24 at 60 or less, median "
                     "38."_s,
                     u"Nothing is missing."_s,
                     u"Restart the Control Center: it learns at its start."_s}));
}

void ReportTest::theMostFrequentReasonComesFirst() {
    SittingResult result = fullResult();
    count(result, Flaw::NoFace, 3);
    count(result, Flaw::Unsteady, 40);
    count(result, Flaw::TooDark, 3);
    QCOMPARE(refusalWords(result.tally), u"40 moving, 3 no face, 3 too dark"_s);
    QCOMPARE(mostFrequentFlaw(result.tally), Flaw::Unsteady);
}

void ReportTest::nothingIsSaidOfReasonsWithoutFrames() {
    SittingResult result = fullResult();
    count(result, Flaw::None, 24); // what was kept is no reason
    QVERIFY(refusalWords(result.tally).isEmpty());
    QCOMPARE(mostFrequentFlaw(result.tally), Flaw::None);
    QVERIFY(!reportLines(result, face::Options()).join(u' ').contains(u"Not kept"_s));
}

void ReportTest::aSittingWithoutSamplesIsNeverGood() {
    SittingResult result = fullResult();
    result.kept = 0;
    QVERIFY(!isGood(result));
    QVERIFY(!reportLines(result, face::Options()).contains(restartSentence()));
}

void ReportTest::whoWalksAboutNeedsLess() {
    SittingResult result = fullResult();
    result.folder = {20, 4, 0, 16, 1};
    QVERIFY(!isGood(result));
    QVERIFY(reportLines(result, face::Options())
                .contains(u"This is thin. Missing: samples at about 1.4 m, a second light."_s));
    result.walkedAbout = true;
    QVERIFY(isGood(result));
    QVERIFY(reportLines(result, face::Options())
                .contains(u"What would still help: samples at about 1.4 m, a second light."_s));
    result.folder.samples = 19;
    QVERIFY(!isGood(result));
}

void ReportTest::everyFlawHasWordsOfItsOwn() {
    QStringList words;
    for (int flaw = 0; flaw < flawCount; ++flaw)
        words.append(flawWords(Flaw(flaw)));
    QCOMPARE(words.removeDuplicates(), 0);
    QVERIFY(!words.contains(QString()));
}

QTEST_APPLESS_MAIN(ReportTest)
#include "report_test.moc"
