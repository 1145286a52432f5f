#include "app/record_types.h"
#include "awareness/depth_scene.h"
#include "face/face_recognition_worker.h"
#include "face/owner_place.h"
#include "face/synthetic_face.h"
#include "kinect/kinect_stream_worker.h"
#include "support/log_capture.h"
#include "support/processor_time.h"
#include "ui/main_window.h"
#include "ui/stream_image_widget.h"

#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QLabel>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

constexpr int longMs = 60'000;

std::unique_ptr<MainWindow> liveWindow(int personLostMs = 5000) {
    return std::make_unique<MainWindow>(false, false, false, false, personLostMs, false);
}

/// A window whose face worker waits for frames; keeps its texts and counts its results.
class FaceWindow {
public:
    explicit FaceWindow(int personLostMs = 5000)
        : window(liveWindow(personLostMs)), worker(window->findChild<FaceRecognitionWorker*>()) {
        if (!worker)
            qFatal("no face worker");
        line = window->centralWidget()
                   ->findChildren<QLabel*>(u"muted"_s, Qt::FindDirectChildrenOnly)
                   .first();
        // Called after the window's own slots: the line shows what just came.
        QObject::connect(worker, &FaceRecognitionWorker::statusChanged, window.get(),
                         [this] { statusLines.append(line->text()); });
        QObject::connect(worker, &FaceRecognitionWorker::overlaysReady, window.get(),
                         [this] { ++results; });
    }
    bool waitUntilLive() {
        return QTest::qWaitFor([this] { return !statusLines.isEmpty(); }, longMs) &&
               statusLines.first().startsWith(u"Face recognition live: samples=1 "_s);
    }
    bool waitForResults(int count) {
        return QTest::qWaitFor([this, count] { return results >= count; }, longMs);
    }

    std::unique_ptr<MainWindow> window;
    FaceRecognitionWorker* worker;
    QLabel* line = nullptr;
    QStringList statusLines;
    int results = 0;
};

QImage smallFrame() {
    QImage frame(8, 8, QImage::Format_RGB888);
    frame.fill(Qt::gray);
    return frame;
}

} // namespace

/// The window and its face worker, without a sensor.
class MainWindowFacesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { registerRecordTypes(); }
    void init() {
        qunsetenv("LUMENO_VIRTUAL_KINECT");
        place.emplace();
    }
    void cleanup() { place.reset(); }
    void mockModeHasNoFaceWorker();
    void theStatusLineShowsWhatTheWorkerSays();
    void theOwnersBoxReachesTheTiles();
    void bodiesReachTheWorker();
    void framesGoToTheWorkerAtMostEvery180Ms();
    void nullFramesDoNotReachTheWorker();
    void aFaceIsRememberedForTheLostTime_data();
    void aFaceIsRememberedForTheLostTime();
    void theFaceWorkerIsStoppedFirst();
    void closingSoonEndsCleanly_data();
    void closingSoonEndsCleanly();

private:
    std::optional<OwnerPlace> place;
};

void MainWindowFacesTest::mockModeHasNoFaceWorker() {
    MainWindow window(false, true, true, true, 5000, false);
    QVERIFY(!window.findChild<FaceRecognitionWorker*>());
    window.onFramesReady(smallFrame(), QImage(), QImage());
    window.stopFaceWorker();
}

void MainWindowFacesTest::theStatusLineShowsWhatTheWorkerSays() {
    FaceWindow live;
    QVERIFY(live.waitUntilLive());
    QCOMPARE(live.statusLines,
             QStringList{
                 u"Face recognition live: samples=1 model=models/face_recognizer.yml "
                 "candidate_threshold=60 detector=frontal_or_profile | Skeletal tracking remains "
                 "disconnected; voice direction is read-only attention data."_s});
}

void MainWindowFacesTest::theOwnersBoxReachesTheTiles() {
    const LogCapture log;
    FaceWindow live;
    QVERIFY(live.waitUntilLive());
    live.window->show();
    StreamImageWidget* tile = live.window->streamLabel(u"combo_rgb"_s);
    const auto ownerGreenPixels = [tile] {
        const QImage painted = tile->grab().toImage();
        int count = 0;
        for (int y = 0; y < painted.height(); ++y) {
            for (int x = 0; x < painted.width(); ++x)
                count += painted.pixelColor(x, y) == QColor(91, 232, 134);
        }
        return count;
    };
    live.window->onFramesReady(colourFrame(frameWithFace()), QImage(), QImage());
    QCOMPARE(ownerGreenPixels(), 0);
    QVERIFY(live.waitForResults(1));
    QCOMPARE(log.linesStartingWith(u"Qt face overlays: count= 1 \"Tavin "_s).size(), 1);
    QVERIFY(ownerGreenPixels() > 100);
}

