#include "virtual_kinect/recording_folder.h"
#include "virtual_kinect/virtual_kinect_probe.h"

#include <libfreenect2/frame_listener_impl.h>
#include <libfreenect2/libfreenect2.hpp>

#include <QElapsedTimer>
#include <QTest>

using namespace Qt::StringLiterals;
using libfreenect2::Frame;
using libfreenect2::Freenect2;
using libfreenect2::Freenect2Device;

class DeviceFaultsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aDeviceThatMayNotBeOpenedIsNotCounted();
    void aBusyDeviceDoesNotOpen();
    void openingThrows();
    void startingThrows();
    void aStartThatFailsLeavesNothingRunning();
    void aSlowStepTakesItsTime_data();
    void aSlowStepTakesItsTime();
    void aSlowStartMayFailToo();
    void lateDepthComesThatManyFramesAfterColor();
    void aSetPairsLateDepthWithTheNewestColor();
    void anUnpluggedDeviceIsGoneUntilItIsLookedForAnew();
    void framesAreBrokenInTheirRangeOnly_data();
    void framesAreBrokenInTheirRangeOnly();
    void exchangedBytesComeWithTheirFormat();
    void streamsComeBackAfterSilence();
    void aMissingStreamLeavesSetsIncomplete();
    void anUnknownFaultIsNamedInTheLog();
};

namespace {

constexpr int stepMs = 2;

/// A device with faults that shows a recording, and what comes of it.
class FaultyDevice {
public:
    explicit FaultyDevice(const QByteArray& faults) : attached(recording.path(), faults) {
        found = context.enumerateDevices();
        try {
            device = context.openDefaultDevice();
        } catch (const std::exception& error) {
            thrown = error.what();
        }
        if (device != nullptr) {
            device->setColorFrameListener(&notes);
            device->setIrAndDepthFrameListener(&notes);
        }
    }

    SensorLog log;
    RecordingFolder recording{4, stepMs};
    AttachedDevice attached;
    FrameNotes notes;
    Freenect2 context;
    int found = 0;
    Freenect2Device* device = nullptr;
    std::string thrown; ///< at opening
};

/// Whether a frame has what its stream promises.
bool isWhole(const SeenFrame& note) {
    const bool color = note.type == Frame::Color;
    const auto width =
        static_cast<std::size_t>(color ? RecordingFolder::colorWidth : RecordingFolder::depthWidth);
    return note.width == width && note.bytesPerPixel == 4 && !note.data.isNull() &&
           note.format == (color ? Frame::BGRX : Frame::Float);
}

} // namespace

void DeviceFaultsTest::aDeviceThatMayNotBeOpenedIsNotCounted() {
    FaultyDevice faulty("no-permission");
    QCOMPARE(faulty.found, 0);
    QCOMPARE(faulty.context.getDefaultDeviceSerialNumber(), std::string());
    QCOMPARE(faulty.device, nullptr);
    QCOMPARE(faulty.log.errors().first(),
             u"[virtual kinect] cannot look at the device: no-permission is among the faults"_s);
}

void DeviceFaultsTest::aBusyDeviceDoesNotOpen() {
    FaultyDevice faulty("busy");
    QCOMPARE(faulty.context.getDefaultDeviceSerialNumber(), std::string("recording-walk"));
    QCOMPARE(faulty.device, nullptr);
    QCOMPARE(faulty.log.errors(),
             QStringList{u"[virtual kinect] cannot open: busy is among the faults"_s});
}

void DeviceFaultsTest::aStartThatFailsLeavesNothingRunning() {
    FaultyDevice faulty("start-fails");
    QVERIFY(faulty.device != nullptr);
    QVERIFY(!faulty.device->start());
    QVERIFY(!faulty.device->stop());
    QVERIFY(faulty.device->close());
    QVERIFY(faulty.notes.seen().empty());
}

void DeviceFaultsTest::openingThrows() {
    FaultyDevice faulty("throws");
    QCOMPARE(faulty.found, 1);
    QCOMPARE(faulty.device, nullptr);
    QCOMPARE(faulty.thrown, std::string("throws is among the faults"));
}

void DeviceFaultsTest::startingThrows() {
    FaultyDevice faulty("throws=start");
    QVERIFY(faulty.device != nullptr);
    bool thrown = false;
    try {
        faulty.device->start();
    } catch (const std::exception&) {
        QFAIL("it is to be none of the standard library's");
    } catch (...) {
        thrown = true;
    }
    QVERIFY(thrown);
    QVERIFY(!faulty.device->stop());
    QVERIFY(faulty.device->close());
}

