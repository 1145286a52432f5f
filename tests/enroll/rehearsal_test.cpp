#include "enroll/rehearsal.h"
#include "enroll/sample_index.h"
#include "enroll/stranger_report.h"
#include "face/owner_model.h"
#include "face/synthetic_face.h"

#include <QTest>

using namespace enroll;
using namespace Qt::StringLiterals;

namespace {

constexpr double threshold = 60.0;

// Three samples of Monday, two of Tuesday.
const QStringList days{u"mon"_s, u"mon"_s, u"mon"_s, u"tue"_s, u"tue"_s};
const DistanceTable table{{0, 10, 10, 40, 50},
                          {10, 0, 10, 61, 60},
                          {10, 10, 0, 70, 80},
                          {40, 61, 70, 0, 5},
                          {50, 60, 80, 5, 0}};

} // namespace

class RehearsalTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void eachSittingIsToldByTheOthers();
    void oneSittingCannotRehearse();
    void aSampleLeftOutNeitherAsksNorAnswers();
    void whatIsMissingIsNamed_data();
    void whatIsMissingIsNamed();
    void walkingAboutNeedsTwoDistances();
    void distancesAreTheRecognizersOwn();
    void takingOutAPictureKeepsTheOthersDistances();
    void aStrangersLooksAreCountedBySample();
    void nobodyIsTakenWithoutLooks();
};

void RehearsalTest::eachSittingIsToldByTheOthers() {
    const auto rehearsal = rehearse(table, days, threshold);
    QVERIFY(rehearsal.has_value());
    // Nearest of another sitting: 40, 60, 70, 40, 50.
    QCOMPARE(rehearsal->asked, 5);
    QCOMPARE(rehearsal->told, 4);
    QCOMPARE(rehearsal->median, 50.0);
    QCOMPARE(rehearsalWords(rehearsal, threshold), u"4 of 5 at 60 or less, median 50"_s);
}

void RehearsalTest::oneSittingCannotRehearse() {
    const QStringList one{u"mon"_s, u"mon"_s, u"mon"_s, u"mon"_s, u"mon"_s};
    QVERIFY(!rehearse(table, one, threshold).has_value());
    QVERIFY(!rehearse({}, {}, threshold).has_value());
    QCOMPARE(rehearsalWords(std::nullopt, threshold),
             u"needs a second sitting, best in another light"_s);
}

void RehearsalTest::aSampleLeftOutNeitherAsksNorAnswers() {
    const auto rehearsal = rehearse(table, days, threshold, 0);
    QVERIFY(rehearsal.has_value());
    // Without the first: 60, 70, 61, 60.
    QCOMPARE(rehearsal->asked, 4);
    QCOMPARE(rehearsal->told, 2);
    QCOMPARE(rehearsal->median, 61.0);
}

void RehearsalTest::whatIsMissingIsNamed_data() {
    QTest::addColumn<int>("near");
    QTest::addColumn<int>("middle");
    QTest::addColumn<int>("far");
    QTest::addColumn<int>("elsewhere");
    QTest::addColumn<int>("sittings");
    QTest::addColumn<QStringList>("missing");
    QTest::newRow("nothing") << 7 << 7 << 6 << 0 << 2 << QStringList();
    QTest::newRow("a sample") << 7 << 7 << 5 << 0 << 2 << QStringList{u"1 more sample"_s};
    QTest::newRow("near") << 0 << 14 << 6 << 0 << 2 << QStringList{u"samples at about 1 m"_s};
    QTest::newRow("middle") << 10 << 0 << 10 << 0 << 3 << QStringList{u"samples at about 1.4 m"_s};
    QTest::newRow("far") << 10 << 10 << 0 << 0 << 2 << QStringList{u"samples at about 2 m"_s};
    QTest::newRow("light") << 7 << 7 << 6 << 0 << 1 << QStringList{u"a second light"_s};
    QTest::newRow("of unknown distance") << 1 << 1 << 1 << 17 << 2 << QStringList();
    QTest::newRow("everything") << 0 << 0 << 0 << 0 << 0
                                << QStringList{u"20 more samples"_s, u"samples at about 1 m"_s,
                                               u"samples at about 1.4 m"_s,
                                               u"samples at about 2 m"_s, u"a second light"_s};
}

