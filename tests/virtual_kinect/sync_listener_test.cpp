#include <libfreenect2/frame_listener_impl.h>

#include <QElapsedTimer>
#include <QTest>

#include <thread>

using libfreenect2::Frame;
using libfreenect2::FrameMap;
using libfreenect2::SyncMultiFrameListener;

class SyncListenerTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aSetIsReadyWhenEveryChosenStreamHasCome_data();
    void aSetIsReadyWhenEveryChosenStreamHasCome();
    void newerFramesReplaceThoseNotTaken();
    void aTakenSetLeavesNothingBehind();
    void framesOfOtherStreamsAreLeftToTheDevice();
    void aTimedWaitTimesOut_data();
    void aTimedWaitTimesOut();
    void aWaitEndsWithTheLastFrameOfASet_data();
    void aWaitEndsWithTheLastFrameOfASet();
    void releaseDeletesTheFramesAndEmptiesTheMap();
    void theListenerDeletesWhatWasNotTaken();
    void aFrameHasAlignedMemoryOfItsOwnUnlessItIsGivenSome();
};

namespace {

constexpr unsigned int allStreams = Frame::Color | Frame::Ir | Frame::Depth;

/// Counts the frames of the test that are alive.
class CountedFrame : public Frame {
public:
    explicit CountedFrame(std::uint32_t number) : Frame(2, 1, 4) {
        sequence = number;
        ++alive;
    }
    ~CountedFrame() override { --alive; }

    inline static int alive = 0;
};

void offer(SyncMultiFrameListener& listener, unsigned int types, std::uint32_t number = 0) {
    for (const Frame::Type type : {Frame::Color, Frame::Ir, Frame::Depth})
        if ((types & type) != 0)
            QVERIFY(listener.onNewFrame(type, new CountedFrame(number)));
}

} // namespace

void SyncListenerTest::aSetIsReadyWhenEveryChosenStreamHasCome_data() {
    QTest::addColumn<unsigned int>("chosen");
    QTest::addColumn<unsigned int>("almost");
    QTest::newRow("all") << allStreams << unsigned{Frame::Color | Frame::Depth};
    QTest::newRow("infrared and depth")
        << unsigned{Frame::Ir | Frame::Depth} << unsigned{Frame::Depth};
    QTest::newRow("colour") << unsigned{Frame::Color} << 0U;
}

void SyncListenerTest::aSetIsReadyWhenEveryChosenStreamHasCome() {
    QFETCH(unsigned int, chosen);
    QFETCH(unsigned int, almost);
    SyncMultiFrameListener listener(chosen);
    FrameMap frames;
    offer(listener, almost);
    QVERIFY(!listener.hasNewFrame());
    QVERIFY(!listener.waitForNewFrame(frames, 0));
    offer(listener, chosen & ~almost);
    QVERIFY(listener.hasNewFrame());
    QVERIFY(listener.waitForNewFrame(frames, 0));
    unsigned int taken = 0;
    for (const auto& [type, frame] : frames)
        taken |= type;
    QCOMPARE(taken, chosen);
    listener.release(frames);
}

void SyncListenerTest::newerFramesReplaceThoseNotTaken() {
    SyncMultiFrameListener listener(allStreams);
    offer(listener, allStreams, 1);
    offer(listener, Frame::Color | Frame::Depth, 2);
    QCOMPARE(CountedFrame::alive, 3);
    FrameMap frames;
    QVERIFY(listener.waitForNewFrame(frames, 0));
    QCOMPARE(frames[Frame::Color]->sequence, 2U);
    QCOMPARE(frames[Frame::Ir]->sequence, 1U);
    QCOMPARE(frames[Frame::Depth]->sequence, 2U);
    listener.release(frames);
}

void SyncListenerTest::aTakenSetLeavesNothingBehind() {
    SyncMultiFrameListener listener(allStreams);
    FrameMap frames;
    offer(listener, allStreams);
    QVERIFY(listener.waitForNewFrame(frames, 0));
    QVERIFY(!listener.hasNewFrame());
    listener.release(frames);
    offer(listener, Frame::Color | Frame::Ir);
    QVERIFY(!listener.hasNewFrame());
}

void SyncListenerTest::framesOfOtherStreamsAreLeftToTheDevice() {
    SyncMultiFrameListener listener(Frame::Color);
    CountedFrame frame(0);
    QVERIFY(!listener.onNewFrame(Frame::Depth, &frame));
    QVERIFY(!listener.hasNewFrame());
}

void SyncListenerTest::aTimedWaitTimesOut_data() {
    QTest::addColumn<int>("milliseconds");
    QTest::newRow("negative") << -5;
    QTest::newRow("at once") << 0;
    QTest::newRow("a while") << 120;
}

void SyncListenerTest::aTimedWaitTimesOut() {
    QFETCH(int, milliseconds);
    SyncMultiFrameListener listener(allStreams);
    offer(listener, Frame::Color);
    FrameMap frames;
    QElapsedTimer timer;
    timer.start();
    QVERIFY(!listener.waitForNewFrame(frames, milliseconds));
    QVERIFY(timer.elapsed() >= milliseconds);
    QVERIFY2(timer.elapsed() < 5000, "the wait goes on past its time");
    QVERIFY(frames.empty());
}

void SyncListenerTest::aWaitEndsWithTheLastFrameOfASet_data() {
    QTest::addColumn<bool>("timed");
    QTest::newRow("timed") << true;
    QTest::newRow("without a bound") << false;
}

void SyncListenerTest::aWaitEndsWithTheLastFrameOfASet() {
    QFETCH(bool, timed);
    SyncMultiFrameListener listener(allStreams);
    std::thread device([&] {
        for (const Frame::Type type : {Frame::Color, Frame::Ir, Frame::Depth}) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
            listener.onNewFrame(type, new CountedFrame(7));
        }
    });
    FrameMap frames;
    if (timed)
        QVERIFY(listener.waitForNewFrame(frames, 60'000));
    else
        listener.waitForNewFrame(frames);
    device.join();
    QCOMPARE(frames.size(), std::size_t{3});
    listener.release(frames);
}

void SyncListenerTest::releaseDeletesTheFramesAndEmptiesTheMap() {
    SyncMultiFrameListener listener(allStreams);
    FrameMap frames;
    offer(listener, allStreams);
    QVERIFY(listener.waitForNewFrame(frames, 0));
    QCOMPARE(CountedFrame::alive, 3);
    listener.release(frames);
    QVERIFY(frames.empty());
    QCOMPARE(CountedFrame::alive, 0);
    listener.release(frames);
}

void SyncListenerTest::theListenerDeletesWhatWasNotTaken() {
    {
        SyncMultiFrameListener listener(allStreams);
        offer(listener, Frame::Color | Frame::Ir);
    }
    QCOMPARE(CountedFrame::alive, 0);
}

void SyncListenerTest::aFrameHasAlignedMemoryOfItsOwnUnlessItIsGivenSome() {
    const Frame own(3, 5, 4);
    QCOMPARE(own.width, std::size_t{3});
    QCOMPARE(own.height, std::size_t{5});
    QCOMPARE(own.bytes_per_pixel, std::size_t{4});
    QCOMPARE(reinterpret_cast<std::uintptr_t>(own.data) % 16, std::uintptr_t{0});
    own.data[3 * 5 * 4 - 1] = 1;

    std::array<unsigned char, 8> memory{};
    const Frame given(2, 1, 4, memory.data());
    QCOMPARE(given.data, memory.data());
}

QTEST_GUILESS_MAIN(SyncListenerTest)
#include "sync_listener_test.moc"
