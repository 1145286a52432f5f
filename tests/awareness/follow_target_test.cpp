#include "awareness/follow_target.h"
#include "awareness/follow_texts.h"
#include "awareness/overlays.h"

#include <QTest>

using namespace Qt::StringLiterals;

class FollowTargetTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whoIsFollowed_data();
    void whoIsFollowed();
    void scores_data();
    void scores();
    void theHigherScoreWins_data();
    void theHigherScoreWins();
    void theFirstOfEqualsWins();
    void theRememberedTargetKeepsTheLead();
    void theOwnersBodyKeepsTheOwnersPlace();
    void unscoredOverlaysAreFollowedOnlyWhenRemembered();
    void theStreakEndsAtThirty();
    void anybodyTakesAnEmptyPlace();
    void theOwnerTakesThePlaceAtOnce();
    void othersTakeItOnlyFromAnEstablishedTarget_data();
    void othersTakeItOnlyFromAnEstablishedTarget();
    void theOwnersHeadAndTheHoldAreNoted();
    void aCloseOwnerEndsTheHoldAtOnce_data();
    void aCloseOwnerEndsTheHoldAtOnce();
    void aBodySoonAfterTheOwnerIsTakenForTheOwner_data();
    void aBodySoonAfterTheOwnerIsTakenForTheOwner();
    void aFaceSoonAfterTheOwnerIsNot();
    void withNobodyTheOwnerIsWaitedFor_data();
    void withNobodyTheOwnerIsWaitedFor();
    void withNobodyTheStreakRunsDown();
};

namespace {

constexpr qint64 now = 1'700'000'000'000;
const QSize image(1920, 1080);
const QRect place(800, 200, 200, 600);

FaceOverlay stale(FaceOverlay overlay) {
    overlay.stale = true;
    return overlay;
}

FaceOverlay withoutDepth(FaceOverlay overlay) {
    overlay.depthMissing = true;
    return overlay;
}

FaceOverlay owner(double distance_m = 2.0) {
    return overlays::faceAt(identity::owner, place, distance_m);
}

FaceOverlay person() {
    return overlays::body(identity::person, place, 2.0);
}

FaceOverlay possibleOwner() {
    return overlays::body(identity::possibleOwner, place, 2.0);
}

FaceOverlay unknown() {
    return overlays::face(identity::unknown, place);
}

FollowTarget remembering(const QString& name, int streak) {
    FollowTarget follow;
    follow.followTargetName = name;
    follow.followTargetStreak = streak;
    return follow;
}

FollowChoice chosen(FollowTarget& follow, QList<FaceOverlay> list, qint64 time = now) {
    return chooseFollowTarget(follow, list, image, time);
}

/// Index of the overlay that is chosen.
qsizetype choose(FollowTarget& follow, const QList<FaceOverlay>& list, qint64 time = now) {
    return chosen(follow, list, time).overlay;
}

} // namespace

void FollowTargetTest::whoIsFollowed_data() {
    QTest::addColumn<FaceOverlay>("overlay");
    QTest::addColumn<bool>("followed");
    QTest::addColumn<QString>("status");
    FaceOverlay weakOwner = possibleOwner();
    weakOwner.faceEvidence = true;
    QTest::newRow("owner") << owner() << true << u"Following Tavin"_s;
    QTest::newRow("owner's body") << possibleOwner() << true << u"Reacquiring Tavin face"_s;
    QTest::newRow("owner's weak face") << weakOwner << true << u"Following possible Tavin"_s;
    QTest::newRow("body") << person() << true << u"Following person"_s;
    QTest::newRow("unknown face") << unknown() << true << u"Following person"_s;
    QTest::newRow("unknown without depth")
        << withoutDepth(unknown()) << false << u"No follow target"_s;
    QTest::newRow("person without a body")
        << overlays::face(identity::person, place) << false << u"No follow target"_s;
    QTest::newRow("another name") << overlays::face(u"tavin"_s, place) << false
                                  << u"No follow target"_s;
    QTest::newRow("no name") << overlays::face(QString(), place) << false << u"No follow target"_s;
}

