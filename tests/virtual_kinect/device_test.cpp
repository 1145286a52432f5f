#include "virtual_kinect/recording_folder.h"
#include "virtual_kinect/virtual_kinect_probe.h"

#include <libfreenect2/frame_listener_impl.h>
#include <libfreenect2/libfreenect2.hpp>

#include <QTest>

#include <array>
#include <future>
#include <thread>

using namespace Qt::StringLiterals;
using libfreenect2::Frame;
using libfreenect2::Freenect2;
using libfreenect2::Freenect2Device;

class DeviceTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void nothingIsAttachedUnlessAskedFor();
    void theSerialNumberSaysWhatIsShown_data();
    void theSerialNumberSaysWhatIsShown();
    void onlyADeviceThatIsThereOpens();
    void openingAnOpenDeviceGivesTheSameDevice();
    void everyStepIsLogged();
    void aPipelineIsFreedWhetherOrNotADeviceOpens();
    void theThreeFramesOfAMomentBelongTogether();
    void twoRunsShowTheSame();
    void noFrameComesBeforeItsTime();
    void overdueFramesAreLeftOut();
    void colorAndDepthComeFromThreadsOfTheirOwn();
    void aListenerThatIsSlowWithDepthGetsColorAllTheSame();
    void readingsOutsideOfTheConfigurationAreNone_data();
    void readingsOutsideOfTheConfigurationAreNone();
    void onlyTheStartedStreamsDeliver_data();
    void onlyTheStartedStreamsDeliver();
    void startStopAndCloseInAnyOrder_data();
    void startStopAndCloseInAnyOrder();
    void afterStopNoFrameComes();
    void aRestartBeginsAtTheFirstFrame();
    void everythingMayEndWhileFramesCome_data();
    void everythingMayEndWhileFramesCome();
    void takenFramesOutliveTheDevice();
    void facts();
};

namespace {

constexpr int stepMs = 2;

QByteArray pixel(const SeenFrame& note) {
    return note.data.left(4);
}

QByteArray floatPixel(float value) {
    return {reinterpret_cast<const char*>(&value), sizeof value};
}

/// Opens the attached device and lets all its frames go to the listener.
Freenect2Device* openFor(Freenect2& context, libfreenect2::FrameListener* listener) {
    if (context.enumerateDevices() != 1)
        return nullptr;
    Freenect2Device* device = context.openDevice(context.getDefaultDeviceSerialNumber());
    if (device != nullptr) {
        device->setColorFrameListener(listener);
        device->setIrAndDepthFrameListener(listener);
    }
    return device;
}

} // namespace

void DeviceTest::nothingIsAttachedUnlessAskedFor() {
    const SensorLog log;
    Freenect2 context;
    QCOMPARE(context.enumerateDevices(), 0);
    QCOMPARE(context.getDefaultDeviceSerialNumber(), std::string());
    QVERIFY(log.errors().isEmpty());
    QCOMPARE(context.openDefaultDevice(), nullptr);
    const AttachedDevice attached(u""_s);
    QCOMPARE(context.enumerateDevices(), 0);
}

void DeviceTest::theSerialNumberSaysWhatIsShown_data() {
    QTest::addColumn<QString>("ending");
    QTest::newRow("plain") << u""_s;
    QTest::newRow("slash") << u"/"_s;
    QTest::newRow("dot") << u"/."_s;
    QTest::newRow("dots") << u"/color/.."_s;
}

void DeviceTest::theSerialNumberSaysWhatIsShown() {
    QFETCH(QString, ending);
    const RecordingFolder recording;
    const AttachedDevice attached(recording.path() + ending);
    Freenect2 context;
    QCOMPARE(context.enumerateDevices(), 1);
    QCOMPARE(context.getDefaultDeviceSerialNumber(), std::string("recording-walk"));
    Freenect2Device* device = context.openDefaultDevice();
    QVERIFY(device != nullptr);
    QCOMPARE(device->getSerialNumber(), std::string("recording-walk"));
}

void DeviceTest::onlyADeviceThatIsThereOpens() {
    const SensorLog log;
    const RecordingFolder recording;
    const AttachedDevice attached(recording.path());
    Freenect2 context;
    QCOMPARE(context.openDefaultDevice(), nullptr);
    QCOMPARE(context.enumerateDevices(), 1);
    QCOMPARE(context.getDeviceSerialNumber(-1), std::string());
    QCOMPARE(context.getDeviceSerialNumber(1), std::string());
    QCOMPARE(context.openDevice(-1), nullptr);
    QCOMPARE(context.openDevice(1), nullptr);
    QCOMPARE(context.openDevice(std::string()), nullptr);
    QCOMPARE(context.openDevice(std::string("recording-run")), nullptr);
    QCOMPARE(log.errors().size(), 5);
    QVERIFY(context.openDevice(0) != nullptr);
}

