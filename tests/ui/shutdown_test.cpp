#include "app/record_types.h"
#include "app/worker_thread.h"
#include "face/face_recognition_worker.h"
#include "kinect/kinect_stream_worker.h"
#include "support/log_capture.h"
#include "support/temporary_place.h"
#include "ui/main_window.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr int workerBoundMs = 3000; // each worker is waited for at most that long
constexpr int slackMs = 1500;       // of a loaded machine
constexpr int sampleCount = 20;

bool longRun() {
    return qEnvironmentVariableIsSet("LUMENO_LONG_TESTS");
}

/// How often each way of closing is tried: `many` times in a long run, one in eight of that
/// otherwise; a person may ask for another number.
int rounds(int many) {
    const int asked = qEnvironmentVariableIntValue("LUMENO_SHUTDOWN_ROUNDS");
    if (asked > 0)
        return asked;
    return longRun() ? many : (many + 7) / 8;
}

/// Owner samples of noise: what they show does not matter here, only that they are read and
/// trained. They are written once for all tests.
void writeSamples() {
    static const QTemporaryDir shared;
    const QString folder = shared.filePath(u"samples"_s);
    QVERIFY(QDir().mkpath(u"faces"_s));
    QVERIFY(QFile::link(folder, u"faces/tavin"_s));
    if (QFileInfo::exists(folder))
        return;
    QVERIFY(QDir().mkpath(folder));
    QRandomGenerator random(7);
    for (int i = 0; i < sampleCount; ++i) {
        QImage sample(160, 160, QImage::Format_Grayscale8);
        for (int y = 0; y < sample.height(); ++y)
            random.fillRange(reinterpret_cast<quint32*>(sample.scanLine(y)), sample.width() / 4);
        QVERIFY(sample.save(folder + u"/%1.pgm"_s.arg(i)));
    }
}

std::unique_ptr<MainWindow> newWindow() {
    return std::make_unique<MainWindow>(false, false, false, false, 5000, false);
}

void wait(int ms) {
    if (ms > 0)
        QTest::qWait(ms);
}

} // namespace

/// Closing the window at every moment of its workers' lives. A worker destroyed while it runs would
/// end this process.
class ShutdownTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void closingAtAnyMoment_data();
    void closingAtAnyMoment();
    void closingTwiceIsClosingOnce();
    void cleanupTestCase();

private:
    std::unique_ptr<TemporaryPlace> place;
};

void ShutdownTest::initTestCase() {
    registerRecordTypes();
}

void ShutdownTest::init() {
    place = std::make_unique<TemporaryPlace>();
    qputenv("LUMENO_VIRTUAL_KINECT", "room");
    qunsetenv("LUMENO_VIRTUAL_KINECT_FAULTS");
}

void ShutdownTest::cleanup() {
    place.reset();
}

void ShutdownTest::closingAtAnyMoment_data() {
    QTest::addColumn<QByteArray>("sensor");
    QTest::addColumn<QByteArray>("faults");
    QTest::addColumn<int>("latestMs"); // of the moment, drawn anew in each round
    QTest::addColumn<int>("manyRounds");
    QTest::newRow("right after construction") << "room"_ba
                                              << ""_ba << 0 << 40;
    QTest::newRow("during the first steps") << "room"_ba
                                            << ""_ba << 40 << 60;
    QTest::newRow("around the first frames") << "room"_ba
                                             << ""_ba << 250 << 60;
    QTest::newRow("in the middle of a face pass") << "room"_ba
                                                  << ""_ba << 700 << 40;
    QTest::newRow("no device") << ""_ba
                               << ""_ba << 60 << 40;
    QTest::newRow("device busy") << "room"_ba
                                 << "busy"_ba << 60 << 20;
    QTest::newRow("start fails") << "room"_ba
                                 << "start-fails"_ba << 60 << 20;
    QTest::newRow("silent device") << "room"_ba
                                   << "silent@0"_ba << 300 << 6;
    QTest::newRow("device stops slowly") << "room"_ba
                                         << "slow-stop=2000"_ba << 300 << 2;
}

void ShutdownTest::closingAtAnyMoment() {
    QFETCH(QByteArray, sensor);
    QFETCH(QByteArray, faults);
    QFETCH(int, latestMs);
    QFETCH(int, manyRounds);
    qputenv("LUMENO_VIRTUAL_KINECT", sensor);
    qputenv("LUMENO_VIRTUAL_KINECT_FAULTS", faults);
    writeSamples();
    const LogCapture log;
    QRandomGenerator random(1);
    for (int round = 0; round < rounds(manyRounds); ++round) {
        auto window = newWindow();
        window->show();
        wait(latestMs == 0 ? 0 : random.bounded(latestMs));
        QElapsedTimer timer;
        timer.start();
        window->close();
        window.reset();
        QVERIFY2(timer.elapsed() < 2 * workerBoundMs + slackMs,
                 qPrintable(u"round %1 took %2 ms"_s.arg(round).arg(timer.elapsed())));
    }
    QVERIFY2(log.warnings().isEmpty(), qPrintable(log.warnings().join(u'\n')));
}

void ShutdownTest::closingTwiceIsClosingOnce() {
    auto window = newWindow();
    window->show();
    QVERIFY(window->close());
    QVERIFY(window->close());
    window->stopFaceWorker();
    window->stopKinectWorker();
    window->stopFaceWorker();
    window->stopKinectWorker();
    QVERIFY(!window->findChild<KinectStreamWorker*>());
    QVERIFY(!window->findChild<FaceRecognitionWorker*>());
}

/// On a busy machine a worker that is on its way is let go, and uses static objects until it ends.
void ShutdownTest::cleanupTestCase() {
    QTRY_VERIFY_WITH_TIMEOUT(!WorkerThread::anyLetGoStillRuns(), 60'000);
}

QTEST_MAIN(ShutdownTest)
#include "shutdown_test.moc"
