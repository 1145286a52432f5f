#include "enroll/window_session.h"
#include "kept_samples.h"

#include <QTest>

using namespace enroll;
using namespace Qt::StringLiterals;

namespace {

constexpr qint64 frameMs = 250;

/// A session with a writer that remembers what it was given.
class Desk {
public:
    Desk()
        : session(
              face::Options(),
              [this](const std::vector<KeptSample>& samples) {
                  if (refusal.isEmpty())
                      written += int(samples.size());
                  return refusal;
              },
              [this](const std::vector<KeptSample>& samples, SittingResult& result) {
                  result.folder = result.sitting;
                  surveyed = int(samples.size());
              }) {}

    void show(std::vector<FaceLook> faces) {
        nowMs += frameMs;
        session.onLook({std::move(faces), nowMs});
    }
    /// Fills the station that is asked for, when it is a near one seen from the front.
    void fill(unsigned texture) {
        const FaceLook face = keptSample(texture, Distance::Near).face;
        for (int frame = 0; frame < 3; ++frame)
            show({face});
    }
    WindowView view() const { return session.view(); }

    WindowSession session;
    qint64 nowMs = 0;
    QString refusal;
    int written = 0;
    int surveyed = 0;
};

} // namespace

class WindowSessionTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void itBeginsByOpeningTheSensor();
    void whatIsInTheWayIsSaid_data();
    void whatIsInTheWayIsSaid();
    void aSensorThatFailsCanBeTriedAgain();
    void aSensorThatNeverGaveAPictureCanBeTriedAgain();
    void aSilentSensorStopsTheClock();
    void aSilentSensorIsTriedAgainBeforeAStationIs();
    void aSensorThatCameBackByItselfGoesOn();
    void aSensorThatFailsLaterKeepsWhatWasTaken();
    void aSensorThatFailedIsOpenedForARepetition();
    void stationsAreFilledSkippedAndRepeated();
    void nothingIsWrittenBeforeKeep();
    void whatCannotBeWrittenCanBeKeptAgain();
    void aReportWithoutSamplesCannotBeKept();
    void theReportCanBeLeftForARepetition();
    void theEndOfTheStationsIsTheReport();
};

void WindowSessionTest::itBeginsByOpeningTheSensor() {
    Desk desk;
    QCOMPARE(desk.view().phase, WindowPhase::Opening);
    QCOMPARE(desk.view().prompt, u"Opening the sensor."_s);
    QVERIFY(!desk.view().canSkip && !desk.view().canKeep && !desk.view().canRepeat);
    QVERIFY(!desk.session.stationPlan());
    desk.show({});
    QCOMPARE(desk.view().phase, WindowPhase::Guiding);
    QCOMPARE(desk.view().prompt, stationPrompt(allStations().front()));
    QVERIFY(desk.session.stationPlan());
}

void WindowSessionTest::whatIsInTheWayIsSaid_data() {
    QTest::addColumn<int>("faces");
    QTest::addColumn<double>("mean");
    QTest::addColumn<double>("sharpness");
    QTest::addColumn<QString>("hint");
    QTest::newRow("nobody") << 0 << 120.0 << 400.0
                            << u"Nobody is to be seen: look at the sensor."_s;
    QTest::newRow("two people") << 2 << 120.0 << 400.0
                                << u"Two people are in the picture: only the owner may be."_s;
    QTest::newRow("dark") << 1 << 20.0 << 400.0
                          << u"The face is too dark (brightness 20, needs 35): switch on a light "
                             "in front of you."_s;
    QTest::newRow("blurred") << 1 << 120.0 << 30.0
                             << u"The face is blurred (sharpness 30, needs 60): hold still and "
                                "give it more light."_s;
    QTest::newRow("just arrived") << 1 << 120.0 << 400.0 << u"Hold still."_s;
}