void FollowTargetTest::whoIsFollowed() {
    QFETCH(FaceOverlay, overlay);
    QFETCH(bool, followed);
    QFETCH(QString, status);
    FollowTarget follow;
    const FollowChoice choice = chosen(follow, {overlay});
    QCOMPARE(choice.overlay, followed ? 0 : -1);
    QCOMPARE(followTexts::statusName(choice.selectedFollowTarget), status);
    QCOMPARE(followTexts::statusName(choice.followTargetReason), status);
}

void FollowTargetTest::scores_data() {
    QTest::addColumn<FaceOverlay>("overlay");
    QTest::addColumn<int>("score");
    QTest::addColumn<int>("rememberedScore");
    QTest::newRow("owner") << owner() << 300 << 335;
    QTest::newRow("possible owner") << possibleOwner() << 230 << 265;
    QTest::newRow("body") << person() << 130 << 165;
    QTest::newRow("unknown face") << unknown() << 80 << 115;
    QTest::newRow("unknown without depth") << withoutDepth(unknown()) << -1 << 34;
    QTest::newRow("person without a body") << overlays::face(identity::person, place) << -1 << 34;
    QTest::newRow("another name") << overlays::face(u"Guest"_s, place) << -1 << 34;
}

void FollowTargetTest::scores() {
    QFETCH(FaceOverlay, overlay);
    QFETCH(int, score);
    QFETCH(int, rememberedScore);
    QCOMPARE(followScore(overlay, QString()), score);
    QCOMPARE(followScore(overlay, u"Somebody else"_s), score);
    QCOMPARE(followScore(overlay, overlay.label), rememberedScore);
    QCOMPARE(followScore(stale(overlay), QString()), score - 20);
    QCOMPARE(followScore(stale(overlay), overlay.label), rememberedScore - 20);
    // The owner's body keeps the owner's place, and nothing else does.
    const bool ownersBody = overlay.label == identity::possibleOwner;
    QCOMPARE(followScore(overlay, identity::owner),
             overlay.label == identity::owner || ownersBody ? rememberedScore : score);
    if (!ownersBody)
        QCOMPARE(followScore(overlay, identity::possibleOwner), score);
}

void FollowTargetTest::theHigherScoreWins_data() {
    QTest::addColumn<FaceOverlay>("first");
    QTest::addColumn<FaceOverlay>("second");
    QTest::addColumn<QString>("remembered");
    QTest::addColumn<int>("winner");
    QTest::newRow("owner 300, possible 230") << possibleOwner() << owner() << QString() << 1;
    QTest::newRow("stale owner 280, possible 230")
        << possibleOwner() << stale(owner()) << QString() << 1;
    QTest::newRow("possible 230, body 130") << person() << possibleOwner() << QString() << 1;
    QTest::newRow("body 130, unknown 80") << unknown() << person() << QString() << 1;
    QTest::newRow("stale body 110, unknown 80") << unknown() << stale(person()) << QString() << 1;
    QTest::newRow("stale body 110, remembered unknown 115")
        << stale(person()) << unknown() << u"Unknown"_s << 1;
    QTest::newRow("body 130, remembered unknown 115") << person() << unknown() << u"Unknown"_s << 0;
    QTest::newRow("possible 230, remembered body 165")
        << person() << possibleOwner() << u"Person"_s << 1;
    QTest::newRow("owner 300, remembered possible 265")
        << possibleOwner() << owner() << u"Possible Tavin"_s << 1;
    QTest::newRow("stale owner 280, remembered possible 265")
        << possibleOwner() << stale(owner()) << u"Possible Tavin"_s << 1;
    QTest::newRow("remembered stranger 34, unknown 80")
        << overlays::face(u"Guest"_s, place) << unknown() << u"Guest"_s << 1;
    QTest::newRow("stale unknown 60, remembered stranger 34")
        << stale(unknown()) << overlays::face(u"Guest"_s, place) << u"Guest"_s << 0;
}

void FollowTargetTest::theHigherScoreWins() {
    QFETCH(FaceOverlay, first);
    QFETCH(FaceOverlay, second);
    QFETCH(QString, remembered);
    QFETCH(int, winner);
    FollowTarget follow = remembering(remembered, 10);
    QCOMPARE(choose(follow, {first, second}), winner);
    follow = remembering(remembered, 10);
    QCOMPARE(choose(follow, {second, first}), 1 - winner);
}

