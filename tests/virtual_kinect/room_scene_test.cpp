#include "awareness/body_candidates.h"
#include "frame_source.h"
#include "room_optics.h"
#include "room_story.h"

#include <QTest>

#include <algorithm>
#include <cmath>

using namespace virtual_kinect;
using namespace virtual_kinect::room;

namespace {

std::uint64_t frameAt(double seconds) {
    return static_cast<std::uint64_t>(std::lround(seconds * framesPerSecond));
}

double middleOf(const Span& span) {
    return (span.from + span.to) / 2;
}

QList<BodyCandidate> bodiesIn(const FrameSet& set) {
    const QList<float> depth_mm(set.depth.begin(), set.depth.end());
    return detectDepthBodyCandidates({depth_mm, set.depthWidth, set.depthHeight},
                                     QSize(set.colorWidth, set.colorHeight));
}

/// Depth pixel that shows a point.
std::size_t depthIndexOf(const cv::Point3d& point) {
    const cv::Point2d p = project(point);
    return static_cast<std::size_t>(p.y * depthHeight / colorHeight) * depthWidth +
           static_cast<std::size_t>(p.x * depthWidth / colorWidth);
}

} // namespace

class RoomSceneTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void namesItself();
    void comesThirtyTimesASecond();
    void theSameNumberShowsTheSameBytes();
    void whatTheBuffersHeldDoesNotMatter();
    void framesDiffer();
    void picturesHaveTheSensorsSizes();
    void theCarpetReturnsNoDepth();
    void theWallIsWhereItShouldBe();
    void someReadingsAreMissingAndAllArePlausible();
    void eachPersonIsOneBody_data();
    void eachPersonIsOneBody();
    void theSensorsRangeChangesNoBody();
    void anEmptyRoomHasNoBodies();
    void aPersonTooNearIsNoBody();
    void aFaceInDepthIsAtThePersonsDistance();
    void nearerMeansBrighterInInfrared();

private:
    std::unique_ptr<FrameSource> room;
    FrameSet set;
};

void RoomSceneTest::initTestCase() {
    room = makeRoomSource();
}

void RoomSceneTest::namesItself() {
    QCOMPARE(room->serialNumber(), std::string("virtual-room"));
}

void RoomSceneTest::comesThirtyTimesASecond() {
    QCOMPARE(room->timeOf(0).count(), 0);
    QCOMPARE(room->timeOf(1).count(), 33333);
    QCOMPARE(room->timeOf(30).count(), 1'000'000);
    QCOMPARE(room->timeOf(30 * 3600 * 24).count(), 24 * 3600 * 1'000'000LL);
}

void RoomSceneTest::theSameNumberShowsTheSameBytes() {
    const auto another = makeRoomSource();
    for (const double seconds : {0.5, 4.0, 10.0, 18.0, 25.0, 50.0, 65.0}) {
        FrameSet again;
        room->render(frameAt(seconds), set);
        another->render(frameAt(seconds), again);
        QVERIFY(again.bgrx == set.bgrx);
        QVERIFY(again.depth == set.depth);
        QVERIFY(again.infrared == set.infrared);
        another->render(frameAt(seconds + loopSeconds), again);
        QVERIFY(again.bgrx == set.bgrx && again.depth == set.depth);
    }
}

void RoomSceneTest::whatTheBuffersHeldDoesNotMatter() {
    FrameSet used;
    room->render(frameAt(18), used);
    std::ranges::fill(used.bgrx, std::uint8_t{77});
    std::ranges::fill(used.depth, -1.0F);
    std::ranges::fill(used.infrared, -1.0F);
    used.depth.resize(5);
    FrameSet fresh;
    room->render(frameAt(10), used);
    room->render(frameAt(10), fresh);
    QVERIFY(used.bgrx == fresh.bgrx && used.depth == fresh.depth &&
            used.infrared == fresh.infrared);
}

void RoomSceneTest::framesDiffer() {
    FrameSet next;
    for (const double seconds : {1.0, 10.0}) {
        room->render(frameAt(seconds), set);
        room->render(frameAt(seconds) + 1, next);
        QVERIFY(set.bgrx != next.bgrx && set.depth != next.depth && set.infrared != next.infrared);
    }
}

void RoomSceneTest::picturesHaveTheSensorsSizes() {
    room->render(0, set);
    QCOMPARE(set.colorWidth, 1920);
    QCOMPARE(set.colorHeight, 1080);
    QCOMPARE(set.bgrx.size(), std::size_t{1920} * 1080 * 4);
    QCOMPARE(set.depthWidth, 512);
    QCOMPARE(set.depthHeight, 424);
    QCOMPARE(set.depth.size(), std::size_t{512} * 424);
    QCOMPARE(set.infrared.size(), std::size_t{512} * 424);
}

void RoomSceneTest::theCarpetReturnsNoDepth() {
    room->render(frameAt(1), set);
    for (double z = 1.8; z < 3.7; z += 0.1)
        for (double x = -1.2; x <= 1.2; x += 0.1) {
            const cv::Point3d point(x, 0, z);
            if (project(point).y < colorHeight)
                QCOMPARE(set.depth[depthIndexOf(point)], 0.0F);
        }
}

void RoomSceneTest::theWallIsWhereItShouldBe() {
    room->render(frameAt(1), set);
    int near = 0, readings = 0;
    for (double x = 1.0; x < 2.0; x += 0.02)
        for (double y = 2.2; y < 2.9; y += 0.05) {
            const float depth = set.depth[depthIndexOf({x, y, 4.5})];
            readings += depth > 0;
            near += std::abs(depth - 4500) < 60;
        }
    QVERIFY(readings > 650);
    QCOMPARE(near, readings);
}

