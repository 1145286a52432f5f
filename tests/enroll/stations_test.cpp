#include "enroll/station_plan.h"

#include <QSet>
#include <QTest>

using namespace enroll;
using namespace Qt::StringLiterals;

class StationsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void distancesAreRangesWithGaps_data();
    void distancesAreRangesWithGaps();
    void aFaceOf80PixelsIsAbout2Point4MetresAway();
    void theStationsAreThoseOfTheGuide();
    void onlyFrontalFacesAndProfilesAreToldApart_data();
    void onlyFrontalFacesAndProfilesAreToldApart();
    void everyStationAsksInOneSentence();
    void theFirstStationIsAskedForFirst();
    void aStationIsFilledByItsSamples();
    void aSkippedStationIsNotAskedForAgain();
    void aStationIsPassedAfterTwentySeconds();
    void repeatingAsksForTheCurrentStationAgain();
    void repeatingWithoutASampleAsksForTheOneBefore();
    void atTheEndRepeatingAsksForTheLast();
    void walkingAboutFillsBinsByDistanceAndDetector();
};

void StationsTest::distancesAreRangesWithGaps_data() {
    QTest::addColumn<int>("side");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("nearest");
    const auto row = [](int side, const QString& name, const QString& nearest) {
        QTest::addRow("%d px", side) << side << name << nearest;
    };
    row(83, {}, u"far"_s);
    row(84, u"far"_s, u"far"_s);
    row(110, u"far"_s, u"far"_s);
    row(111, {}, u"far"_s);
    row(114, {}, u"middle"_s);
    row(115, u"middle"_s, u"middle"_s);
    row(165, u"middle"_s, u"middle"_s);
    row(166, {}, u"middle"_s);
    row(169, {}, u"near"_s);
    row(170, u"near"_s, u"near"_s);
    row(240, u"near"_s, u"near"_s);
    row(241, {}, u"near"_s);
    row(900, {}, u"near"_s);
}

void StationsTest::distancesAreRangesWithGaps() {
    QFETCH(int, side);
    QFETCH(QString, name);
    QFETCH(QString, nearest);
    const std::optional<Distance> distance = distanceOf(side);
    QCOMPARE(distance ? distanceName(*distance) : QString(), name);
    QCOMPARE(distanceName(nearestDistance(side)), nearest);
    QVERIFY(distanceNamed(name) == distance);
}

void StationsTest::aFaceOf80PixelsIsAbout2Point4MetresAway() {
    QCOMPARE(metersForSide(80), 2.4);
    QCOMPARE(metersForSide(192), 1.0);
    QCOMPARE(metersForSide(96), 2.0);
}

void StationsTest::theStationsAreThoseOfTheGuide() {
    QStringList names;
    int wanted = 0;
    for (const Station& station : allStations()) {
        names.append(stationName(station) + (station.light == 2 ? u" again"_s : QString()));
        QVERIFY(station.wanted >= 1 && station.wanted <= 3);
        wanted += station.wanted;
    }
    QCOMPARE(names.size(), QSet<QString>(names.begin(), names.end()).size());
    QCOMPARE(wanted, 28);
    for (const char* distance : {"near", "middle", "far"})
        for (const char* pose :
             {"front", "chin-up", "chin-down", "turned-left", "turned-right", "front again"})
            QVERIFY(names.contains(QLatin1StringView(distance) + u'-' + QLatin1StringView(pose)));
    for (const char* distance : {"near", "middle"})
        for (const char* pose : {"profile-left", "profile-right"})
            QVERIFY(names.contains(QLatin1StringView(distance) + u'-' + QLatin1StringView(pose)));
    QCOMPARE(names.size(), 3 * 6 + 2 * 2);
}

void StationsTest::onlyFrontalFacesAndProfilesAreToldApart_data() {
    QTest::addColumn<int>("pose");
    QTest::addColumn<QString>("detector");
    const auto row = [](Pose pose, const char* detector) {
        QTest::newRow(qPrintable(poseName(pose))) << int(pose) << QString::fromLatin1(detector);
    };
    row(Pose::Front, "frontal");
    row(Pose::ChinUp, "frontal");
    row(Pose::ChinDown, "frontal");
    row(Pose::TurnedLeft, "frontal");
    row(Pose::TurnedRight, "frontal");
    row(Pose::ProfileLeft, "profile_left");
    row(Pose::ProfileRight, "profile_right");
}

void StationsTest::onlyFrontalFacesAndProfilesAreToldApart() {
    QFETCH(int, pose);
    QFETCH(QString, detector);
    for (const QString& name : {u"frontal"_s, u"profile_left"_s, u"profile_right"_s,
                                u"frontal+far_crop"_s, u"profile_left+far_crop"_s})
        QCOMPARE(poseMatches(Pose(pose), name.toStdString()), name == detector);
}

