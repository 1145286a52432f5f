#include "kinect/kinect_stream_worker.h"

#include "app/record_types.h"
#include "support/log_capture.h"
#include "virtual_kinect/recording_folder.h"

#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QPointer>
#include <QTest>

#include <atomic>
#include <memory>
#include <optional>
#include <thread>

using namespace Qt::StringLiterals;

namespace {

const QString starting = u"status Kinect: starting RGB/IR/Depth streams"_s;
const QString streaming = u"status Kinect: streaming RGB/IR/Depth from recording-walk"_s;
const QString live = u"status Kinect: RGB/IR/Depth frames live"_s;
const QString stopped = u"status Kinect: stopped"_s;
const QString silence = u"error Kinect warning: timeout waiting for frame"_s;
const QString firstLine = u"Qt Kinect streams: first RGB/IR/Depth frames converted"_s;

/// What a frame set held.
struct Received {
    QSize rgb, ir, depth; ///< Sizes of the images; invalid where null.
};

QSize sizeOf(const QImage& image) {
    return image.isNull() ? QSize() : image.size();
}

/// How much later than promised something may happen on a busy machine. What was said and sent
/// meanwhile tells more exactly how long it took; this bound is for what hangs.
constexpr qint64 slackMs = 10'000;

/// One set of small pictures with known colours, so that tests are quick under sanitizers too.
struct Recording {
    Recording() {
        cv::Mat infrared = RecordingFolder::infrared(0);
        infrared.at<quint16>(0, 0) = 3000; // with one value only the image would be null
        folder.write(u"ir/0.png"_s, infrared);
    }
    RecordingFolder folder{1};
};

QByteArray recording() {
    static const Recording made;
    return made.folder.path().toLocal8Bit();
}

/// A worker on the stand-in, and everything that reached the test's thread, in order.
class Stage : public QObject {
public:
    explicit Stage(const QByteArray& faults = {}, const QByteArray& device = recording()) {
        qputenv("LUMENO_VIRTUAL_KINECT", device);
        qputenv("LUMENO_VIRTUAL_KINECT_FAULTS", faults);
        worker = new KinectStreamWorker(this);
        connect(worker, &KinectStreamWorker::framesReady, this, &Stage::onFrames);
        connect(worker, &KinectStreamWorker::depthRawReady, this, &Stage::onDepth);
        connect(worker, &KinectStreamWorker::statusChanged, this,
                [this](const QString& status) { texts.append(u"status "_s + status); });
        connect(worker, &KinectStreamWorker::streamError, this,
                [this](const QString& message) { texts.append(u"error "_s + message); });
    }
    ~Stage() override { WorkerThread::release(worker); }

    /// Stops the worker, waits for its end and takes what it still sent. Says how long it took.
    qint64 stopAndWait() {
        QElapsedTimer timer;
        timer.start();
        worker->stop();
        ended = worker->wait(5000);
        const qint64 took = timer.elapsed();
        QCoreApplication::processEvents();
        return took;
    }

    QString stoppedLine() const {
        return u"Qt Kinect streams stopped after frames %1"_s.arg(sets.size());
    }

    QPointer<KinectStreamWorker> worker;
    QStringList texts;
    QList<Received> sets;
    int depthLists = 0;
    QString wrongDepthList; ///< The first one that does not fit the set before it.
    QImage newest;
    bool ended = false;

private:
    void onFrames(const QImage& rgb, const QImage& ir, const QImage& depth) {
        sets.append({sizeOf(rgb), sizeOf(ir), sizeOf(depth)});
        newest = rgb;
    }

    void onDepth(const QList<float>& depth_mm, int width, int height) {
        ++depthLists;
        if (depth_mm.size() != qsizetype{width} * height || depthLists > sets.size())
            wrongDepthList = u"%1 values, %2 x %3, list %4 after %5 sets"_s.arg(depth_mm.size())
                                 .arg(width)
                                 .arg(height)
                                 .arg(depthLists)
                                 .arg(sets.size());
    }
};

} // namespace

class KinectStreamWorkerTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { log.emplace(); }
    void cleanup() { log.reset(); }

    void signalsAndTheirParametersHaveTheirNames();
    void failureToStartSendsOneErrorAndEnds_data();
    void failureToStartSendsOneErrorAndEnds();
    void streamsUntilStopped();
    void unusableStreamGivesNullImage_data();
    void unusableStreamGivesNullImage();
    void setWithoutAnyImageIsNotSent();
    void liveIsSaidAtTheFirstCompleteSet();
    void silentSensorIsWarnedAboutEverySecond_data();
    void silentSensorIsWarnedAboutEverySecond();
    void streamsComeBackAfterSilence();
    void unpluggedSensorFallsSilent();
    void colorOrderOfTheFrameIsRespected_data();
    void colorOrderOfTheFrameIsRespected();
    void stopWhileSilentEndsWithinOneWait();
    void stopBeforeStartOpensAndLeavesAtOnce();
    void stopTwiceAndFromAnyThread();
    void stoppedIsSaidAfterTheSensorStopped();
    void releasedAtAnyMoment_data();
    void releasedAtAnyMoment();
    void automaticObjectWaitsForItsEnd();
    void hangingSensorDoesNotHoldUpTheRelease();
    void stalledReceiverGetsABoundedBacklog();
    void receiverThatKeepsImagesGetsThemAll();
    void setsWithoutPicturesLeaveRoomForOthers();

private:
    std::optional<LogCapture> log;
};

void KinectStreamWorkerTest::initTestCase() {
    registerRecordTypes();
    qputenv("LIBFREENECT2_LOGGER_LEVEL", "none"); // the library's own lines are no part of this
}

void KinectStreamWorkerTest::signalsAndTheirParametersHaveTheirNames() {
    const QMetaObject& meta = KinectStreamWorker::staticMetaObject;
    const QList<QPair<QByteArray, QByteArrayList>> expected{
        {"framesReady(QImage,QImage,QImage)", {"rgb", "ir", "depth"}},
        {"depthRawReady(QList<float>,int,int)", {"depth_mm", "width", "height"}},
        {"statusChanged(QString)", {"status"}},
        {"streamError(QString)", {"message"}}};
    for (int i = 0; i < expected.size(); ++i) {
        const QMetaMethod method = meta.method(meta.methodOffset() + i);
        QCOMPARE(method.methodSignature(), expected[i].first);
        QCOMPARE(method.parameterNames(), expected[i].second);
    }
}

void KinectStreamWorkerTest::failureToStartSendsOneErrorAndEnds_data() {
    QTest::addColumn<QByteArray>("device");
    QTest::addColumn<QByteArray>("faults");
    QTest::addColumn<QString>("error");
    QTest::newRow("no device") << QByteArray() << QByteArray()
                               << u"error Kinect unavailable: no Kinect v2 device detected"_s;
    QTest::newRow("damaged recording")
        << QByteArray("/nowhere") << QByteArray()
        << u"error Kinect unavailable: no Kinect v2 device detected"_s;
    QTest::newRow("busy") << recording() << QByteArray("busy")
                          << u"error Kinect unavailable: failed to open device. It may be busy."_s;
    QTest::newRow("start fails")
        << recording() << QByteArray("start-fails")
        << u"error Kinect unavailable: failed to start RGB/IR/Depth streams"_s;
}

void KinectStreamWorkerTest::failureToStartSendsOneErrorAndEnds() {
    QFETCH(QByteArray, device);
    QFETCH(QByteArray, faults);
    QFETCH(QString, error);
    Stage stage(faults, device);
    stage.worker->start();
    QVERIFY(stage.worker->wait(5000));
    QCoreApplication::processEvents();
    QCOMPARE(stage.texts, (QStringList{starting, error}));
    QVERIFY(stage.sets.isEmpty());
    QCOMPARE(log->lines(), QStringList());
}

void KinectStreamWorkerTest::streamsUntilStopped() {
    Stage stage;
    stage.worker->start();
    QTRY_VERIFY(stage.sets.size() >= 5);
    const qint64 took = stage.stopAndWait();
    QVERIFY(stage.ended);
    QVERIFY2(took < 1000 + slackMs, qPrintable(QString::number(took)));
    QCOMPARE(stage.texts, (QStringList{starting, streaming, live, stopped}));
    const QSize colorSize(RecordingFolder::colorWidth, RecordingFolder::colorHeight);
    const QSize depthSize(RecordingFolder::depthWidth, RecordingFolder::depthHeight);
    for (const Received& set : stage.sets) {
        QCOMPARE(set.rgb, colorSize);
        QCOMPARE(set.ir, depthSize);
        QCOMPARE(set.depth, depthSize);
    }
    QCOMPARE(stage.newest.format(), QImage::Format_RGB888);
    QCOMPARE(stage.depthLists, stage.sets.size());
    QCOMPARE(stage.wrongDepthList, QString());
    QCOMPARE(log->lines(), (QStringList{firstLine, stage.stoppedLine()}));
}

