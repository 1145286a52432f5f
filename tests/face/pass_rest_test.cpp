#include "app/identity.h"
#include "face/pass_rest.h"

#include <QTest>

namespace {

constexpr qint64 passMs = 100;

/// Passes one after the other, each beginning when the rest of the one before is over.
struct Passes {
    PassRest rest;
    qint64 nowMs = 1000;

    /// The rest after one more pass.
    qint64 next(const PassRest::Outcome& outcome, qint64 lengthMs = passMs) {
        const qint64 beganMs = nowMs;
        nowMs += lengthMs;
        const qint64 restMs = rest.after(outcome, beganMs, nowMs);
        nowMs += restMs;
        return restMs;
    }
    /// Until the worker rests; gives how long it was awake.
    qint64 untilRest(const PassRest::Outcome& outcome) {
        const qint64 beganMs = nowMs;
        while (next(outcome) == 0) {
        }
        return nowMs - beganMs;
    }
};

} // namespace

class PassRestTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void restsOnceNothingWasNewForTwoSeconds();
    void aCycleIsAtMost400Milliseconds();
    void aLongPassIsFollowedByNoRest();
    void whateverIsNewKeepsItAwakeForTwoSeconds_data();
    void whateverIsNewKeepsItAwakeForTwoSeconds();
    void neverRestsWhileATrackIsAboutToBeShown();
    void onlyTracksThatAreOrWillBeShownCount_data();
    void onlyTracksThatAreOrWillBeShownCount();
};

void PassRestTest::restsOnceNothingWasNewForTwoSeconds() {
    Passes passes;
    int awake = 0;
    while (passes.next({}) == 0)
        ++awake;
    // The first pass ends at 1100 and is new; the one that ends at 3100 is the first after that.
    QCOMPARE(awake, 20);
}

void PassRestTest::aCycleIsAtMost400Milliseconds() {
    Passes passes;
    passes.untilRest({{1, 2}, false, 1});
    for (const qint64 lengthMs : {1, 50, 100, 250, 389}) {
        const qint64 restMs = passes.next({{1, 2}, false, 1}, lengthMs);
        QVERIFY(restMs > 0);
        QVERIFY(lengthMs + restMs <= 400);
        QVERIFY(lengthMs + restMs >= 350);
    }
}

void PassRestTest::aLongPassIsFollowedByNoRest() {
    Passes passes;
    passes.untilRest({});
    QCOMPARE(passes.next({}, 390), 0);
    QCOMPARE(passes.next({}, 5000), 0);
}

void PassRestTest::whateverIsNewKeepsItAwakeForTwoSeconds_data() {
    QTest::addColumn<QList<int>>("shown");
    QTest::addColumn<int>("regions");
    QTest::addColumn<bool>("awake");
    QTest::newRow("a face more") << QList<int>{1, 2, 3} << 1 << true;
    QTest::newRow("a face lost") << QList<int>{1} << 1 << true;
    QTest::newRow("another face") << QList<int>{1, 3} << 1 << true;
    QTest::newRow("a region more") << QList<int>{1, 2} << 2 << true;
    QTest::newRow("a region less") << QList<int>{1, 2} << 0 << false;
    QTest::newRow("nothing") << QList<int>{1, 2} << 1 << false;
}

void PassRestTest::whateverIsNewKeepsItAwakeForTwoSeconds() {
    QFETCH(QList<int>, shown);
    QFETCH(int, regions);
    QFETCH(bool, awake);
    Passes passes;
    passes.untilRest({{1, 2}, false, 1});
    const PassRest::Outcome other{{shown.begin(), shown.end()}, false, regions};
    if (!awake) {
        QVERIFY(passes.next(other) > 0);
        return;
    }
    const qint64 beganMs = passes.nowMs;
    while (passes.next(other) == 0) {
    }
    QVERIFY(passes.nowMs - beganMs >= 2000);
    QVERIFY(passes.nowMs - beganMs <= 2000 + 2 * 400);
}

void PassRestTest::neverRestsWhileATrackIsAboutToBeShown() {
    Passes passes;
    for (int i = 0; i < 200; ++i)
        QCOMPARE(passes.next({{1}, true, 0}), 0);
    // What was not shown is not missed.
    QVERIFY(passes.next({{1}, false, 0}) > 0);
}

void PassRestTest::onlyTracksThatAreOrWillBeShownCount_data() {
    QTest::addColumn<cv::Rect>("rect");
    QTest::addColumn<QString>("detector");
    QTest::addColumn<int>("unseenMs");
    QTest::addColumn<bool>("owner");
    QTest::addColumn<bool>("confirmed");
    QTest::addColumn<bool>("shown");
    QTest::addColumn<bool>("aboutToShow");
    const QString frame = QStringLiteral("frontal"), crop = QStringLiteral("frontal+far_crop");
    const QString side = QStringLiteral("profile_left");
    const cv::Rect large(400, 200, 85, 85), low(400, 200, 85, 84), narrow(400, 200, 84, 85);
    QTest::newRow("large") << large << frame << 0 << false << false << false << true;
    QTest::newRow("large, a profile") << large << side << 0 << false << false << false << true;
    QTest::newRow("too low") << low << frame << 0 << false << false << false << false;
    QTest::newRow("too narrow") << narrow << frame << 0 << false << false << false << false;
    QTest::newRow("only in a crop") << large << crop << 0 << false << false << false << false;
    QTest::newRow("not in this pass") << large << frame << 1 << false << false << false << false;
    QTest::newRow("owner") << large << frame << 0 << true << false << true << false;
    QTest::newRow("owner, far away") << low << crop << 900 << true << false << true << false;
    QTest::newRow("stranger") << large << frame << 0 << false << true << true << false;
    QTest::newRow("stranger, not seen") << low << crop << 900 << false << true << true << false;
}

void PassRestTest::onlyTracksThatAreOrWillBeShownCount() {
    QFETCH(cv::Rect, rect);
    QFETCH(QString, detector);
    QFETCH(int, unseenMs);
    QFETCH(bool, owner);
    QFETCH(bool, confirmed);
    constexpr qint64 nowMs = 1'700'000'000'000;
    FaceTracks tracks;
    tracks.tracks.resize(2); // a small hit stands behind it
    face::Track& track = tracks.tracks.front();
    track.id = 7;
    track.rect = rect;
    track.detector = detector;
    track.label = owner ? identity::owner : identity::unknown;
    track.confirmed = confirmed;
    track.lastSeenMs = nowMs - unseenMs;
    tracks.tracks.back().lastSeenMs = nowMs;
    const PassRest::Outcome outcome = PassRest::outcomeOf(tracks, nowMs, 3);
    QTEST(!outcome.shown.empty(), "shown");
    if (!outcome.shown.empty())
        QCOMPARE(outcome.shown, std::vector{7});
    QTEST(outcome.aboutToShow, "aboutToShow");
    QCOMPARE(outcome.bodyRegions, 3);
}

QTEST_GUILESS_MAIN(PassRestTest)
#include "pass_rest_test.moc"
