#include "recording_source.h"
#include "replay.h"
#include "virtual_kinect/recording_folder.h"
#include "virtual_kinect/virtual_kinect_probe.h"

#include <libfreenect2/frame_listener_impl.h>
#include <libfreenect2/libfreenect2.hpp>

#include <QTest>

#include <stdexcept>

using namespace Qt::StringLiterals;
using libfreenect2::Frame;
using virtual_kinect::FrameSet;
using virtual_kinect::FrameSource;
using virtual_kinect::Replay;

class ReplayTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void withoutWordsTheSourceItselfPlays();
    void thePlayingBeginsAtTheWantedTime_data();
    void thePlayingBeginsAtTheWantedTime();
    void aStartBehindTheEndIsRefused();
    void theSpeedScalesTheTimes_data();
    void theSpeedScalesTheTimes();
    void playedOnceItEndsWithTheLastFrame();
    void aDeviceThatPlaysOnceIsSilentAfterwards();
    void theRoomCanBePlayedFromAnyMoment();
};

namespace {

/// Four moments, 100 ms apart.
std::unique_ptr<FrameSource> play(const RecordingFolder& folder, const Replay& replay) {
    return virtual_kinect::makeReplayedSource(
        virtual_kinect::makeRecordingSource(folder.path().toStdString()), replay);
}

/// The number of the stored moment that a frame shows.
int shownAt(FrameSource& source, std::uint64_t number) {
    FrameSet set;
    source.render(number, set);
    return qRound(set.depth.front()) - 1000;
}

} // namespace

void ReplayTest::withoutWordsTheSourceItselfPlays() {
    const RecordingFolder folder(4, 100);
    const auto source = play(folder, {});
    QCOMPARE(shownAt(*source, 5), 1);
    QCOMPARE(source->timeOf(5).count(), 500'000);
    QVERIFY(!source->ends(4) && !source->ends(1'000'000));
}

void ReplayTest::thePlayingBeginsAtTheWantedTime_data() {
    QTest::addColumn<double>("start");
    QTest::addColumn<int>("first");
    QTest::newRow("at a frame") << 0.2 << 2;
    QTest::newRow("between frames") << 0.101 << 2;
    QTest::newRow("at the last frame") << 0.3 << 3;
}

void ReplayTest::thePlayingBeginsAtTheWantedTime() {
    QFETCH(double, start);
    QFETCH(int, first);
    const RecordingFolder folder(4, 100);
    const auto source = play(folder, {false, start, 1});
    QCOMPARE(shownAt(*source, 0), first);
    QCOMPARE(source->timeOf(0).count(), 0);
    QCOMPARE(source->timeOf(1).count(), 100'000);
    // It goes on in a loop from the recording's beginning.
    QCOMPARE(shownAt(*source, static_cast<std::uint64_t>(4 - first)), 0);
}

void ReplayTest::aStartBehindTheEndIsRefused() {
    const RecordingFolder folder(4, 100);
    QVERIFY_THROWS_EXCEPTION(std::runtime_error, play(folder, {false, 0.301, 1}));
    const AttachedDevice attached(folder.path(), "start=60");
    const SensorLog log;
    libfreenect2::Freenect2 context;
    QCOMPARE(context.enumerateDevices(), 0);
    QCOMPARE(log.errors().size(), 1);
    QVERIFY(log.errors().front().contains(u"it ends before the wanted start"_s));
}

void ReplayTest::theSpeedScalesTheTimes_data() {
    QTest::addColumn<double>("speed");
    QTest::addColumn<int>("us");
    QTest::newRow("twice as fast") << 2.0 << 50'000;
    QTest::newRow("four times slower") << 0.25 << 400'000;
    QTest::newRow("unchanged") << 1.0 << 100'000;
}

void ReplayTest::theSpeedScalesTheTimes() {
    QFETCH(double, speed);
    QFETCH(int, us);
    const RecordingFolder folder(4, 100);
    const auto source = play(folder, {false, 0.1, speed});
    QCOMPARE(source->timeOf(0).count(), 0);
    QCOMPARE(source->timeOf(1).count(), us);
    QCOMPARE(source->timeOf(7).count(), 7 * us);
    QCOMPARE(shownAt(*source, 1), 2);
}

void ReplayTest::playedOnceItEndsWithTheLastFrame() {
    const RecordingFolder folder(4, 100);
    const auto source = play(folder, {true, 0.1, 1});
    QVERIFY(!source->ends(2));
    QVERIFY(source->ends(3));
}

void ReplayTest::aDeviceThatPlaysOnceIsSilentAfterwards() {
    const RecordingFolder folder(3, 20);
    const AttachedDevice attached(folder.path(), "once,speed=0.5");
    const SensorLog log;
    libfreenect2::Freenect2 context;
    QCOMPARE(context.enumerateDevices(), 1);
    libfreenect2::Freenect2Device* device = context.openDefaultDevice();
    QVERIFY(device != nullptr);
    FrameNotes notes;
    device->setIrAndDepthFrameListener(&notes);
    QVERIFY(device->start());
    QTRY_VERIFY(log.steps().contains(u"all frames have been shown"_s));
    // The last frame may still be on its way to the listener.
    QTRY_VERIFY(!notes.seen(Frame::Depth).empty());
    QVERIFY(notes.seen(Frame::Depth).back().number <= 2);
    QVERIFY(device->stop());
}

void ReplayTest::theRoomCanBePlayedFromAnyMoment() {
    const auto room = virtual_kinect::makeRoomSource();
    const auto late =
        virtual_kinect::makeReplayedSource(virtual_kinect::makeRoomSource(), {true, 75.9, 1});
    FrameSet expected;
    FrameSet shown;
    room->render(2277, expected);
    late->render(0, shown);
    QCOMPARE(shown.depth, expected.depth);
    QVERIFY(!late->ends(2));
    QVERIFY(late->ends(3));
}

QTEST_GUILESS_MAIN(ReplayTest)
#include "replay_test.moc"