void KinectStreamWorkerTest::unusableStreamGivesNullImage_data() {
    QTest::addColumn<QByteArray>("faults");
    QTest::addColumn<QList<bool>>("usable");
    QTest::addColumn<bool>("hasDepthList");
    for (const QByteArray kind : {"null-data", "wrong-bytes", "zero-size"}) {
        const auto row = [&kind](const QByteArray& stream) -> QTestData& {
            return QTest::newRow(kind + ' ' + stream) << QByteArray(kind + '=' + stream);
        };
        row("color") << QList<bool>{false, true, true} << true;
        row("ir") << QList<bool>{true, false, true} << true;
        row("depth") << QList<bool>{true, true, false} << false;
    }
}

void KinectStreamWorkerTest::unusableStreamGivesNullImage() {
    QFETCH(QByteArray, faults);
    QFETCH(QList<bool>, usable);
    QFETCH(bool, hasDepthList);
    Stage stage(faults);
    stage.worker->start();
    QTRY_VERIFY(stage.sets.size() >= 2);
    stage.stopAndWait();
    for (const Received& set : stage.sets)
        QCOMPARE((QList<bool>{set.rgb.isValid(), set.ir.isValid(), set.depth.isValid()}), usable);
    QCOMPARE(stage.depthLists, hasDepthList ? stage.sets.size() : 0);
    QCOMPARE(stage.wrongDepthList, QString());
    // An unusable stream is no error, but nothing is called live.
    QCOMPARE(stage.texts, (QStringList{starting, streaming, stopped}));
    QCOMPARE(log->lines(), QStringList{stage.stoppedLine()});
}

void KinectStreamWorkerTest::setWithoutAnyImageIsNotSent() {
    Stage stage("null-data@0-9,silent@10");
    stage.worker->start();
    QTRY_VERIFY(stage.texts.contains(silence)); // by then all ten have come
    stage.stopAndWait();
    QVERIFY(stage.sets.isEmpty());
    QCOMPARE(stage.depthLists, 0);
    QCOMPARE(log->lines(), QStringList{u"Qt Kinect streams stopped after frames 0"_s});
}

void KinectStreamWorkerTest::liveIsSaidAtTheFirstCompleteSet() {
    Stage stage("zero-size=ir@0-5,zero-size=ir@12-14");
    stage.worker->start();
    QTRY_VERIFY(stage.sets.size() >= 20);
    stage.stopAndWait();
    QVERIFY(!stage.sets.first().ir.isValid());
    QCOMPARE(stage.texts, (QStringList{starting, streaming, live, stopped}));
    QCOMPARE(log->lines(), (QStringList{firstLine, stage.stoppedLine()}));
}

void KinectStreamWorkerTest::silentSensorIsWarnedAboutEverySecond_data() {
    QTest::addColumn<QByteArray>("faults");
    QTest::newRow("silent") << QByteArray("silent");
    QTest::newRow("one stream missing") << QByteArray("missing=depth");
}

void KinectStreamWorkerTest::silentSensorIsWarnedAboutEverySecond() {
    QFETCH(QByteArray, faults);
    Stage stage(faults);
    QElapsedTimer timer;
    stage.worker->start();
    timer.start();
    QTRY_COMPARE(stage.texts, (QStringList{starting, streaming, silence, silence}));
    const qint64 took = timer.elapsed();
    QVERIFY2(took >= 1900 && took < 2000 + slackMs, qPrintable(QString::number(took)));
    stage.stopAndWait();
    QVERIFY(stage.ended);
    QVERIFY(stage.sets.isEmpty());
    QCOMPARE(stage.texts.last(), stopped);
}

void KinectStreamWorkerTest::streamsComeBackAfterSilence() {
    Stage stage("silent@10-52"); // about 1.4 s
    stage.worker->start();
    QTRY_VERIFY(stage.texts.contains(silence));
    const qsizetype before = stage.sets.size();
    QVERIFY(before > 0);
    QTRY_VERIFY(stage.sets.size() >= before + 3);
    stage.stopAndWait();
    QCOMPARE(stage.texts, (QStringList{starting, streaming, live, silence, stopped}));
    QCOMPARE(log->lines(), (QStringList{firstLine, stage.stoppedLine()}));
}