void RoomSceneTest::someReadingsAreMissingAndAllArePlausible() {
    for (const double seconds : {1.0, 10.0, 18.0, 50.0}) {
        room->render(frameAt(seconds), set);
        for (const float depth : set.depth)
            QVERIFY(depth == 0 || (depth > 500 && depth < 4700));
        for (const float infrared : set.infrared)
            QVERIFY(infrared >= 0 && infrared <= 65535);
    }
    room->render(frameAt(1), set);
    const auto above = set.depth.begin() + 512 * 200; // rows without any carpet
    const auto missing = std::count(set.depth.begin(), above, 0.0F);
    QVERIFY(missing > 512 * 200 / 200);
    QVERIFY(missing < 512 * 200 / 3);
}

void RoomSceneTest::eachPersonIsOneBody_data() {
    QTest::addColumn<double>("from");
    QTest::addColumn<double>("to");
    QTest::addColumn<int>("people");
    const auto row = [](const char* name, Span span, int people) {
        QTest::newRow(name) << span.from << span.to << people;
    };
    row("owner frontal", ownerFrontal, 1);
    row("left profile", ownerProfileLeft, 1);
    row("right profile", ownerProfileRight, 1);
    row("both", bothFrontal, 2);
    row("stranger alone", strangerAlone, 1);
    row("owner walking in", {4.2, ownerWalksIn.to}, 1);
    row("owner walking out", {ownerFrontalThird.to, 36.0}, 1);
}

void RoomSceneTest::eachPersonIsOneBody() {
    QFETCH(double, from);
    QFETCH(double, to);
    QFETCH(int, people);
    for (double seconds = from; seconds < to; seconds += 0.31) {
        room->render(frameAt(seconds), set);
        const QList<BodyCandidate> bodies = bodiesIn(set);
        QVERIFY2(bodies.size() == people,
                 qPrintable(QStringLiteral("%1 bodies at %2 s").arg(bodies.size()).arg(seconds)));
        for (const PersonMoment& moment : peopleAt(storySeconds(frameAt(seconds)))) {
            const cv::Point2d chest = project({moment.x_m, 1.3, moment.z_m});
            const auto body = std::ranges::find_if(bodies, [&](const BodyCandidate& candidate) {
                return candidate.rect.contains(static_cast<int>(chest.x),
                                               static_cast<int>(chest.y));
            });
            QVERIFY(body != bodies.end());
            // What the sensor sees is the near side, an arm from the side.
            QVERIFY(body->distance_m < moment.z_m && body->distance_m > moment.z_m - 0.3);
        }
    }
}

/// A device ends the depth at 4.5 m, which is where the back wall stands.
void RoomSceneTest::theSensorsRangeChangesNoBody() {
    constexpr float maxDepth_mm = 4500;
    std::ptrdiff_t lost = 0;
    for (double seconds = 0; seconds < loopSeconds; seconds += 1.3) {
        room->render(frameAt(seconds), set);
        const QList<BodyCandidate> whole = bodiesIn(set);
        lost += std::ranges::count_if(set.depth, [](float mm) { return mm > maxDepth_mm; });
        std::ranges::replace_if(
            set.depth, [](float mm) { return mm > maxDepth_mm; }, 0.0F);
        const QList<BodyCandidate> cut = bodiesIn(set);
        QCOMPARE(cut.size(), whole.size());
        for (qsizetype i = 0; i < cut.size(); ++i) {
            QCOMPARE(cut[i].rect, whole[i].rect);
            QCOMPARE(cut[i].distance_m, whole[i].distance_m);
        }
    }
    QVERIFY(lost > 0); // else the wall stands within the range and this shows nothing
}

void RoomSceneTest::anEmptyRoomHasNoBodies() {
    for (const Span& span : {emptyAtFirst, ownerAway, emptyAtLast})
        for (double seconds = span.from; seconds < span.to; seconds += 0.1) {
            room->render(frameAt(seconds), set);
            QVERIFY(bodiesIn(set).isEmpty());
        }
}

void RoomSceneTest::aPersonTooNearIsNoBody() {
    for (double seconds = ownerVeryClose.from; seconds < ownerVeryClose.to; seconds += 0.3) {
        room->render(frameAt(seconds), set);
        QVERIFY(bodiesIn(set).isEmpty());
    }
}

void RoomSceneTest::aFaceInDepthIsAtThePersonsDistance() {
    for (const Span& span : {ownerFrontal, ownerVeryClose, bothFrontal, strangerAlone}) {
        const double seconds = middleOf(span);
        room->render(frameAt(seconds), set);
        for (const PersonMoment& moment : peopleAt(storySeconds(frameAt(seconds)))) {
            const float depth = set.depth[depthIndexOf({moment.x_m, 1.6, moment.z_m})];
            // A face stands out a little in front of the body's axis.
            QVERIFY2(depth == 0 || std::abs(depth / 1000 - moment.z_m + 0.1) < 0.1,
                     qPrintable(QString::number(depth)));
        }
    }
}

void RoomSceneTest::nearerMeansBrighterInInfrared() {
    const auto brightness = [&](double seconds) {
        room->render(frameAt(seconds), set);
        const PersonMoment owner = peopleAt(seconds).front();
        return set.infrared[depthIndexOf({owner.x_m, 1.3, owner.z_m})];
    };
    const float wall = [&] {
        room->render(frameAt(1), set);
        return set.infrared[depthIndexOf({1.3, 2.0, 4.5})];
    }();
    const float standing = brightness(middleOf(ownerFrontal));
    const float close = brightness(middleOf(ownerVeryClose));
    QVERIFY(wall > 100);
    QVERIFY(standing > 2 * wall);
    QVERIFY(close > 2 * standing);
}

QTEST_APPLESS_MAIN(RoomSceneTest)
#include "room_scene_test.moc"