void StationsTest::everyStationAsksInOneSentence() {
    for (const Station& station : allStations()) {
        const QString prompt = stationPrompt(station);
        QCOMPARE(prompt.count(u'.') - prompt.count(u"1.4"_s), 1);
        QVERIFY(prompt.endsWith(u'.'));
        QCOMPARE(prompt.contains(u"lamp"_s), station.light == 2);
    }
}

void StationsTest::theFirstStationIsAskedForFirst() {
    const StationPlan plan = startPlan(500);
    QCOMPARE(askedStation(plan), &allStations().front());
    QCOMPARE(filledStations(plan), 0);
    QCOMPARE(timeLeftMs(plan, 500), stationTimeoutMs);
}

void StationsTest::aStationIsFilledByItsSamples() {
    StationPlan plan = startPlan(0);
    plan = keepForStation(plan, 100); // the straight look wants two
    QCOMPARE(plan.current, 0U);
    plan = keepForStation(plan, 200);
    QCOMPARE(plan.current, 1U);
    QCOMPARE(plan.askedMs, 200);
    QVERIFY(isFilled(plan, 0));
    plan = keepForStation(plan, 300);
    QCOMPARE(plan.current, 2U);
    QCOMPARE(filledStations(plan), 2);
}

void StationsTest::aSkippedStationIsNotAskedForAgain() {
    StationPlan plan = startPlan(0);
    for (std::size_t i = 0; i < allStations().size(); ++i) {
        QCOMPARE(plan.current, i);
        plan = skipStation(plan, qint64(i));
    }
    QVERIFY(!askedStation(plan));
    QCOMPARE(filledStations(plan), 0);
    // Nothing more happens.
    plan = skipStation(keepForStation(plan, 99), 99);
    QVERIFY(!askedStation(plan));
}

void StationsTest::aStationIsPassedAfterTwentySeconds() {
    StationPlan plan = startPlan(1000);
    plan = passTime(plan, 20999);
    QCOMPARE(plan.current, 0U);
    plan = passTime(plan, 21000);
    QCOMPARE(plan.current, 1U);
    QCOMPARE(plan.askedMs, 21000);
    QCOMPARE(timeLeftMs(plan, 31000), 10000);
}

void StationsTest::repeatingAsksForTheCurrentStationAgain() {
    const StationPlan plan = keepForStation(startPlan(0), 100);
    const Repetition repetition = repeatStation(plan, 200);
    QCOMPARE(repetition.station, 0U);
    QCOMPARE(repetition.plan.current, 0U);
    QCOMPARE(repetition.plan.states[0].kept, 0);
    QCOMPARE(repetition.plan.askedMs, 200);
}

void StationsTest::repeatingWithoutASampleAsksForTheOneBefore() {
    StationPlan plan = keepForStation(keepForStation(startPlan(0), 100), 200);
    plan = skipStation(plan, 300);
    const Repetition repetition = repeatStation(plan, 400);
    QCOMPARE(repetition.station, 1U);
    QVERIFY(!repetition.plan.states[1].passed);
    // What came before it stays done, and the next is what was asked for.
    QCOMPARE(keepForStation(repetition.plan, 500).current, 2U);
    QCOMPARE(repeatStation(startPlan(0), 100).station, 0U);
}

void StationsTest::atTheEndRepeatingAsksForTheLast() {
    StationPlan plan = startPlan(0);
    while (askedStation(plan))
        plan = skipStation(plan, 0);
    const Repetition repetition = repeatStation(plan, 10);
    QCOMPARE(repetition.station, allStations().size() - 1);
    QCOMPARE(askedStation(repetition.plan), &allStations().back());
}

void StationsTest::walkingAboutFillsBinsByDistanceAndDetector() {
    AutoBins bins = emptyBins();
    QCOMPARE(bins.bins.size(), 3U + 4U);
    const auto front = binFor(bins, Distance::Far, "frontal");
    QVERIFY(front.has_value());
    QCOMPARE(bins.bins[*front].wanted, 18);
    QVERIFY(!binFor(bins, Distance::Far, "profile_left").has_value());
    QVERIFY(!binFor(bins, Distance::Near, "frontal+far_crop").has_value());
    const auto profile = binFor(bins, Distance::Near, "profile_left");
    QVERIFY(profile.has_value());
    QCOMPARE(bins.bins[*profile].wanted, 3);
    bins.bins[*profile].kept = 2;
    QVERIFY(!isFull(bins.bins[*profile]));
    bins.bins[*profile].kept = 3;
    QVERIFY(isFull(bins.bins[*profile]));
    QVERIFY(!allFull(bins));
    for (AutoBins::Bin& bin : bins.bins)
        bin.kept = bin.wanted;
    QVERIFY(allFull(bins));
}

QTEST_APPLESS_MAIN(StationsTest)
#include "stations_test.moc"