void KinectStreamWorkerTest::unpluggedSensorFallsSilent() {
    Stage stage("unplugged@10");
    stage.worker->start();
    QTRY_VERIFY(stage.texts.contains(silence));
    stage.stopAndWait();
    QVERIFY(stage.ended);
    QVERIFY(!stage.sets.isEmpty());
    QCOMPARE(stage.texts.last(), stopped);
}

void KinectStreamWorkerTest::colorOrderOfTheFrameIsRespected_data() {
    QTest::addColumn<QByteArray>("faults");
    QTest::newRow("BGRX") << QByteArray();
    QTest::newRow("RGBX") << QByteArray("rgbx");
}

void KinectStreamWorkerTest::colorOrderOfTheFrameIsRespected() {
    QFETCH(QByteArray, faults);
    Stage stage(faults);
    stage.worker->start();
    QTRY_VERIFY(!stage.sets.isEmpty());
    stage.stopAndWait();
    QCOMPARE(stage.newest.pixelColor(7, 5), QColor(30, 20, 0));
}

void KinectStreamWorkerTest::stopWhileSilentEndsWithinOneWait() {
    Stage stage("silent");
    stage.worker->start();
    QTRY_VERIFY(stage.texts.contains(streaming));
    const qint64 took = stage.stopAndWait();
    QVERIFY(stage.ended);
    QVERIFY2(took < 1000 + slackMs, qPrintable(QString::number(took)));
    QCOMPARE(stage.texts, (QStringList{starting, streaming, silence, stopped}));
}

void KinectStreamWorkerTest::stopBeforeStartOpensAndLeavesAtOnce() {
    Stage stage;
    stage.worker->stop();
    stage.worker->start();
    QVERIFY(stage.worker->wait(5000));
    QCoreApplication::processEvents();
    QCOMPARE(stage.texts, (QStringList{starting, streaming, stopped}));
    QCOMPARE(log->lines(), QStringList{u"Qt Kinect streams stopped after frames 0"_s});
    stage.worker->start(); // and again
    QVERIFY(stage.worker->wait(5000));
    QCoreApplication::processEvents();
    QCOMPARE(stage.texts.mid(3), (QStringList{starting, streaming, stopped}));
}

void KinectStreamWorkerTest::stopTwiceAndFromAnyThread() {
    Stage stage;
    stage.worker->start();
    QTRY_VERIFY(!stage.sets.isEmpty());
    std::thread first([&stage] { stage.worker->stop(); });
    std::thread second([&stage] { stage.worker->stop(); });
    first.join();
    second.join();
    stage.stopAndWait();
    QVERIFY(stage.ended);
    stage.worker->stop();
    QCOMPARE(stage.texts, (QStringList{starting, streaming, live, stopped}));
}

void KinectStreamWorkerTest::stoppedIsSaidAfterTheSensorStopped() {
    Stage stage("slow-stop=300");
    stage.worker->start();
    QTRY_VERIFY(!stage.sets.isEmpty());
    const qint64 took = stage.stopAndWait();
    QVERIFY2(took >= 300, qPrintable(QString::number(took)));
    QCOMPARE(stage.texts.last(), stopped);
}

void KinectStreamWorkerTest::releasedAtAnyMoment_data() {
    QTest::addColumn<QByteArray>("faults");
    QTest::addColumn<QString>("awaited");
    QTest::newRow("never started") << QByteArray() << QString();
    QTest::newRow("right after the start") << QByteArray() << u"nothing"_s;
    QTest::newRow("without a device") << QByteArray("busy") << u"nothing"_s;
    QTest::newRow("once streaming") << QByteArray() << streaming;
    QTest::newRow("once live") << QByteArray() << live;
    QTest::newRow("while silent") << QByteArray("silent") << streaming;
}

void KinectStreamWorkerTest::releasedAtAnyMoment() {
    QFETCH(QByteArray, faults);
    QFETCH(QString, awaited);
    Stage stage(faults);
    if (!awaited.isEmpty())
        stage.worker->start();
    if (awaited.startsWith(u"status"_s))
        QTRY_VERIFY(stage.texts.contains(awaited));
    QElapsedTimer timer;
    timer.start();
    WorkerThread::release(stage.worker);
    QVERIFY2(timer.elapsed() < 1000 + slackMs, qPrintable(QString::number(timer.elapsed())));
    QVERIFY(stage.worker.isNull());
    QCOMPARE(log->warnings(), QStringList());
}