void DeviceFaultsTest::aSlowStepTakesItsTime_data() {
    QTest::addColumn<QByteArray>("step");
    QTest::newRow("start") << QByteArray("start");
    QTest::newRow("stop") << QByteArray("stop");
    QTest::newRow("close") << QByteArray("close");
}

void DeviceFaultsTest::aSlowStepTakesItsTime() {
    QFETCH(QByteArray, step);
    constexpr qint64 slowMs = 60;
    FaultyDevice faulty("slow-" + step + "=" + QByteArray::number(slowMs));
    QVERIFY(faulty.device != nullptr);
    const auto timed = [&](const char* name, bool (Freenect2Device::*call)()) {
        QElapsedTimer timer;
        timer.start();
        QVERIFY((faulty.device->*call)());
        QVERIFY(step != name || timer.elapsed() >= slowMs);
    };
    timed("start", &Freenect2Device::start);
    timed("stop", &Freenect2Device::stop);
    timed("close", &Freenect2Device::close);
}

void DeviceFaultsTest::aSlowStartMayFailToo() {
    FaultyDevice faulty("slow-start=60,start-fails");
    QElapsedTimer timer;
    timer.start();
    QVERIFY(!faulty.device->start());
    QVERIFY(timer.elapsed() >= 60);
}

void DeviceFaultsTest::lateDepthComesThatManyFramesAfterColor() {
    FaultyDevice faulty("depth-late=3");
    QVERIFY(faulty.device != nullptr && faulty.device->start());
    QVERIFY(faulty.notes.waitFor(Frame::Depth, 9));
    QVERIFY(faulty.device->stop());
    const auto colors = faulty.notes.seen(Frame::Color);
    for (const SeenFrame& note : faulty.notes.seen(Frame::Depth)) {
        // It waits until three newer ones were rendered, so it comes no earlier than the third.
        QVERIFY(note.arrived - colors.front().arrived >=
                std::chrono::milliseconds(stepMs) * (note.number + 2 - colors.front().number));
        QVERIFY(isWhole(note));
    }
    QVERIFY(faulty.notes.seen(Frame::Depth).back().number + 3 <= colors.back().number + 1);
}

