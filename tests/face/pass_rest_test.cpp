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
    void neverRestsWhileATrackIsNotShownYet();
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
    for (const qint64 lengthMs : {1, 50, 100, 250, 379}) {
        const qint64 restMs = passes.next({{1, 2}, false, 1}, lengthMs);
        QVERIFY(restMs > 0);
        QVERIFY(lengthMs + restMs <= 400);
        QVERIFY(lengthMs + restMs >= 350);
    }
}

void PassRestTest::aLongPassIsFollowedByNoRest() {
    Passes passes;
    passes.untilRest({});
    QCOMPARE(passes.next({}, 380), 0);
    QCOMPARE(passes.next({}, 5000), 0);
}

void PassRestTest::whateverIsNewKeepsItAwakeForTwoSeconds_data() {
    QTest::addColumn<QList<int>>("tracks");
    QTest::addColumn<int>("regions");
    QTest::newRow("a track more") << QList<int>{1, 2, 3} << 1;
    QTest::newRow("a track lost") << QList<int>{1} << 1;
    QTest::newRow("another track") << QList<int>{1, 3} << 1;
    QTest::newRow("a region more") << QList<int>{1, 2} << 2;
    QTest::newRow("a region less") << QList<int>{1, 2} << 0;
}

void PassRestTest::whateverIsNewKeepsItAwakeForTwoSeconds() {
    QFETCH(QList<int>, tracks);
    QFETCH(int, regions);
    Passes passes;
    passes.untilRest({{1, 2}, false, 1});
    const PassRest::Outcome other{{tracks.begin(), tracks.end()}, false, regions};
    const qint64 beganMs = passes.nowMs;
    while (passes.next(other) == 0) {
    }
    QVERIFY(passes.nowMs - beganMs >= 2000);
    QVERIFY(passes.nowMs - beganMs <= 2000 + 2 * 400);
}

void PassRestTest::neverRestsWhileATrackIsNotShownYet() {
    Passes passes;
    for (int i = 0; i < 200; ++i)
        QCOMPARE(passes.next({{1}, true, 0}), 0);
}

QTEST_GUILESS_MAIN(PassRestTest)
#include "pass_rest_test.moc"