void KinectStreamWorkerTest::automaticObjectWaitsForItsEnd() {
    qputenv("LUMENO_VIRTUAL_KINECT", recording());
    qputenv("LUMENO_VIRTUAL_KINECT_FAULTS", "");
    std::atomic<int> sets = 0;
    {
        KinectStreamWorker worker;
        connect(
            &worker, &KinectStreamWorker::framesReady, &worker, [&sets] { ++sets; },
            Qt::DirectConnection);
        worker.start();
        QTRY_VERIFY(sets > 0);
    }
    QCOMPARE(log->lines().last(), u"Qt Kinect streams stopped after frames %1"_s.arg(sets));
}

void KinectStreamWorkerTest::hangingSensorDoesNotHoldUpTheRelease() {
    QPointer<KinectStreamWorker> worker;
    QElapsedTimer timer;
    {
        Stage stage("slow-stop=6000");
        worker = stage.worker;
        worker->start();
        QTRY_VERIFY(stage.texts.contains(live));
        timer.start();
    } // releases it
    const qint64 took = timer.elapsed();
    QVERIFY2(took >= 2900, qPrintable(QString::number(took)));
    QVERIFY(worker); // let go before it ended, not destroyed while it runs
    QVERIFY(worker->isRunning());
    QVERIFY(!worker->parent());
    QTRY_VERIFY_WITH_TIMEOUT(worker.isNull(), 30'000); // its own end was the last that it did
    QCOMPARE(log->warnings(), QStringList());
}

void KinectStreamWorkerTest::stalledReceiverGetsABoundedBacklog() {
    Stage stage;
    std::atomic<int> sent = 0;
    connect(
        stage.worker, &KinectStreamWorker::framesReady, &stage, [&sent] { ++sent; },
        Qt::DirectConnection);
    stage.worker->start();
    QTRY_VERIFY(!stage.sets.isEmpty());
    const qsizetype before = stage.sets.size();
    // The stall: no event is handled until nearly as many sets wait as may, and a second longer, in
    // which some 30 are dropped.
    constexpr qsizetype most = KinectStreamWorker::maxUndelivered;
    const QDeadlineTimer giveUp(30'000);
    while (sent < before + most - 5 && !giveUp.hasExpired())
        QTest::qSleep(10);
    QTest::qSleep(1000);
    QCoreApplication::processEvents();
    const qsizetype backlog = stage.sets.size() - before;
    QVERIFY2(backlog >= most - 5 && backlog <= most + 2, qPrintable(QString::number(backlog)));

    const qsizetype awake = stage.sets.size();
    QTRY_VERIFY(stage.sets.size() >= awake + 5);
    stage.stopAndWait();
    const QStringList drops =
        log->linesStartingWith(u"Qt Kinect streams: receivers stalled, frame sets dropped "_s);
    QCOMPARE(drops.size(), 1);
    const int count = drops.first().section(u' ', -1).toInt();
    QVERIFY2(count > 0 && count < 60, qPrintable(drops.first()));
    QCOMPARE(log->lines().last(), stage.stoppedLine());
}

void KinectStreamWorkerTest::receiverThatKeepsImagesGetsThemAll() {
    Stage stage;
    QList<QImage> kept;
    connect(stage.worker, &KinectStreamWorker::framesReady, &stage,
            [&kept](const QImage&, const QImage& ir) { kept.append(ir); });
    stage.worker->start();
    QTRY_VERIFY(kept.size() > KinectStreamWorker::maxUndelivered + 10);
    stage.stopAndWait();
    QCOMPARE(log->linesStartingWith(u"Qt Kinect streams: receivers"_s), QStringList());
}

void KinectStreamWorkerTest::setsWithoutPicturesLeaveRoomForOthers() {
    // More than may wait. They are not sent, so that none of them waits.
    Stage stage("null-data@0-39");
    stage.worker->start();
    QTRY_VERIFY(stage.sets.size() >= 5);
    stage.stopAndWait();
    QCOMPARE(log->linesStartingWith(u"Qt Kinect streams: receivers"_s), QStringList());
}

QTEST_GUILESS_MAIN(KinectStreamWorkerTest)
#include "kinect_stream_worker_test.moc"