void WindowSessionTest::whatIsInTheWayIsSaid() {
    QFETCH(int, faces);
    QFETCH(double, mean);
    QFETCH(double, sharpness);
    Desk desk;
    std::vector<FaceLook> looks;
    for (int i = 0; i < faces; ++i) {
        looks.push_back(keptSample(1, Distance::Near).face);
        looks.back().measures.mean = mean;
        looks.back().measures.sharpness = sharpness;
        looks.back().box.x += 600 * i;
    }
    desk.show(looks);
    QTEST(desk.view().hint, "hint");
    QVERIFY(desk.view().lastCrop.isNull());
}

void WindowSessionTest::aSensorThatFailsCanBeTriedAgain() {
    Desk desk;
    desk.session.onFailed(u"It may be busy."_s);
    QCOMPARE(desk.view().phase, WindowPhase::NoSensor);
    QCOMPARE(desk.view().hint, u"It may be busy."_s);
    QVERIFY(desk.view().canRepeat && !desk.view().canSkip && !desk.view().canFinish);
    QCOMPARE(desk.view().prompt, u"There is no picture: press R to try again."_s);
    QVERIFY(desk.session.repeat(0));
    QCOMPARE(desk.view().phase, WindowPhase::Opening);
    QVERIFY(desk.view().hint.isEmpty());
    desk.show({});
    QCOMPARE(desk.view().phase, WindowPhase::Guiding);
    QVERIFY(!desk.session.repeat(0));
}

void WindowSessionTest::aSensorThatNeverGaveAPictureCanBeTriedAgain() {
    Desk desk;
    desk.session.onSilent(u"silent"_s);
    QCOMPARE(desk.view().phase, WindowPhase::NoSensor);
    QCOMPARE(desk.view().hint, u"silent"_s);
    QVERIFY(desk.session.repeat(0));
    QCOMPARE(desk.view().phase, WindowPhase::Opening);
}

void WindowSessionTest::aSilentSensorStopsTheClock() {
    Desk desk;
    desk.show({});
    desk.session.onSilent(u"silent"_s);
    QCOMPARE(desk.view().hint, u"silent"_s);
    QCOMPARE(desk.view().prompt, u"There is no picture: press R to try again."_s);
    QVERIFY(!desk.view().canSkip && desk.view().canFinish && desk.view().canRepeat);
    desk.session.passTime(10 * stationTimeoutMs);
    QCOMPARE(desk.session.stationPlan()->current, 0U);
    desk.show({});
    QVERIFY(desk.view().hint != u"silent"_s);
    QCOMPARE(desk.view().prompt, stationPrompt(allStations().front()));
}

void WindowSessionTest::aSilentSensorIsTriedAgainBeforeAStationIs() {
    Desk desk;
    desk.fill(1);
    desk.session.onSilent(u"silent"_s);
    QVERIFY(desk.session.repeat(desk.nowMs));
    QCOMPARE(desk.view().prompt, u"Opening the sensor."_s);
    QVERIFY(desk.view().hint.isEmpty());
    QVERIFY(!desk.view().lastCrop.isNull()); // nothing was dropped
    desk.session.passTime(10 * stationTimeoutMs);
    QCOMPARE(desk.session.stationPlan()->current, 0U);
    desk.show({});
    QVERIFY(!desk.session.repeat(desk.nowMs));
    QVERIFY(desk.view().lastCrop.isNull()); // now the station was meant
}

void WindowSessionTest::aSensorThatCameBackByItselfGoesOn() {
    Desk desk;
    desk.session.onSilent(u"silent"_s);
    desk.show({});
    QCOMPARE(desk.view().phase, WindowPhase::Guiding);
    QVERIFY(!desk.session.repeat(desk.nowMs));
}

void WindowSessionTest::aSensorThatFailsLaterKeepsWhatWasTaken() {
    Desk desk;
    desk.fill(1);
    desk.session.onFailed(u"gone"_s);
    QCOMPARE(desk.view().phase, WindowPhase::Report);
    QCOMPARE(desk.view().hint, u"gone"_s);
    QVERIFY(desk.view().canKeep);
}

