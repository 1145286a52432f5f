#include "app/identity.h"
#include "face/pass_rest.h"

#include <QTest>

namespace {

constexpr qint64 passMs = 100;

/// Of the tracks' clock, when `Passes` counts 0.
constexpr qint64 epochMs = 1'700'000'000'000;

/// Passes one after the other, each beginning when the rest of the one before is over.
struct Passes {
    PassRest rest;
    qint64 nowMs = 1000;

    /// The rest after one more pass.
    qint64 next(qsizetype bodyRegions, qint64 lengthMs = passMs, const FaceTracks& tracks = {}) {
        const PassRest::Pass pass{nowMs, nowMs + lengthMs, epochMs + nowMs, bodyRegions};
        const qint64 restMs = rest.after(pass, tracks);
        nowMs = pass.endedMs + restMs;
        return restMs;
    }
    /// Until the worker rests; gives how long it was awake.
    qint64 untilRest(qsizetype bodyRegions) {
        const qint64 beganMs = nowMs;
        while (next(bodyRegions) == 0) {
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
    void aRegionMoreKeepsItAwakeForTwoSeconds();
    void aRegionLessDoesNotKeepItAwake();
    void neverRestsWhileAFaceIsNew();
    void onlyFacesThatAreOrWillBeShownAreNew_data();
    void onlyFacesThatAreOrWillBeShownAreNew();
};

void PassRestTest::restsOnceNothingWasNewForTwoSeconds() {
    Passes passes;
    int awake = 0;
    while (passes.next(0) == 0)
        ++awake;
    // The first pass begins at 1000 and is new; the one that ends at 3000 is the last of that time.
    QCOMPARE(awake, 19);
}

void PassRestTest::aCycleIsAtMost400Milliseconds() {
    Passes passes;
    passes.untilRest(1);
    for (const qint64 lengthMs : {1, 50, 100, 250, 394}) {
        const qint64 restMs = passes.next(1, lengthMs);
        QVERIFY(restMs > 0);
        QVERIFY(lengthMs + restMs <= 400);
        QVERIFY(lengthMs + restMs >= 350);
    }
}

void PassRestTest::aLongPassIsFollowedByNoRest() {
    Passes passes;
    passes.untilRest(0);
    QCOMPARE(passes.next(0, 395), 0);
    QCOMPARE(passes.next(0, 5000), 0);
}

void PassRestTest::aRegionMoreKeepsItAwakeForTwoSeconds() {
    Passes passes;
    passes.untilRest(1);
    const qint64 awakeMs = passes.untilRest(2);
    QVERIFY(awakeMs >= 2000);
    QVERIFY(awakeMs <= 2000 + 2 * 400);
}

void PassRestTest::aRegionLessDoesNotKeepItAwake() {
    Passes passes;
    passes.untilRest(2);
    QVERIFY(passes.next(1) > 0);
    QVERIFY(passes.next(1) > 0);
}

void PassRestTest::neverRestsWhileAFaceIsNew() {
    Passes passes;
    FaceTracks tracks;
    face::Track& track = tracks.tracks.emplace_back();
    track.rect = cv::Rect(400, 200, 85, 85);
    track.detector = QStringLiteral("frontal");
    for (int i = 0; i < 200; ++i) {
        track.lastSeenMs = epochMs + passes.nowMs;
        QCOMPARE(passes.next(0, passMs, tracks), 0);
    }
    QVERIFY(passes.next(0) > 0);
}

void PassRestTest::onlyFacesThatAreOrWillBeShownAreNew_data() {
    QTest::addColumn<cv::Rect>("rect");
    QTest::addColumn<QString>("detector");
    QTest::addColumn<bool>("owner");
    QTest::addColumn<bool>("confirmed");
    QTest::addColumn<int>("knownMs");
    QTest::addColumn<int>("unseenMs");
    QTest::addColumn<int>("lengthMs");
    QTest::addColumn<bool>("isNew");
    const QString frame = QStringLiteral("frontal"), crop = QStringLiteral("frontal+far_crop");
    const QString side = QStringLiteral("profile_left");
    const cv::Rect large(400, 200, 85, 85), low(400, 200, 85, 84), narrow(400, 200, 84, 85);
    const auto row = [](const char* name, const cv::Rect& rect, const QString& detector, bool owner,
                        bool confirmed, int knownMs, int unseenMs, bool isNew, int lengthMs = 0) {
        QTest::newRow(name) << rect << detector << owner << confirmed << knownMs << unseenMs
                            << lengthMs << isNew;
    };
    row("about to be shown", large, frame, false, false, 5000, 0, true);
    row("about to be shown, a profile", large, side, false, false, 5000, 0, true);
    row("too low", low, frame, false, false, 0, 0, false);
    row("too narrow", narrow, frame, false, false, 0, 0, false);
    row("only in a crop", large, crop, false, false, 0, 0, false);
    row("large, but not in this pass", large, frame, false, false, 5000, 1, false);
    row("owner for long", large, frame, true, false, 2000, 0, false);
    row("owner for less than two seconds", low, crop, true, false, 1999, 0, true);
    row("stranger for long", large, frame, false, true, 2000, 0, false);
    row("stranger for less than two seconds", large, frame, false, true, 1999, 0, true);
    row("not seen any more", low, crop, false, true, 9000, 1, true);
    row("not seen for less than two seconds", low, crop, true, false, 9000, 1999, true);
    row("not seen for long", low, crop, true, false, 9000, 2000, false);
    row("owner for long when the pass is over", large, frame, true, false, 1900, 0, false, 100);
    row("owner for less than two seconds even then", large, frame, true, false, 1899, 0, true, 100);
    row("not seen for long when it is over", low, crop, true, false, 9000, 1900, false, 100);
    row("about to be shown, a long pass", large, frame, false, false, 5000, 0, true, 300);
    row("before the clock was set", large, frame, true, false, -1, -1, false);
}

void PassRestTest::onlyFacesThatAreOrWillBeShownAreNew() {
    QFETCH(cv::Rect, rect);
    QFETCH(QString, detector);
    QFETCH(bool, owner);
    QFETCH(bool, confirmed);
    QFETCH(int, knownMs);
    QFETCH(int, unseenMs);
    QFETCH(int, lengthMs);
    Passes passes;
    passes.untilRest(3);
    const qint64 nowMs = epochMs + passes.nowMs;
    FaceTracks tracks;
    tracks.tracks.resize(2); // a small hit stands behind it
    face::Track& track = tracks.tracks.front();
    track.rect = rect;
    track.detector = detector;
    track.label = owner ? identity::owner : identity::unknown;
    track.confirmed = confirmed;
    track.firstSeenMs = nowMs - knownMs;
    track.lastSeenMs = nowMs - unseenMs;
    tracks.tracks.back().lastSeenMs = nowMs;
    QTEST(passes.next(3, lengthMs, tracks) == 0, "isNew");
}

QTEST_GUILESS_MAIN(PassRestTest)
#include "pass_rest_test.moc"
