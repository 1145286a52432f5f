#include "app/record_types.h"
#include "kinect/kinect_stream_worker.h"
#include "support/log_capture.h"
#include "support/picture_compare.h"
#include "support/temporary_place.h"
#include "ui/main_window.h"
#include "ui/stream_image_widget.h"
#include "ui/stream_tiles.h"
#include "virtual_kinect/recording_folder.h"

#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QPointer>
#include <QSet>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QString noDevice = u"Kinect unavailable: no Kinect v2 device detected"_s;
const QString timedOut = u"Kinect warning: timeout waiting for frame"_s;
const QString live = u"Kinect: RGB/IR/Depth frames live"_s;

const QStringList tileKeys{u"rgb"_s,      u"ir"_s,          u"depth"_s,    u"combo_rgb"_s,
                           u"combo_ir"_s, u"combo_depth"_s, u"room_rgb"_s, u"follow_rgb"_s};

/// A light recording whose pictures all give images.
class LiveRecording : public RecordingFolder {
public:
    LiveRecording() : RecordingFolder(4) {
        for (int number = 0; number < 4; ++number) {
            cv::Mat varied = infrared(number);
            varied.at<quint16>(0, 0) = 4000;
            write(u"ir/%1.png"_s.arg(number), varied);
        }
    }
    QString streaming() const {
        return u"Kinect: streaming RGB/IR/Depth from recording-"_s + QFileInfo(path()).fileName();
    }
};

std::unique_ptr<MainWindow> liveWindow() {
    return std::make_unique<MainWindow>(false, false, false, false, 5000, false);
}

/// Every text that the status line has shown since this was made. The line is read whenever
/// something reaches the window, since the last writer wins.
class StatusHistory : public QObject {
public:
    explicit StatusHistory(MainWindow& window) {
        line = window.centralWidget()
                   ->findChildren<QLabel*>(u"muted"_s, Qt::FindDirectChildrenOnly)
                   .first();
        window.installEventFilter(this);
    }

    bool eventFilter(QObject*, QEvent*) override {
        shown.insert(line->text());
        return false;
    }
    bool has(const QString& text) const { return shown.contains(text) || line->text() == text; }
    bool hasStatus(const QString& status) const {
        return has(status +
                   u" | Face overlay, depth distance, and read-only Auralis awareness active."_s);
    }
    bool hasError(const QString& message) const {
        return has(message + u" | Use --mock to review the shell without Kinect."_s);
    }

private:
    QLabel* line = nullptr;
    QSet<QString> shown;
};

/// What the tile paints, in one format whatever it covers.
QImage picture(StreamImageWidget* tile) {
    return tile->grab().toImage().convertToFormat(QImage::Format_RGB32);
}

/// Whether the tile paints this placeholder and no image.
bool showsPlaceholder(const MainWindow& window, const QString& tileKey, const QString& text) {
    StreamImageWidget* tile = window.streamLabel(tileKey);
    const QImage actual = picture(tile); // Lays the tile out.
    const bool voice = tileKey != u"combo_ir"_s && tileKey != u"combo_depth"_s;
    StreamImageWidget expected(text, voice, tile->parentWidget());
    expected.resize(tile->size());
    return actual == picture(&expected);
}

} // namespace

class MainWindowWorkerTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void failuresToStartAreShownEverywhere_data();
    void failuresToStartAreShownEverywhere();
    void liveFramesReplaceThePlaceholders();
    void aSilentSensorIsToldOf_data();
    void aSilentSensorIsToldOf();
    void oneUselessStreamLeavesTheOthersLive_data();
    void oneUselessStreamLeavesTheOthersLive();
    void uselessFramesLeaveThePlaceholders_data();
    void uselessFramesLeaveThePlaceholders();
    void theLastImageStaysWhenTheSensorIsUnplugged();
    void closingAtAnyMomentEndsTheWorker_data();
    void closingAtAnyMomentEndsTheWorker();
    void closingWhileTheSensorHangsLetsTheWorkerGo();

private:
    std::unique_ptr<TemporaryPlace> place;
    std::unique_ptr<LiveRecording> recording;
};