void WindowSessionTest::aSensorThatFailedIsOpenedForARepetition() {
    Desk desk;
    desk.fill(1);
    desk.session.onFailed(u"gone"_s);
    QVERIFY(desk.session.repeat(desk.nowMs));
    QCOMPARE(desk.view().phase, WindowPhase::Guiding);
    QCOMPARE(desk.view().prompt, u"Opening the sensor."_s);
    QVERIFY(!desk.view().lastCrop.isNull());
}

void WindowSessionTest::stationsAreFilledSkippedAndRepeated() {
    Desk desk;
    desk.fill(1);
    desk.fill(2);
    QCOMPARE(desk.session.stationPlan()->current, 1U);
    QCOMPARE(desk.view().lastCrop.size(), QSize(160, 160));
    desk.session.skip(desk.nowMs);
    QCOMPARE(desk.session.stationPlan()->current, 2U);
    QCOMPARE(desk.view().prompt, stationPrompt(allStations()[2]));
    QVERIFY(!desk.session.repeat(desk.nowMs));
    QCOMPARE(desk.session.stationPlan()->current, 1U);
    desk.session.passTime(desk.nowMs + stationTimeoutMs);
    QCOMPARE(desk.session.stationPlan()->current, 2U);
}

void WindowSessionTest::nothingIsWrittenBeforeKeep() {
    Desk desk;
    desk.fill(1);
    desk.fill(2);
    desk.session.keep(); // not yet
    desk.session.finish();
    QCOMPARE(desk.written, 0);
    QCOMPARE(desk.view().phase, WindowPhase::Report);
    QCOMPARE(desk.view().prompt, u"2 samples are ready: keep them?"_s);
    QVERIFY(desk.view().report.first().startsWith(u"Kept 2 of 6 frames: 2 near"_s));
    QCOMPARE(desk.surveyed, 2);
    desk.session.keep();
    QCOMPARE(desk.written, 2);
    QCOMPARE(desk.view().phase, WindowPhase::Kept);
    QCOMPARE(desk.view().hint, restartSentence());
    desk.session.keep(); // only once
    QCOMPARE(desk.written, 2);
}

void WindowSessionTest::whatCannotBeWrittenCanBeKeptAgain() {
    Desk desk;
    desk.fill(1);
    desk.session.finish();
    desk.refusal = u"No space left."_s;
    desk.session.keep();
    QCOMPARE(desk.view().phase, WindowPhase::Report);
    QCOMPARE(desk.view().hint, u"No space left."_s);
    QVERIFY(desk.view().canKeep);
    desk.refusal.clear();
    desk.session.keep();
    QCOMPARE(desk.view().phase, WindowPhase::Kept);
}

void WindowSessionTest::aReportWithoutSamplesCannotBeKept() {
    Desk desk;
    desk.show({});
    desk.session.finish();
    QCOMPARE(desk.view().prompt, u"Nothing was taken."_s);
    QVERIFY(!desk.view().canKeep);
    desk.session.keep();
    QCOMPARE(desk.view().phase, WindowPhase::Report);
    QCOMPARE(desk.written, 0);
}

void WindowSessionTest::theReportCanBeLeftForARepetition() {
    Desk desk;
    desk.fill(1);
    desk.session.finish();
    desk.session.repeat(desk.nowMs);
    QCOMPARE(desk.view().phase, WindowPhase::Guiding);
    QVERIFY(desk.view().lastCrop.isNull());
}

void WindowSessionTest::theEndOfTheStationsIsTheReport() {
    Desk desk;
    desk.fill(1);
    for (std::size_t i = 0; i < allStations().size(); ++i)
        desk.session.skip(desk.nowMs);
    QCOMPARE(desk.view().phase, WindowPhase::Report);
    // Looks that come later change nothing.
    desk.fill(2);
    QCOMPARE(desk.view().prompt, u"1 sample is ready: keep it?"_s);
    QVERIFY(desk.view().report.join(u' ').contains(u"This is thin. Missing: 19 more samples"_s));
}

QTEST_APPLESS_MAIN(WindowSessionTest)
#include "window_session_test.moc"