void DeviceTest::openingAnOpenDeviceGivesTheSameDevice() {
    const SensorLog log;
    const RecordingFolder recording;
    const AttachedDevice attached(recording.path());
    Freenect2 context;
    QCOMPARE(context.enumerateDevices(), 1);
    Freenect2Device* first = context.openDefaultDevice();
    QVERIFY(first != nullptr);
    QCOMPARE(context.openDefaultDevice(), first);
    QCOMPARE(log.steps().last(), u"the device is open already"_s);
    QVERIFY(log.errors().isEmpty());
    QVERIFY(first->close());
    Freenect2Device* second = context.openDefaultDevice();
    QVERIFY(second != nullptr && second != first);
}

void DeviceTest::everyStepIsLogged() {
    const SensorLog log;
    const RecordingFolder recording(4, stepMs);
    const AttachedDevice attached(recording.path());
    {
        Freenect2 context;
        Freenect2Device* device = openFor(context, nullptr);
        QVERIFY(device != nullptr && device->start() && device->stop() && device->close());
    }
    QCOMPARE(log.steps(),
             (QStringList{u"enumerating devices..."_s, u"found recording-walk"_s,
                          u"found 1 devices"_s, u"opening..."_s, u"opened"_s, u"starting..."_s,
                          u"started"_s, u"stopping..."_s, u"stopped"_s, u"closing..."_s,
                          u"closed"_s, u"closing..."_s, u"nothing to close"_s}));
}

void DeviceTest::aPipelineIsFreedWhetherOrNotADeviceOpens() {
    class Pipeline : public libfreenect2::PacketPipeline {
    public:
        explicit Pipeline(int& counter) : freed(counter) {}
        ~Pipeline() override { ++freed; }

    private:
        int& freed;
    };
    const SensorLog log;
    const RecordingFolder recording;
    const AttachedDevice attached(recording.path());
    Freenect2 context;
    int freed = 0;
    QCOMPARE(context.openDefaultDevice(new Pipeline(freed)), nullptr);
    QCOMPARE(freed, 1);
    QCOMPARE(context.enumerateDevices(), 1);
    QVERIFY(context.openDefaultDevice(new Pipeline(freed)) != nullptr);
    QCOMPARE(freed, 2);
}