void MainWindowWorkerTest::initTestCase() {
    registerRecordTypes();
}

void MainWindowWorkerTest::init() {
    place = std::make_unique<TemporaryPlace>();
    recording = std::make_unique<LiveRecording>();
    qputenv("LUMENO_VIRTUAL_KINECT", QFile::encodeName(recording->path()));
    qunsetenv("LUMENO_VIRTUAL_KINECT_FAULTS");
}

void MainWindowWorkerTest::cleanup() {
    recording.reset();
    place.reset();
}

void MainWindowWorkerTest::failuresToStartAreShownEverywhere_data() {
    QTest::addColumn<bool>("attached");
    QTest::addColumn<QByteArray>("faults");
    QTest::addColumn<QString>("message");
    QTest::newRow("no device") << false << QByteArray() << noDevice;
    QTest::newRow("busy") << true << "busy"_ba
                          << u"Kinect unavailable: failed to open device. It may be busy."_s;
    QTest::newRow("start fails") << true << "start-fails"_ba
                                 << u"Kinect unavailable: failed to start RGB/IR/Depth streams"_s;
}

void MainWindowWorkerTest::failuresToStartAreShownEverywhere() {
    QFETCH(bool, attached);
    QFETCH(QByteArray, faults);
    QFETCH(QString, message);
    if (!attached)
        qunsetenv("LUMENO_VIRTUAL_KINECT");
    qputenv("LUMENO_VIRTUAL_KINECT_FAULTS", faults);
    const auto window = liveWindow();
    StatusHistory history(*window);
    const auto* worker = window->findChild<KinectStreamWorker*>();
    QTRY_VERIFY(worker->isFinished());
    QTRY_VERIFY(history.hasError(message));
    QVERIFY(history.hasStatus(u"Kinect: starting RGB/IR/Depth streams"_s));
    QVERIFY(!history.hasStatus(u"Kinect: stopped"_s));
    for (const QString& key : tileKeys)
        QVERIFY2(showsPlaceholder(*window, key, message), qPrintable(key));
}

void MainWindowWorkerTest::liveFramesReplaceThePlaceholders() {
    const auto window = liveWindow();
    StatusHistory history(*window);
    QTRY_VERIFY(history.hasStatus(live));
    QVERIFY(history.hasStatus(recording->streaming()));
    for (const QString& key : tileKeys)
        QTRY_VERIFY2(!showsPlaceholder(*window, key, tileNamed(key)->placeholder), qPrintable(key));
}

void MainWindowWorkerTest::aSilentSensorIsToldOf_data() {
    QTest::addColumn<QByteArray>("faults");
    QTest::newRow("from the start") << "silent@0"_ba;
    QTest::newRow("a stream never comes") << "missing=depth"_ba;
}

void MainWindowWorkerTest::aSilentSensorIsToldOf() {
    QFETCH(QByteArray, faults);
    qputenv("LUMENO_VIRTUAL_KINECT_FAULTS", faults);
    const auto window = liveWindow();
    StatusHistory history(*window);
    QTRY_VERIFY(history.hasError(timedOut));
    QVERIFY(history.hasStatus(recording->streaming()));
    for (const QString& key : tileKeys)
        QVERIFY2(showsPlaceholder(*window, key, timedOut), qPrintable(key));
    QVERIFY(window->findChild<KinectStreamWorker*>()->isRunning());
}

void MainWindowWorkerTest::oneUselessStreamLeavesTheOthersLive_data() {
    QTest::addColumn<QByteArray>("faults");
    for (const char* faults : {"null-data=ir", "wrong-bytes=ir", "zero-size=ir"})
        QTest::newRow(faults) << QByteArray(faults);
}

void MainWindowWorkerTest::oneUselessStreamLeavesTheOthersLive() {
    QFETCH(QByteArray, faults);
    qputenv("LUMENO_VIRTUAL_KINECT_FAULTS", faults);
    const auto window = liveWindow();
    StatusHistory history(*window);
    for (const QString& key : {u"rgb"_s, u"depth"_s, u"follow_rgb"_s})
        QTRY_VERIFY2(!showsPlaceholder(*window, key, tileNamed(key)->placeholder), qPrintable(key));
    for (const QString& key : {u"ir"_s, u"combo_ir"_s})
        QVERIFY2(showsPlaceholder(*window, key, tileNamed(key)->placeholder), qPrintable(key));
    QVERIFY(!history.hasStatus(live));
}