void FollowTargetTest::theFirstOfEqualsWins() {
    FollowTarget follow;
    QCOMPARE(choose(follow, {unknown(), person(), person()}), 1);
}

void FollowTargetTest::theRememberedTargetKeepsTheLead() {
    FollowTarget follow = remembering(u"Unknown"_s, 5);
    // A remembered face (115) stays behind a fresh body (130) and ahead of a stale one (110).
    QCOMPARE(choose(follow, {unknown(), stale(person())}), 0);
    QCOMPARE(follow.followTargetStreak, 6);
}

void FollowTargetTest::theOwnersBodyKeepsTheOwnersPlace() {
    FollowTarget follow = remembering(identity::owner, 2);
    // Not more than the owner's own face, even when that is stale.
    QCOMPARE(choose(follow, {stale(owner()), possibleOwner()}), 0);
    follow = remembering(identity::owner, 2);
    QCOMPARE(choose(follow, {possibleOwner()}), 0);
    QCOMPARE(follow.followTargetName, identity::owner);
    QCOMPARE(follow.followTargetStreak, 2);
}

void FollowTargetTest::unscoredOverlaysAreFollowedOnlyWhenRemembered() {
    FollowTarget follow = remembering(u"Guest"_s, 1);
    const FollowChoice choice = chosen(follow, {stale(overlays::face(u"Guest"_s, place))});
    QCOMPARE(choice.overlay, 0);
    QCOMPARE(choice.selectedFollowTarget, FollowStatus::NoTarget);
    QCOMPARE(follow.followTargetStreak, 2);
    follow = FollowTarget();
    QCOMPARE(choose(follow, {overlays::face(u"Guest"_s, place)}), -1);
}

void FollowTargetTest::theStreakEndsAtThirty() {
    FollowTarget follow;
    for (int pass = 0; pass < 40; ++pass)
        choose(follow, {person()});
    QCOMPARE(follow.followTargetName, identity::person);
    QCOMPARE(follow.followTargetStreak, 30);
}

void FollowTargetTest::anybodyTakesAnEmptyPlace() {
    FollowTarget follow;
    choose(follow, {unknown()});
    QCOMPARE(follow.followTargetName, identity::unknown);
    QCOMPARE(follow.followTargetStreak, 1);
}

void FollowTargetTest::theOwnerTakesThePlaceAtOnce() {
    FollowTarget follow = remembering(identity::person, 1);
    choose(follow, {person(), owner()});
    QCOMPARE(follow.followTargetName, identity::owner);
    QCOMPARE(follow.followTargetStreak, 1);
}

void FollowTargetTest::othersTakeItOnlyFromAnEstablishedTarget_data() {
    QTest::addColumn<int>("streak");
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("streakAfter");
    QTest::newRow("streak 0") << 0 << u"Person"_s << 0;
    QTest::newRow("streak 2") << 2 << u"Person"_s << 2;
    QTest::newRow("streak 3") << 3 << u"Unknown"_s << 1;
    QTest::newRow("streak 30") << 30 << u"Unknown"_s << 1;
}

void FollowTargetTest::othersTakeItOnlyFromAnEstablishedTarget() {
    QFETCH(int, streak);
    FollowTarget follow = remembering(identity::person, streak);
    QCOMPARE(choose(follow, {unknown()}), 0);
    QTEST(follow.followTargetName, "name");
    QTEST(follow.followTargetStreak, "streakAfter");
}

void FollowTargetTest::theOwnersHeadAndTheHoldAreNoted() {
    FollowTarget follow;
    FaceOverlay face = overlays::face(identity::owner, QRect(-20, 100, 120, 120));
    choose(follow, {face});
    QCOMPARE(follow.lastTavinSeenMs, now);
    QCOMPARE(follow.lastTavinHeadRegion, QRect(0, 100, 100, 120));
    QCOMPARE(follow.zoomHoldUntilMs, now + 5000);
    follow.zoomHoldUntilMs = now + 9000; // a later end stays
    const FollowChoice choice = chosen(follow, {owner(1.0)});
    QCOMPARE(follow.zoomHoldUntilMs, now + 9000);
    QVERIFY(!choice.reacquireMode);
}