void DeviceFaultsTest::aSetPairsLateDepthWithTheNewestColor() {
    FaultyDevice faulty("depth-late=5");
    libfreenect2::SyncMultiFrameListener listener(Frame::Color | Frame::Ir | Frame::Depth);
    QVERIFY(faulty.device != nullptr);
    faulty.device->setColorFrameListener(&listener);
    faulty.device->setIrAndDepthFrameListener(&listener);
    QVERIFY(faulty.device->start());
    libfreenect2::FrameMap frames;
    for (int set = 0; set < 5; ++set) {
        QVERIFY(listener.waitForNewFrame(frames, 10'000));
        QVERIFY(frames[Frame::Color]->sequence > frames[Frame::Depth]->sequence);
        QCOMPARE(frames[Frame::Ir]->sequence, frames[Frame::Depth]->sequence);
        listener.release(frames);
    }
    QVERIFY(faulty.device->stop());
}

void DeviceFaultsTest::anUnpluggedDeviceIsGoneUntilItIsLookedForAnew() {
    FaultyDevice faulty("unplugged@5");
    QVERIFY(faulty.device != nullptr && faulty.device->start());
    QTRY_COMPARE(faulty.log.errors().size(), 1);
    QVERIFY(faulty.log.errors().front().startsWith(u"[virtual kinect] unplugged at frame "_s));
    for (const SeenFrame& note : faulty.notes.seen())
        QVERIFY(note.number < 5);
    QVERIFY(!faulty.device->stop());
    QVERIFY(!faulty.device->start());
    QVERIFY(faulty.device->close());
    QCOMPARE(faulty.context.openDefaultDevice(), nullptr);
    QCOMPARE(faulty.context.enumerateDevices(), 0);
    Freenect2 another;
    QCOMPARE(another.enumerateDevices(), 1);
}

void DeviceFaultsTest::framesAreBrokenInTheirRangeOnly_data() {
    QTest::addColumn<QByteArray>("fault");
    QTest::addColumn<int>("stream");
    QTest::addColumn<bool>("noData");
    QTest::addColumn<int>("bytesPerPixel");
    QTest::addColumn<bool>("noSize");
    const auto row = [](const char* fault, int stream, bool noData, int bytes, bool noSize) {
        QTest::newRow(fault) << QByteArray(fault) << stream << noData << bytes << noSize;
    };
    row("null-data=color", Frame::Color, true, 4, false);
    row("null-data=ir", Frame::Ir, true, 4, false);
    row("null-data=depth", Frame::Depth, true, 4, false);
    row("wrong-bytes=color", Frame::Color, false, 3, false);
    row("wrong-bytes=ir", Frame::Ir, false, 2, false);
    row("wrong-bytes=depth", Frame::Depth, false, 2, false);
    row("zero-size=color", Frame::Color, false, 4, true);
    row("zero-size=ir", Frame::Ir, false, 4, true);
    row("zero-size=depth", Frame::Depth, false, 4, true);
}

void DeviceFaultsTest::framesAreBrokenInTheirRangeOnly() {
    QFETCH(QByteArray, fault);
    QFETCH(int, stream);
    QFETCH(bool, noData);
    QFETCH(int, bytesPerPixel);
    QFETCH(bool, noSize);
    // A second long: on a busy machine late frames are skipped, some of these too.
    FaultyDevice faulty(fault + "@5-35");
    QVERIFY(faulty.device != nullptr && faulty.device->start());
    QVERIFY(faulty.notes.waitFor(Frame::Depth, 40));
    QVERIFY(faulty.device->stop());
    int broken = 0;
    for (const SeenFrame& note : faulty.notes.seen()) {
        if (note.type != stream || note.number < 5 || note.number > 35) {
            QVERIFY(isWhole(note));
            continue;
        }
        ++broken;
        QCOMPARE(note.data.isNull(), noData);
        QCOMPARE(note.bytesPerPixel, static_cast<std::size_t>(bytesPerPixel));
        QCOMPARE(note.width == 0 && note.height == 0, noSize);
    }
    QVERIFY(broken > 0);
}

void DeviceFaultsTest::exchangedBytesComeWithTheirFormat() {
    FaultyDevice faulty("rgbx");
    QVERIFY(faulty.device != nullptr && faulty.device->start());
    QVERIFY(faulty.notes.waitFor(Frame::Depth, 3));
    QVERIFY(faulty.device->stop());
    for (const SeenFrame& note : faulty.notes.seen(Frame::Color)) {
        QCOMPARE(int{note.format}, int{Frame::RGBX});
        QCOMPARE(note.data.at(0), char{30});
        QCOMPARE(note.data.at(1), char{20});
        QCOMPARE(note.data.at(2), static_cast<char>(10 * (note.number % 4)));
    }
}

void DeviceFaultsTest::streamsComeBackAfterSilence() {
    FaultyDevice faulty("silent@5-30");
    QVERIFY(faulty.device != nullptr && faulty.device->start());
    QVERIFY(faulty.notes.waitFor(Frame::Depth, 31));
    QVERIFY(faulty.device->stop());
    for (const SeenFrame& note : faulty.notes.seen()) {
        QVERIFY(note.number < 5 || note.number > 30);
        QVERIFY(isWhole(note));
    }
}

void DeviceFaultsTest::aMissingStreamLeavesSetsIncomplete() {
    FaultyDevice faulty("missing=ir");
    QVERIFY(faulty.device != nullptr && faulty.device->start());
    QVERIFY(faulty.notes.waitFor(Frame::Depth, 5));
    QVERIFY(faulty.device->stop());
    QVERIFY(faulty.notes.seen(Frame::Ir).empty());
    QVERIFY(!faulty.notes.seen(Frame::Color).empty());

    libfreenect2::SyncMultiFrameListener listener(Frame::Color | Frame::Ir | Frame::Depth);
    faulty.device->setColorFrameListener(&listener);
    faulty.device->setIrAndDepthFrameListener(&listener);
    QVERIFY(faulty.device->start());
    libfreenect2::FrameMap frames;
    QVERIFY(!listener.waitForNewFrame(frames, 50));
    QVERIFY(faulty.device->stop());
}

void DeviceFaultsTest::anUnknownFaultIsNamedInTheLog() {
    FaultyDevice faulty("bussy,missing=ir");
    QVERIFY(faulty.device != nullptr);
    QCOMPARE(faulty.log.errors(), QStringList{u"[virtual kinect] LUMENO_VIRTUAL_KINECT_FAULTS: "
                                              "\"bussy\" is not a fault and is left out"_s});
}

QTEST_GUILESS_MAIN(DeviceFaultsTest)
#include "device_faults_test.moc"