void MainWindowFacesTest::bodiesReachTheWorker() {
    const LogCapture log;
    FaceWindow live;
    QVERIFY(live.waitUntilLive());
    // A body whose upper half holds the frame's face.
    DepthScene scene;
    scene.fillCells(QRect(22, 11, 51, 67), 2000.0F);
    scene.fillCells(QRect(22, 11, 8, 50), 0.0F);
    const QImage frame = colourFrame(frameWithFace(1, {640, 720}));
    // The depth list comes after the frame that gives it its scale, and before the next frame.
    live.window->onFramesReady(smallFrame().scaled(frame.size()), QImage(), QImage());
    QVERIFY(live.waitForResults(1));
    live.window->onDepthRawReady(scene.mm, scene.width, scene.height);
    QTest::qWait(200); // the worker is handed a frame every 180 ms
    live.window->onFramesReady(frame, QImage(), QImage());
    QVERIFY(live.waitForResults(2));
    const QString start = u"Qt face follow/body crop upscale:"_s;
    QCOMPARE(log.linesStartingWith(start),
             QStringList{start + u" regions= 1 follow_assist_faces= 1"_s});
}

void MainWindowFacesTest::framesGoToTheWorkerAtMostEvery180Ms() {
    FaceWindow live;
    QVERIFY(live.waitUntilLive());
    QElapsedTimer sinceSubmitted;
    const QDeadlineTimer giveUp(longMs);
    int submitted = 0;
    do { // On a busy machine the result may take longer than the interval: again, then.
        QVERIFY(!giveUp.hasExpired());
        QTest::qWait(200);
        submitted = live.results + 1;
        sinceSubmitted.start();
        live.window->onFramesReady(smallFrame(), QImage(), QImage());
        QVERIFY(live.waitForResults(submitted));
        while (sinceSubmitted.elapsed() < 172)
            QCoreApplication::processEvents();
        live.window->onFramesReady(smallFrame(), QImage(), QImage());
    } while (sinceSubmitted.elapsed() >= 180);
    // The second frame came too soon: it has no result, however long one waits.
    QVERIFY(!QTest::qWaitFor([&] { return live.results > submitted; }, 1000));
    live.window->onFramesReady(smallFrame(), QImage(), QImage());
    QVERIFY(live.waitForResults(submitted + 1));
    QCOMPARE(live.results, submitted + 1);
}

void MainWindowFacesTest::nullFramesDoNotReachTheWorker() {
    FaceWindow live;
    QVERIFY(live.waitUntilLive());
    live.window->onFramesReady(QImage(), smallFrame(), smallFrame());
    // Not held back by the one before.
    live.window->onFramesReady(smallFrame(), QImage(), QImage());
    QVERIFY(live.waitForResults(1));
    QCOMPARE(live.results, 1);
}

void MainWindowFacesTest::aFaceIsRememberedForTheLostTime_data() {
    QTest::addColumn<int>("personLostMs");
    QTest::addColumn<int>("remembered");
    QTest::newRow("not at all") << 0 << 0;
    QTest::newRow("longer than this test") << 600'000 << 1;
}

void MainWindowFacesTest::aFaceIsRememberedForTheLostTime() {
    QFETCH(int, personLostMs);
    FaceWindow live(personLostMs);
    QVERIFY(live.waitUntilLive());
    const QImage frame = colourFrame(frameWithFace());
    live.window->onFramesReady(frame, QImage(), QImage());
    QVERIFY(live.waitForResults(1));
    QCOMPARE(live.window->awarenessInput().faceOverlays.size(), 1);
    QTest::qWait(200); // the worker is handed a frame every 180 ms
    live.window->onFramesReady(smallFrame().scaled(frame.size()), QImage(), QImage());
    QVERIFY(live.waitForResults(2));
    QTEST(int(live.window->awarenessInput().faceOverlays.size()), "remembered");
}

void MainWindowFacesTest::theFaceWorkerIsStoppedFirst() {
    FaceWindow live;
    QVERIFY(live.waitUntilLive());
    auto* kinect = live.window->findChild<KinectStreamWorker*>();
    QVERIFY(kinect);
    QStringList order;
    connect(live.worker, &QObject::destroyed, this, [&order] { order.append(u"face"_s); });
    connect(kinect, &QObject::destroyed, this, [&order] { order.append(u"kinect"_s); });
    live.window.reset();
    QCOMPARE(order, (QStringList{u"face"_s, u"kinect"_s}));
    QVERIFY(!WorkerThread::anyLetGoStillRuns());
}

void MainWindowFacesTest::closingSoonEndsCleanly_data() {
    QTest::addColumn<int>("afterMs");
    for (const int afterMs : {0, 1, 5, 10, 20, 40, 80, 160, 320})
        QTest::addRow("%d ms", afterMs) << afterMs;
}

void MainWindowFacesTest::closingSoonEndsCleanly() {
    QFETCH(int, afterMs);
    auto window = liveWindow();
    window->onFramesReady(colourFrame(frameWithFace()), QImage(), QImage());
    QTest::qWait(afterMs);
    const qint64 usedBefore = processMs();
    window.reset();
    // Where it got no processor for the time that the window waits, the worker was let go.
    QTRY_VERIFY_WITH_TIMEOUT(!WorkerThread::anyLetGoStillRuns(), 60'000);
    const qint64 used = processMs() - usedBefore;
    QVERIFY2(used < 3000, qPrintable(QString::number(used)));
}

QTEST_MAIN(MainWindowFacesTest)
#include "main_window_faces_test.moc"