void FollowTargetTest::aCloseOwnerEndsTheHoldAtOnce_data() {
    QTest::addColumn<double>("distance_m");
    QTest::addColumn<qint64>("hold");
    QTest::newRow("0.99 m") << 0.99 << now;
    QTest::newRow("1.0 m") << 1.0 << now + 5000;
}

void FollowTargetTest::aCloseOwnerEndsTheHoldAtOnce() {
    QFETCH(double, distance_m);
    FollowTarget follow;
    choose(follow, {owner(2.0)}, now - 33);
    choose(follow, {owner(distance_m)});
    QTEST(follow.zoomHoldUntilMs, "hold");
}

void FollowTargetTest::aBodySoonAfterTheOwnerIsTakenForTheOwner_data() {
    QTest::addColumn<qint64>("age");
    QTest::addColumn<bool>("taken");
    QTest::newRow("5000 ms") << qint64(5000) << true;
    QTest::newRow("5001 ms") << qint64(5001) << false;
}

void FollowTargetTest::aBodySoonAfterTheOwnerIsTakenForTheOwner() {
    QFETCH(qint64, age);
    QFETCH(bool, taken);
    FollowTarget follow;
    follow.lastTavinSeenMs = now - age;
    QList<FaceOverlay> list{person()};
    const FollowChoice choice = chooseFollowTarget(follow, list, image, now);
    QCOMPARE(choice.overlay, 0);
    QCOMPARE(choice.reacquireMode, taken);
    QCOMPARE(list[0].label, taken ? u"Possible Tavin"_s : u"Person"_s);
    QCOMPARE(list[0].color == QColor(91, 232, 134), taken);
    QCOMPARE(choice.selectedFollowTarget, taken ? FollowStatus::Reacquiring : FollowStatus::Person);
    QCOMPARE(choice.followTargetReason, FollowStatus::Person);
    QCOMPARE(follow.followTargetName, u"Person"_s);
}

void FollowTargetTest::aFaceSoonAfterTheOwnerIsNot() {
    FollowTarget follow;
    follow.lastTavinSeenMs = now - 100;
    QList<FaceOverlay> list{unknown()};
    const FollowChoice choice = chooseFollowTarget(follow, list, image, now);
    QCOMPARE(list[0].label, u"Unknown"_s);
    QVERIFY(!choice.reacquireMode);
}

void FollowTargetTest::withNobodyTheOwnerIsWaitedFor_data() {
    QTest::addColumn<qint64>("seen");
    QTest::addColumn<QRect>("head");
    QTest::addColumn<bool>("waited");
    QTest::newRow("5000 ms ago") << now - 5000 << place << true;
    QTest::newRow("5001 ms ago") << now - 5001 << place << false;
    QTest::newRow("never") << qint64(0) << place << false;
    QTest::newRow("out of the image") << now - 100 << QRect() << false;
}

void FollowTargetTest::withNobodyTheOwnerIsWaitedFor() {
    QFETCH(qint64, seen);
    QFETCH(QRect, head);
    QFETCH(bool, waited);
    FollowTarget follow;
    follow.lastTavinSeenMs = seen;
    follow.lastTavinHeadRegion = head;
    const FollowChoice choice = chosen(follow, {});
    QCOMPARE(choice.overlay, -1);
    QCOMPARE(choice.reacquireMode, waited);
    QCOMPARE(choice.selectedFollowTarget,
             waited ? FollowStatus::Reacquiring : FollowStatus::NoTarget);
    QCOMPARE(choice.followTargetReason, FollowStatus::NoTarget);
}

void FollowTargetTest::withNobodyTheStreakRunsDown() {
    FollowTarget follow = remembering(identity::person, 2);
    for (const int expected : {1, 0, 0}) {
        choose(follow, {});
        QCOMPARE(follow.followTargetStreak, expected);
        QCOMPARE(follow.followTargetName, identity::person);
    }
}

QTEST_APPLESS_MAIN(FollowTargetTest)
#include "follow_target_test.moc"