void DeviceTest::theThreeFramesOfAMomentBelongTogether() {
    const RecordingFolder recording(4, stepMs);
    const AttachedDevice attached(recording.path());
    libfreenect2::SyncMultiFrameListener listener(Frame::Color | Frame::Ir | Frame::Depth);
    Freenect2 context;
    Freenect2Device* device = openFor(context, &listener);
    QVERIFY(device != nullptr && device->start());
    // Two threads call the listener: on a busy machine one may be ahead of the other in a set.
    libfreenect2::FrameMap frames;
    QVERIFY(listener.waitForNewFrame(frames, 10'000));
    for (int set = 0; set < 50 && frames[Frame::Color]->sequence != frames[Frame::Ir]->sequence;
         ++set) {
        listener.release(frames);
        QVERIFY(listener.waitForNewFrame(frames, 10'000));
    }
    QVERIFY(device->stop());
    const Frame& color = *frames[Frame::Color];
    const Frame& infrared = *frames[Frame::Ir];
    const Frame& depth = *frames[Frame::Depth];
    QCOMPARE(infrared.sequence, color.sequence);
    QCOMPARE(depth.sequence, color.sequence);
    QCOMPARE(infrared.timestamp, color.timestamp);
    QCOMPARE(depth.timestamp, color.timestamp);
    QCOMPARE(color.timestamp, color.sequence * stepMs * 8);
    QCOMPARE(color.width, std::size_t{RecordingFolder::colorWidth});
    QCOMPARE(color.height, std::size_t{RecordingFolder::colorHeight});
    QCOMPARE(depth.width, std::size_t{RecordingFolder::depthWidth});
    QCOMPARE(infrared.height, std::size_t{RecordingFolder::depthHeight});
    QCOMPARE(int{color.format}, int{Frame::BGRX});
    QCOMPARE(int{infrared.format}, int{Frame::Float});
    QCOMPARE(int{depth.format}, int{Frame::Float});
    for (const auto& [type, frame] : frames) {
        QCOMPARE(frame->bytes_per_pixel, std::size_t{4});
        QCOMPARE(frame->status, 0U);
    }
    const auto moment = color.sequence % 4;
    QCOMPARE(color.data[0], 10 * moment);
    QCOMPARE(reinterpret_cast<const float*>(infrared.data)[0], 500.0F + static_cast<float>(moment));
    QCOMPARE(reinterpret_cast<const float*>(depth.data)[0], 1000.0F + static_cast<float>(moment));
    listener.release(frames);
}

void DeviceTest::twoRunsShowTheSame() {
    const RecordingFolder recording(4, stepMs);
    const AttachedDevice attached(recording.path());
    for (int run = 0; run < 2; ++run) {
        FrameNotes notes;
        Freenect2 context;
        Freenect2Device* device = openFor(context, &notes);
        QVERIFY(device != nullptr && device->start());
        QVERIFY(notes.waitFor(Frame::Depth, 9));
        QVERIFY(device->stop());
        for (const SeenFrame& note : notes.seen()) {
            const auto moment = note.number % 4;
            const QByteArray expected =
                note.type == Frame::Color ? QByteArray{"\x00\x14\x1e\xff", 4}.replace(
                                                0, 1, QByteArray(1, static_cast<char>(10 * moment)))
                                          : floatPixel((note.type == Frame::Ir ? 500.0F : 1000.0F) +
                                                       static_cast<float>(moment));
            QCOMPARE(pixel(note), expected);
        }
    }
}

void DeviceTest::noFrameComesBeforeItsTime() {
    const RecordingFolder recording(4, 7);
    const AttachedDevice attached(recording.path());
    FrameNotes notes;
    Freenect2 context;
    Freenect2Device* device = openFor(context, &notes);
    QVERIFY(device != nullptr);
    const auto before = std::chrono::steady_clock::now();
    QVERIFY(device->start());
    QVERIFY(notes.waitFor(Frame::Depth, 20));
    QVERIFY(device->stop());
    for (const SeenFrame& note : notes.seen()) {
        QVERIFY(note.arrived - before >= note.due);
        QCOMPARE(note.due.count(), note.number * 7000);
    }
}

void DeviceTest::overdueFramesAreLeftOut() {
    constexpr std::chrono::milliseconds slowness{5 * stepMs};
    const RecordingFolder recording(4, stepMs);
    const AttachedDevice attached(recording.path());
    FrameNotes notes([&](Frame::Type) { std::this_thread::sleep_for(slowness); });
    Freenect2 context;
    Freenect2Device* device = openFor(context, &notes);
    QVERIFY(device != nullptr);
    device->setIrAndDepthFrameListener(nullptr);
    QVERIFY(device->start());
    QVERIFY(notes.waitFor(Frame::Color, 50));
    QVERIFY(device->stop());
    const auto seen = notes.seen(Frame::Color);
    QVERIFY(seen.size() > 1);
    // What fell due while the listener slept.
    for (std::size_t at = 1; at < seen.size(); ++at)
        QVERIFY(seen[at].number >= seen[at - 1].number + slowness.count() / stepMs);
}

void DeviceTest::colorAndDepthComeFromThreadsOfTheirOwn() {
    const RecordingFolder recording(4, stepMs);
    const AttachedDevice attached(recording.path());
    FrameNotes notes;
    Freenect2 context;
    Freenect2Device* device = openFor(context, &notes);
    QVERIFY(device != nullptr && device->start());
    QVERIFY(notes.waitFor(Frame::Color, 5) && notes.waitFor(Frame::Depth, 5));
    QVERIFY(device->stop());
    const auto colors = notes.seen(Frame::Color), depths = notes.seen(Frame::Depth);
    QVERIFY(colors.front().thread != depths.front().thread);
    QVERIFY(notes.seen(Frame::Ir).front().thread == depths.front().thread);
    for (const SeenFrame& note : notes.seen())
        QVERIFY(note.thread == (note.type == Frame::Color ? colors : depths).front().thread);
}

void DeviceTest::aListenerThatIsSlowWithDepthGetsColorAllTheSame() {
    const RecordingFolder recording(4, stepMs);
    const AttachedDevice attached(recording.path());
    std::promise<void> enough;
    FrameNotes notes([released = enough.get_future().share()](Frame::Type type) {
        if (type != Frame::Color)
            released.wait();
    });
    Freenect2 context;
    Freenect2Device* device = openFor(context, &notes);
    QVERIFY(device != nullptr && device->start());
    const bool came = notes.waitFor(Frame::Color, 20);
    const auto withDepth = notes.seen().size() - notes.seen(Frame::Color).size();
    enough.set_value();
    QVERIFY(device->stop());
    QVERIFY(came);
    QVERIFY(withDepth <= 1);
}

void DeviceTest::readingsOutsideOfTheConfigurationAreNone_data() {
    QTest::addColumn<float>("min_m");
    QTest::addColumn<float>("max_m");
    QTest::addColumn<QList<float>>("expected");
    QTest::newRow("by default") << 0.5F << 4.5F << QList<float>{0, 500, 4500, 0};
    QTest::newRow("wider") << 0.25F << 8.0F << QList<float>{499, 500, 4500, 4501};
    QTest::newRow("narrower") << 0.6F << 4.0F << QList<float>{0, 0, 0, 0};
}

void DeviceTest::readingsOutsideOfTheConfigurationAreNone() {
    QFETCH(float, min_m);
    QFETCH(float, max_m);
    QFETCH(QList<float>, expected);
    const RecordingFolder recording(1);
    cv::Mat depth = RecordingFolder::depth(0);
    const std::array<quint16, 4> readings{499, 500, 4500, 4501};
    std::copy(readings.begin(), readings.end(), depth.begin<quint16>());
    recording.write(u"depth/0.png"_s, depth);
    const AttachedDevice attached(recording.path());
    FrameNotes notes;
    Freenect2 context;
    Freenect2Device* device = openFor(context, &notes);
    QVERIFY(device != nullptr);
    Freenect2Device::Config configuration; // as a device has it when it is opened
    if (QTest::currentDataTag() != QByteArray("by default")) {
        configuration.MinDepth = min_m;
        configuration.MaxDepth = max_m;
        device->setConfiguration(configuration);
    }
    QVERIFY(device->start());
    QVERIFY(notes.waitFor(Frame::Depth, 0));
    QVERIFY(device->stop());
    const auto* seen =
        reinterpret_cast<const float*>(notes.seen(Frame::Depth).front().data.constData());
    QCOMPARE(QList<float>(seen, seen + readings.size()), expected);
}

void DeviceTest::onlyTheStartedStreamsDeliver_data() {
    QTest::addColumn<bool>("color");
    QTest::addColumn<bool>("irAndDepth");
    QTest::newRow("colour") << true << false;
    QTest::newRow("infrared and depth") << false << true;
    QTest::newRow("both") << true << true;
}

void DeviceTest::onlyTheStartedStreamsDeliver() {
    QFETCH(bool, color);
    QFETCH(bool, irAndDepth);
    const RecordingFolder recording(4, stepMs);
    const AttachedDevice attached(recording.path());
    FrameNotes notes;
    Freenect2 context;
    Freenect2Device* device = openFor(context, &notes);
    QVERIFY(device != nullptr && device->startStreams(color, irAndDepth));
    QVERIFY(notes.waitFor(color ? Frame::Color : Frame::Depth, 5));
    QVERIFY(device->stop());
    QCOMPARE(!notes.seen(Frame::Color).empty(), color);
    QCOMPARE(!notes.seen(Frame::Ir).empty(), irAndDepth);
    QCOMPARE(!notes.seen(Frame::Depth).empty(), irAndDepth);
}

void DeviceTest::startStopAndCloseInAnyOrder_data() {
    QTest::addColumn<QStringList>("calls");
    // A call that must be refused begins with an exclamation mark.
    for (const char* calls :
         {"", "start", "start stop", "start close", "start !start stop", "!stop start stop !stop",
          "close !start !stop", "close close", "start stop start stop close !start",
          "start stop close close", "start close !stop"})
        QTest::newRow(*calls == '\0' ? "nothing" : calls)
            << QString::fromLatin1(calls).split(u' ', Qt::SkipEmptyParts);
}

void DeviceTest::startStopAndCloseInAnyOrder() {
    QFETCH(QStringList, calls);
    const SensorLog log;
    const RecordingFolder recording(4, stepMs);
    const AttachedDevice attached(recording.path());
    FrameNotes notes;
    Freenect2 context;
    Freenect2Device* device = openFor(context, &notes);
    QVERIFY(device != nullptr);
    for (const QString& call : calls) {
        const bool done = call.endsWith(u"start"_s)  ? device->start()
                          : call.endsWith(u"stop"_s) ? device->stop()
                                                     : device->close();
        QCOMPARE(done, !call.startsWith(u'!'));
    }
}

void DeviceTest::afterStopNoFrameComes() {
    const RecordingFolder recording(4, stepMs);
    const AttachedDevice attached(recording.path());
    FrameNotes notes;
    Freenect2 context;
    Freenect2Device* device = openFor(context, &notes);
    QVERIFY(device != nullptr && device->start());
    QVERIFY(notes.waitFor(Frame::Depth, 1));
    QVERIFY(device->stop());
    const auto before = notes.seen().size();
    QTest::qWait(10 * stepMs);
    QCOMPARE(notes.seen().size(), before);
}

void DeviceTest::aRestartBeginsAtTheFirstFrame() {
    const RecordingFolder recording(4, 20);
    const AttachedDevice attached(recording.path());
    FrameNotes notes;
    Freenect2 context;
    Freenect2Device* device = openFor(context, &notes);
    QVERIFY(device != nullptr && device->start());
    QVERIFY(notes.waitFor(Frame::Depth, 3));
    QVERIFY(device->stop());
    const auto firstRun = notes.seen().size();
    QVERIFY(device->start());
    QTRY_VERIFY(notes.seen().size() > firstRun);
    QVERIFY(device->stop());
    QVERIFY(notes.seen()[firstRun].number < 3);
}

void DeviceTest::everythingMayEndWhileFramesCome_data() {
    QTest::addColumn<bool>("deleteDevice");
    QTest::addColumn<bool>("waitForFrames");
    QTest::newRow("the context at once") << false << false;
    QTest::newRow("the context while streaming") << false << true;
    QTest::newRow("the device at once") << true << false;
    QTest::newRow("the device while streaming") << true << true;
}

void DeviceTest::everythingMayEndWhileFramesCome() {
    QFETCH(bool, deleteDevice);
    QFETCH(bool, waitForFrames);
    const RecordingFolder recording(4, stepMs);
    const AttachedDevice attached(recording.path());
    for (int round = 0; round < 8; ++round) {
        libfreenect2::SyncMultiFrameListener listener(Frame::Color | Frame::Depth);
        Freenect2 context;
        Freenect2Device* device = openFor(context, &listener);
        QVERIFY(device != nullptr && device->start());
        libfreenect2::FrameMap frames;
        if (waitForFrames) {
            QVERIFY(listener.waitForNewFrame(frames, 10'000));
            listener.release(frames);
        }
        if (deleteDevice)
            delete device;
    }
}

void DeviceTest::takenFramesOutliveTheDevice() {
    const RecordingFolder recording(4, stepMs);
    const AttachedDevice attached(recording.path());
    libfreenect2::SyncMultiFrameListener listener(Frame::Depth);
    libfreenect2::FrameMap frames;
    {
        Freenect2 context;
        Freenect2Device* device = openFor(context, &listener);
        QVERIFY(device != nullptr && device->start());
        QVERIFY(listener.waitForNewFrame(frames, 10'000));
    }
    const Frame& depth = *frames[Frame::Depth];
    QCOMPARE(reinterpret_cast<const float*>(depth.data)[0],
             1000.0F + static_cast<float>(depth.sequence % 4));
    listener.release(frames);
}

void DeviceTest::facts() {
    const RecordingFolder recording;
    const AttachedDevice attached(recording.path());
    Freenect2 context;
    Freenect2Device* device = openFor(context, nullptr);
    QVERIFY(device != nullptr);
    QVERIFY(!device->getFirmwareVersion().empty());
    auto color = device->getColorCameraParams();
    QVERIFY(color.fx > 1000 && color.cx > 900 && color.cy > 500);
    color.fx = 1;
    device->setColorCameraParams(color);
    QCOMPARE(device->getColorCameraParams().fx, 1.0F);
    auto infrared = device->getIrCameraParams();
    QVERIFY(infrared.fx > 300 && infrared.cx > 250 && infrared.cy > 200);
    infrared.k1 = 2;
    device->setIrCameraParams(infrared);
    QCOMPARE(device->getIrCameraParams().k1, 2.0F);
    const Freenect2Device::Config config;
    QCOMPARE(config.MinDepth, 0.5F);
    QCOMPARE(config.MaxDepth, 4.5F);
    device->setConfiguration(config);
    QVERIFY(device->start() && device->stop());
}

QTEST_GUILESS_MAIN(DeviceTest)
#include "device_test.moc"