void RehearsalTest::whatIsMissingIsNamed() {
    QFETCH(int, near);
    QFETCH(int, middle);
    QFETCH(int, far);
    QFETCH(int, elsewhere);
    QFETCH(int, sittings);
    Coverage coverage;
    for (int i = 0; i < near; ++i)
        addSample(coverage, Distance::Near);
    for (int i = 0; i < middle; ++i)
        addSample(coverage, Distance::Middle);
    for (int i = 0; i < far; ++i)
        addSample(coverage, Distance::Far);
    for (int i = 0; i < elsewhere; ++i)
        addSample(coverage, std::nullopt);
    coverage.sittings = sittings;
    QTEST(missingThings(coverage), "missing");
    QCOMPARE(isEnough(coverage), missingThings(coverage).isEmpty());
}

void RehearsalTest::walkingAboutNeedsTwoDistances() {
    QVERIFY(isEnoughForWalkingAbout({20, 1, 0, 19, 1}));
    QVERIFY(!isEnoughForWalkingAbout({19, 1, 0, 18, 1}));
    QVERIFY(!isEnoughForWalkingAbout({40, 0, 0, 40, 2}));
}

void RehearsalTest::distancesAreTheRecognizersOwn() {
    std::vector<cv::Mat> pictures;
    for (const unsigned person : {1U, 2U, 3U})
        pictures.push_back(recognizerInput(syntheticFace(180, person)));
    const DistanceTable distances = distanceTable(pictures);
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        QCOMPARE(distances[i][i], 0.0);
        for (std::size_t other = 0; other < pictures.size(); ++other) {
            const auto model = trainOwnerModel({{pictures[other], ownerClass}});
            int label = 0;
            double distance = 0.0;
            model->predict(pictures[i], label, distance);
            QCOMPARE(distances[i][other], distance);
        }
    }
}

void RehearsalTest::takingOutAPictureKeepsTheOthersDistances() {
    SampleIndex index;
    QVERIFY(!index.nearestTo(recognizerInput(syntheticFace(180))).has_value());
    std::vector<cv::Mat> pictures;
    for (const unsigned person : {1U, 2U, 3U}) {
        pictures.push_back(recognizerInput(syntheticFace(180, person)));
        index.add(pictures.back());
    }
    const std::vector<double> before = index.distancesTo(pictures[0]);
    index.remove(1);
    QCOMPARE(index.size(), 2U);
    QVERIFY(index.distancesTo(pictures[0]) == (std::vector<double>{before[0], before[2]}));
    QVERIFY(*index.nearestTo(pictures[1]) > 0.0);
    index.remove(0);
    index.remove(0);
    QVERIFY(index.distancesTo(pictures[0]).empty());
}

void RehearsalTest::aStrangersLooksAreCountedBySample() {
    const DistanceTable looks{{70, 80, 90, 95, 99},  // refused
                              {55, 58, 90, 95, 99},  // passes by two
                              {59, 80, 90, 95, 99},  // only by the first
                              {90, 90, 90, 45, 99}}; // by another
    const StrangerReport report = weighStranger(looks, table, days, threshold);
    QCOMPARE(report.looks, 4);
    QCOMPARE(report.taken, 3);
    QCOMPARE(report.nearest, 45.0);
    QCOMPARE(report.culprits.size(), 2U);
    QCOMPARE(report.culprits[0].sample, 0U);
    QCOMPARE(report.culprits[0].takenBy, 2);
    QCOMPARE(report.culprits[0].takenWithout, 2);
    QCOMPARE(report.culprits[0].rehearsalWithout->told, 2);
    QCOMPARE(report.culprits[1].sample, 3U);
    QCOMPARE(report.culprits[1].takenWithout, 2);
    const QStringList names{u"a.png"_s, u"b.png"_s, u"c.png"_s, u"d.png"_s, u"e.png"_s};
    const QStringList lines = strangerLines(report, names, threshold);
    QCOMPARE(lines.value(0),
             u"Taken for the owner in 3 of 4 looks (75.0 %); the nearest was at 45, "
             "60 or less passes."_s);
    QCOMPARE(lines.value(1),
             u"  a.png: 2 looks. Without it 2 would pass; the owner's rehearsal: 2 of 4 at 60 or "
             "less, median 61 instead of 4 of 5 at 60 or less, median 50."_s);
    QVERIFY(lines.last().contains(u"set-aside"_s));
}

void RehearsalTest::nobodyIsTakenWithoutLooks() {
    const StrangerReport report = weighStranger({}, table, days, threshold);
    QCOMPARE(report.taken, 0);
    QVERIFY(report.culprits.empty());
    QCOMPARE(strangerLines(report, {}, threshold).size(), 1);
    const StrangerReport noSamples = weighStranger({{}, {}}, {}, {}, threshold);
    QCOMPARE(noSamples.looks, 2);
    QCOMPARE(noSamples.taken, 0);
}

QTEST_APPLESS_MAIN(RehearsalTest)
#include "rehearsal_test.moc"