void MainWindowWorkerTest::uselessFramesLeaveThePlaceholders_data() {
    QTest::addColumn<QByteArray>("faults");
    for (const char* faults : {"null-data", "wrong-bytes", "zero-size"})
        QTest::newRow(faults) << QByteArray(faults);
}

void MainWindowWorkerTest::uselessFramesLeaveThePlaceholders() {
    QFETCH(QByteArray, faults);
    qputenv("LUMENO_VIRTUAL_KINECT_FAULTS", faults);
    const auto window = liveWindow();
    StatusHistory history(*window);
    QTRY_VERIFY(history.hasStatus(recording->streaming()));
    QTest::qWait(300); // Some frames long: nothing must come of them.
    for (const QString& key : tileKeys)
        QVERIFY2(showsPlaceholder(*window, key, tileNamed(key)->placeholder), qPrintable(key));
    QVERIFY(!history.hasStatus(live) && !history.hasError(timedOut));
}

void MainWindowWorkerTest::theLastImageStaysWhenTheSensorIsUnplugged() {
    qputenv("LUMENO_VIRTUAL_KINECT_FAULTS", "unplugged@3");
    const auto window = liveWindow();
    StatusHistory history(*window);
    QTRY_VERIFY(history.hasError(timedOut));
    QVERIFY(history.hasStatus(live));
    const QImage last = picture(window->streamLabel(u"depth"_s));
    QVERIFY(!showsPlaceholder(*window, u"depth"_s, timedOut));
    QTest::qWait(200);
    QCOMPARE(picture(window->streamLabel(u"depth"_s)), last);
}

void MainWindowWorkerTest::closingAtAnyMomentEndsTheWorker_data() {
    QTest::addColumn<QByteArray>("faults");
    QTest::addColumn<int>("afterMs");
    for (const int after : {0, 1, 5, 20, 100, 300})
        QTest::addRow("live, after %d ms", after) << ""_ba << after;
    QTest::newRow("silent") << "silent@0"_ba << 50;
    QTest::newRow("busy") << "busy"_ba << 5;
    QTest::newRow("unplugged") << "unplugged@2"_ba << 200;
}

void MainWindowWorkerTest::closingAtAnyMomentEndsTheWorker() {
    QFETCH(QByteArray, faults);
    QFETCH(int, afterMs);
    qputenv("LUMENO_VIRTUAL_KINECT_FAULTS", faults);
    const LogCapture log;
    QPointer<KinectStreamWorker> worker;
    {
        const auto window = liveWindow();
        worker = window->findChild<KinectStreamWorker*>();
        if (afterMs > 0)
            QTest::qWait(afterMs);
    }
    QVERIFY(!worker);
    QVERIFY(!WorkerThread::anyLetGoStillRuns());
    for (const QString& line : log.warnings())
        QVERIFY2(!line.contains(u"QThread"_s), qPrintable(line));
}

void MainWindowWorkerTest::closingWhileTheSensorHangsLetsTheWorkerGo() {
    qputenv("LUMENO_VIRTUAL_KINECT_FAULTS", "slow-stop=6000");
    const LogCapture log;
    auto window = liveWindow();
    const QPointer<KinectStreamWorker> worker = window->findChild<KinectStreamWorker*>();
    {
        StatusHistory history(*window);
        QTRY_VERIFY(history.hasStatus(live));
    }
    window.reset();
    QVERIFY2(worker && worker->isRunning(), "the window did not wait for its end");
    QVERIFY(WorkerThread::anyLetGoStillRuns());
    QTRY_VERIFY_WITH_TIMEOUT(!worker, 30000);
    QVERIFY(!WorkerThread::anyLetGoStillRuns());
    QVERIFY(log.linesStartingWith(u"QThread"_s).isEmpty());
}

QTEST_MAIN(MainWindowWorkerTest)
#include "main_window_worker_test.moc"
