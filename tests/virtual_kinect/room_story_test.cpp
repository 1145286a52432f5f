#include "room_optics.h"
#include "room_story.h"

#include <QTest>

#include <cmath>
#include <numbers>
#include <optional>

using namespace virtual_kinect::room;

namespace {

std::optional<PersonMoment> find(Person who, double seconds) {
    for (const PersonMoment& moment : peopleAt(seconds))
        if (moment.who == who)
            return moment;
    return std::nullopt;
}

/// Whether any part of a body up to `breadth_m` wide shows in the picture.
bool inSight(const std::optional<PersonMoment>& moment, double breadth_m = 0.8) {
    if (!moment)
        return false;
    const double reach = moment->z_m * colorWidth / 2 / focalPixels;
    return std::abs(moment->x_m) < reach + breadth_m / 2;
}

double degrees(double radians) {
    return radians * 180 / std::numbers::pi;
}

} // namespace

class RoomStoryTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theLoopRepeatsItself();
    void stretchesFollowEachOther();
    void whoIsWhere_data();
    void whoIsWhere();
    void nobodyIsInSightWhileTheOwnerIsAway();
    void nobodyJumps();
    void theTwoStandClearOfEachOther();
    void theFarthestComesFirst();
};

void RoomStoryTest::theLoopRepeatsItself() {
    const auto frames = static_cast<std::uint64_t>(loopSeconds * framesPerSecond);
    QCOMPARE(storySeconds(0), 0.0);
    QCOMPARE(storySeconds(30), 1.0);
    QCOMPARE(storySeconds(frames), 0.0);
    QCOMPARE(storySeconds(frames * 1000 + 45), 1.5);
    QVERIFY(storySeconds(frames - 1) < loopSeconds);
}

void RoomStoryTest::stretchesFollowEachOther() {
    const Span spans[]{emptyAtFirst,      ownerWalksIn,     ownerFrontal,      ownerVeryClose,
                       ownerFrontalAgain, ownerProfileLeft, ownerProfileRight, ownerFrontalThird,
                       ownerAway,         ownerReturned,    strangerAlone,     emptyAtLast};
    double before = 0;
    for (const Span& span : spans) {
        QVERIFY(span.from >= before);
        QVERIFY(span.to > span.from);
        before = span.to;
    }
    QCOMPARE(before, loopSeconds);
}

void RoomStoryTest::whoIsWhere_data() {
    QTest::addColumn<double>("from");
    QTest::addColumn<double>("to");
    QTest::addColumn<bool>("owner");
    QTest::addColumn<bool>("stranger");
    QTest::addColumn<double>("distance_m");
    QTest::addColumn<double>("yawDegrees");
    const auto row = [](const char* name, Span span, bool owner, bool stranger, double distance_m,
                        double yawDegrees) {
        QTest::newRow(name) << span.from << span.to << owner << stranger << distance_m
                            << yawDegrees;
    };
    row("empty at first", emptyAtFirst, false, false, 0, 0);
    row("owner frontal", ownerFrontal, true, false, standingDistance, 0);
    row("owner closer than a metre", ownerVeryClose, true, false, closeDistance, 0);
    row("owner back again", ownerFrontalAgain, true, false, standingDistance, 0);
    row("owner in left profile", ownerProfileLeft, true, false, standingDistance, -sidewaysDegrees);
    row("owner in right profile", ownerProfileRight, true, false, standingDistance,
        sidewaysDegrees);
    row("owner frontal a third time", ownerFrontalThird, true, false, standingDistance, 0);
    row("both", bothFrontal, true, true, standingDistance, 0);
    row("stranger alone", strangerAlone, false, true, standingDistance, 0);
    row("empty at last", emptyAtLast, false, false, 0, 0);
}

void RoomStoryTest::whoIsWhere() {
    QFETCH(double, from);
    QFETCH(double, to);
    QFETCH(bool, owner);
    QFETCH(bool, stranger);
    QFETCH(double, distance_m);
    QFETCH(double, yawDegrees);
    for (double seconds = from; seconds < to; seconds += 0.1) {
        QCOMPARE(inSight(find(Person::Owner, seconds)), owner);
        QCOMPARE(inSight(find(Person::Stranger, seconds)), stranger);
        for (const PersonMoment& moment : peopleAt(seconds)) {
            if (!inSight(moment))
                continue;
            QVERIFY2(std::abs(moment.z_m - distance_m) < 0.05,
                     qPrintable(QString::number(moment.z_m)));
            QVERIFY(std::abs(degrees(moment.yaw) - yawDegrees) < 1);
            QVERIFY(moment.stride < 0);
        }
    }
}

void RoomStoryTest::nobodyIsInSightWhileTheOwnerIsAway() {
    // Long enough to lose the owner, short enough for the follow view to wait.
    QVERIFY(ownerAway.to - ownerAway.from > 3);
    QVERIFY(ownerAway.to - ownerAway.from < 5);
    for (double seconds = ownerAway.from; seconds < ownerAway.to; seconds += 0.05)
        QVERIFY(!inSight(find(Person::Owner, seconds)) && !find(Person::Stranger, seconds));
}

void RoomStoryTest::nobodyJumps() {
    for (const Person who : {Person::Owner, Person::Stranger}) {
        std::optional<PersonMoment> before;
        for (std::uint64_t frame = 0; storySeconds(frame) >= storySeconds(frame ? frame - 1 : 0);
             ++frame) {
            const auto now = find(who, storySeconds(frame));
            if (!before || !now) {
                QVERIFY(!inSight(now) && !inSight(before));
            } else {
                QVERIFY(std::hypot(now->x_m - before->x_m, now->z_m - before->z_m) < 0.09);
                QVERIFY(std::abs(degrees(now->yaw - before->yaw)) < 10);
            }
            before = now;
        }
    }
}

void RoomStoryTest::theTwoStandClearOfEachOther() {
    for (double seconds = bothFrontal.from; seconds < bothFrontal.to; seconds += 0.1) {
        const auto owner = find(Person::Owner, seconds), stranger = find(Person::Stranger, seconds);
        QVERIFY(owner && stranger);
        QVERIFY(std::abs(owner->x_m - stranger->x_m) > 0.9);
        const double apart = std::abs(owner->x_m / owner->z_m - stranger->x_m / stranger->z_m) *
                             focalPixels / colorWidth;
        QVERIFY2(apart > 0.28, qPrintable(QString::number(apart)));
    }
}

void RoomStoryTest::theFarthestComesFirst() {
    for (double seconds = 46; seconds < 60; seconds += 0.1) {
        const auto people = peopleAt(seconds);
        QVERIFY(people.size() < 2 || people[0].z_m >= people[1].z_m);
    }
}

QTEST_APPLESS_MAIN(RoomStoryTest)
#include "room_story_test.moc"
