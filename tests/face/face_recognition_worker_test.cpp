#include "face/face_recognition_worker.h"

#include "app/record_types.h"
#include "owner_place.h"
#include "support/log_capture.h"
#include "synthetic_face.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QSemaphore>
#include <QTest>
#include <algorithm>
#include <opencv2/core/utility.hpp>
#include <sys/resource.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(face::DetectorMode)

namespace {

constexpr int longMs = 60'000;
const QString live = u"Face recognition live: samples=1 model=models/face_recognizer.yml "
                     "candidate_threshold=60 detector=%1"_s;
const QString stopped = u"Face recognition stopped"_s;

/// Collects on the test's thread what a worker sends.
class Watcher : public QObject {
public:
    explicit Watcher(FaceRecognitionWorker& worker) {
        connect(&worker, &FaceRecognitionWorker::statusChanged, this,
                [this](const QString& status) { statuses.append(status); });
        connect(&worker, &FaceRecognitionWorker::overlaysReady, this,
                [this](const QList<FaceOverlay>& overlays) { results.append(overlays); });
    }
    QStringList statuses;
    QList<QList<FaceOverlay>> results;
};

/// Holds a worker inside each of its results until it is let on, as a long pass would.
class Gate {
public:
    explicit Gate(FaceRecognitionWorker& worker) {
        QObject::connect(
            &worker, &FaceRecognitionWorker::overlaysReady, &worker,
            [this] {
                reached.release();
                open.acquire();
            },
            Qt::DirectConnection);
    }
    bool waitForResult() { return reached.tryAcquire(1, longMs); }
    void letOn(int results = 1) { open.release(results); }

private:
    QSemaphore reached;
    QSemaphore open;
};

QImage ownerFrame() {
    return colourFrame(frameWithFace(1));
}

QImage emptyFrame() {
    return colourFrame(cv::Mat(360, 480, CV_8U, cv::Scalar(70)));
}

void writeBytes(const QString& path, const QByteArray& content) {
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
}

} // namespace

class FaceRecognitionWorkerTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { place.emplace(); }
    void cleanup() { place.reset(); }
    void withoutSamplesItSaysSoAndEnds_data();
    void withoutSamplesItSaysSoAndEnds();
    void anUnusableFrontalCascadeEndsIt_data();
    void anUnusableFrontalCascadeEndsIt();
    void anUnusableProfileCascadeLeavesTheFrontalOne_data();
    void anUnusableProfileCascadeLeavesTheFrontalOne();
    void itSaysWhatItRunsWith();
    void aModelThatCannotBeWrittenEndsNothing_data();
    void aModelThatCannotBeWrittenEndsNothing();
    void theOwnerIsNamed();
    void aStrangerIsShownButNotNamed();
    void everyFrameGivesOneResult_data();
    void everyFrameGivesOneResult();
    void nullFramesAreIgnored();
    void onlyTheNewestFrameIsWorkedOn();
    void theSendersPixelsAreCopied();
    void bodyRegionsAreSearched();
    void theLogIsLimitedToOneLineASecond();
    void stoppedWhileIdle();
    void stoppedBeforeTheStart();
    void stoppedTwiceAndAfterTheEnd();
    void stoppedWithAFramePending();
    void interruptedWithoutAStop();
    void destroyedWhileBusy();
    void aPassThatFailsSkipsItsFrame();
    void itGivesWayToOtherThreads();
    void theLibraryStartsNoThreadsForIt();
    void theSearchHasItsMemoryFromTheStart();

private:
    std::optional<OwnerPlace> place;
};

void FaceRecognitionWorkerTest::initTestCase() {
    registerRecordTypes();
}

void FaceRecognitionWorkerTest::withoutSamplesItSaysSoAndEnds_data() {
    QTest::addColumn<QString>("state");
    QTest::newRow("no folder") << u"no folder"_s;
    QTest::newRow("empty folder") << u"empty"_s;
    QTest::newRow("damaged samples") << u"damaged"_s;
    QTest::newRow("an old model") << u"old model"_s;
}

void FaceRecognitionWorkerTest::withoutSamplesItSaysSoAndEnds() {
    QFETCH(QString, state);
    QVERIFY(QDir(u"faces"_s).removeRecursively());
    if (state != "no folder"_L1)
        QVERIFY(QDir().mkpath(u"faces/tavin"_s));
    if (state == "damaged"_L1)
        writeBytes(u"faces/tavin/1.png"_s, "not an image");
    if (state == "old model"_L1) {
        QVERIFY(QDir().mkpath(u"models"_s));
        writeBytes(u"models/face_recognizer.yml"_s, "%YAML:1.0\n---\n");
    }
    FaceRecognitionWorker worker(5000);
    const Watcher watcher(worker);
    worker.start();
    QVERIFY(worker.wait(longMs));
    QCoreApplication::processEvents();
    QCOMPARE(
        watcher.statuses,
        QStringList{u"Face recognition unavailable: no Tavin samples found under faces/tavin"_s});
    worker.submitFrame(ownerFrame());
    QCOMPARE(QFile::exists(u"models/face_recognizer.yml"_s), state == "old model"_L1);
}

void FaceRecognitionWorkerTest::anUnusableFrontalCascadeEndsIt_data() {
    QTest::addColumn<QString>("path");
    for (const char* path : {"missing.xml", "empty.xml", "damaged.xml", "folder.xml"})
        QTest::newRow(path) << QString::fromLatin1(path);
}

void FaceRecognitionWorkerTest::anUnusableFrontalCascadeEndsIt() {
    QFETCH(QString, path);
    writeBytes(u"empty.xml"_s, QByteArray());
    writeBytes(u"damaged.xml"_s, "<?xml version=\"1.0\"?><opencv_storage><cascade>");
    QVERIFY(QDir().mkdir(u"folder.xml"_s));
    face::Options options;
    options.frontalCascadePath = path.toStdString();
    FaceRecognitionWorker worker(5000, nullptr, options);
    const Watcher watcher(worker);
    worker.start();
    QVERIFY(worker.wait(longMs));
    QCoreApplication::processEvents();
    QCOMPARE(watcher.statuses,
             QStringList{u"Face recognition unavailable: failed to load cascade "_s + path});
}

void FaceRecognitionWorkerTest::anUnusableProfileCascadeLeavesTheFrontalOne_data() {
    QTest::addColumn<QString>("path");
    QTest::addColumn<face::DetectorMode>("wanted");
    QTest::addColumn<QString>("used");
    for (const char* path : {"missing.xml", "empty.xml", "folder.xml"}) {
        QTest::addRow("%s, all", path)
            << QString::fromLatin1(path) << face::DetectorMode::FrontalOrProfile << u"frontal"_s;
        QTest::addRow("%s, left", path)
            << QString::fromLatin1(path) << face::DetectorMode::ProfileLeft << u"profile_left"_s;
        QTest::addRow("%s, right", path)
            << QString::fromLatin1(path) << face::DetectorMode::ProfileRight << u"profile_right"_s;
        QTest::addRow("%s, none", path)
            << QString::fromLatin1(path) << face::DetectorMode::Frontal << u"frontal"_s;
    }
}

void FaceRecognitionWorkerTest::anUnusableProfileCascadeLeavesTheFrontalOne() {
    QFETCH(QString, path);
    QFETCH(face::DetectorMode, wanted);
    QFETCH(QString, used);
    writeBytes(u"empty.xml"_s, QByteArray());
    QVERIFY(QDir().mkdir(u"folder.xml"_s));
    face::Options options;
    options.profileCascadePath = path.toStdString();
    options.detector = wanted;
    FaceRecognitionWorker worker(5000, nullptr, options);
    const Watcher watcher(worker);
    worker.start();
    QTRY_COMPARE_WITH_TIMEOUT(watcher.statuses, QStringList{live.arg(used)}, longMs);
    worker.submitFrame(ownerFrame());
    QTRY_COMPARE_WITH_TIMEOUT(watcher.results.size(), 1, longMs);
    QCOMPARE(watcher.results[0].size(), used == "frontal"_L1 ? 1 : 0);
}

void FaceRecognitionWorkerTest::itSaysWhatItRunsWith() {
    FaceRecognitionWorker worker(5000);
    const Watcher watcher(worker);
    worker.start();
    QTRY_COMPARE_WITH_TIMEOUT(watcher.statuses, QStringList{live.arg(u"frontal_or_profile"_s)},
                              longMs);
    QVERIFY(QFile::exists(u"models/face_recognizer.yml"_s));
}

void FaceRecognitionWorkerTest::aModelThatCannotBeWrittenEndsNothing_data() {
    QTest::addColumn<QString>("obstacle");
    QTest::newRow("models is a file") << u"models"_s;
    QTest::newRow("the model file is a folder") << u"models/face_recognizer.yml/inner"_s;
}

void FaceRecognitionWorkerTest::aModelThatCannotBeWrittenEndsNothing() {
    QFETCH(QString, obstacle);
    if (obstacle == "models"_L1)
        writeBytes(obstacle, "file");
    else
        QVERIFY(QDir().mkpath(obstacle));
    const LogCapture log;
    FaceRecognitionWorker worker(5000);
    const Watcher watcher(worker);
    worker.start();
    worker.submitFrame(ownerFrame());
    QTRY_COMPARE_WITH_TIMEOUT(watcher.results.size(), 1, longMs);
    QCOMPARE(watcher.statuses, QStringList{live.arg(u"frontal_or_profile"_s)});
    QCOMPARE(watcher.results[0].value(0).label, u"Tavin"_s);
    QCOMPARE(log.linesStartingWith(u"Qt face model not written:"_s).size(), 1);
}

void FaceRecognitionWorkerTest::theOwnerIsNamed() {
    const LogCapture log;
    FaceRecognitionWorker worker(5000);
    const Watcher watcher(worker);
    worker.start();
    worker.submitFrame(ownerFrame());
    QTRY_COMPARE_WITH_TIMEOUT(watcher.results.size(), 1, longMs);
    QCOMPARE(watcher.results[0].size(), 1);
    const FaceOverlay owner = watcher.results[0][0];
    QCOMPARE(owner.label, u"Tavin"_s);
    QCOMPARE(owner.color, QColor(91, 232, 134));
    QCOMPARE(owner.confidence, 0.0); // The very sample.
    QCOMPARE(owner.detector, u"frontal"_s);
    QCOMPARE(owner.status, u"tracked"_s);
    QCOMPARE(owner.tier, u"near face"_s);
    QVERIFY(owner.rect.intersects(QRect(160, 70, 160, 160)));
    QCOMPARE(log.linesStartingWith(u"Qt face overlays: count= 1 \"Tavin conf=0.0 detector=frontal "
                                   "tier=near face face_px="_s)
                 .size(),
             1);
}

void FaceRecognitionWorkerTest::aStrangerIsShownButNotNamed() {
    FaceRecognitionWorker worker(5000);
    const Watcher watcher(worker);
    const QImage stranger = colourFrame(frameWithFace(7)); // One that the cascade finds.
    worker.start();
    QElapsedTimer shownAfter;
    const QDeadlineTimer giveUp(longMs);
    while (watcher.results.isEmpty() || watcher.results.last().isEmpty()) {
        QVERIFY(!giveUp.hasExpired());
        const auto seen = watcher.results.size();
        worker.submitFrame(stranger);
        QTRY_COMPARE_WITH_TIMEOUT(watcher.results.size(), seen + 1, longMs);
        if (seen == 0)
            shownAfter.start();
    }
    QVERIFY(watcher.results.size() >= 5);
    QVERIFY(shownAfter.elapsed() >= 1000); // 1200 ms between the clocks' readings of two frames.
    const FaceOverlay shown = watcher.results.last()[0];
    QCOMPARE(shown.label, u"Unknown"_s);
    QCOMPARE(shown.color, QColor(255, 159, 67));
    QVERIFY2(shown.confidence > 60.0, qPrintable(QString::number(shown.confidence)));
}

void FaceRecognitionWorkerTest::everyFrameGivesOneResult_data() {
    QTest::addColumn<QImage>("frame");
    QTest::newRow("one pixel") << QImage(1, 1, QImage::Format_RGB888);
    QTest::newRow("one column") << QImage(1, 300, QImage::Format_RGB32);
    QTest::newRow("odd width") << ownerFrame().copy(0, 0, 479, 359);
    QTest::newRow("grey") << ownerFrame().convertToFormat(QImage::Format_Grayscale8);
    QTest::newRow("with alpha") << ownerFrame().convertToFormat(QImage::Format_ARGB32);
    QTest::newRow("one bit") << ownerFrame().convertToFormat(QImage::Format_Mono);
}

void FaceRecognitionWorkerTest::everyFrameGivesOneResult() {
    QFETCH(QImage, frame);
    FaceRecognitionWorker worker(5000);
    const Watcher watcher(worker);
    worker.setBodyRegions({QRect(), QRect(-5, -5, 3000, 3000), QRect(100, 0, 200, 300)});
    worker.start();
    worker.submitFrame(frame);
    QTRY_COMPARE_WITH_TIMEOUT(watcher.results.size(), 1, longMs);
    worker.stop();
    QVERIFY(worker.wait(longMs));
    QCoreApplication::processEvents();
    QCOMPARE(watcher.results.size(), 1);
}

void FaceRecognitionWorkerTest::nullFramesAreIgnored() {
    FaceRecognitionWorker worker(5000);
    const Watcher watcher(worker);
    worker.submitFrame(QImage());
    worker.start();
    worker.submitFrame(emptyFrame());
    worker.submitFrame(QImage()); // Does not take the pending frame's place.
    QTRY_COMPARE_WITH_TIMEOUT(watcher.results.size(), 1, longMs);
}

void FaceRecognitionWorkerTest::onlyTheNewestFrameIsWorkedOn() {
    FaceRecognitionWorker worker(5000);
    Gate gate(worker);
    const Watcher watcher(worker);
    worker.start();
    worker.submitFrame(emptyFrame());
    QVERIFY(gate.waitForResult());
    worker.submitFrame(ownerFrame());
    worker.submitFrame(emptyFrame());
    gate.letOn();
    QVERIFY(gate.waitForResult());
    worker.submitFrame(emptyFrame());
    gate.letOn(2);
    QTRY_COMPARE_WITH_TIMEOUT(watcher.results.size(), 3, longMs);
    // The owner's frame was dropped: nobody was ever seen.
    for (const QList<FaceOverlay>& result : watcher.results)
        QVERIFY(result.isEmpty());
}

void FaceRecognitionWorkerTest::theSendersPixelsAreCopied() {
    FaceRecognitionWorker worker(5000);
    Gate gate(worker);
    const Watcher watcher(worker);
    worker.start();
    worker.submitFrame(emptyFrame());
    QVERIFY(gate.waitForResult());
    const QImage owner = ownerFrame();
    std::vector<uchar> buffer(owner.constBits(), owner.constBits() + owner.sizeInBytes());
    worker.submitFrame(QImage(buffer.data(), owner.width(), owner.height(), owner.bytesPerLine(),
                              QImage::Format_RGB888));
    std::fill(buffer.begin(), buffer.end(), uchar{0});
    gate.letOn(2);
    QTRY_COMPARE_WITH_TIMEOUT(watcher.results.size(), 2, longMs);
    QCOMPARE(watcher.results[1].value(0).label, u"Tavin"_s);
}

void FaceRecognitionWorkerTest::bodyRegionsAreSearched() {
    const LogCapture log;
    FaceRecognitionWorker worker(5000);
    Gate gate(worker);
    const Watcher watcher(worker);
    worker.start();
    worker.submitFrame(ownerFrame());
    QVERIFY(gate.waitForResult());
    const QString start = u"Qt face follow/body crop upscale:"_s;
    QVERIFY(log.linesStartingWith(start).isEmpty());
    worker.setBodyRegions({QRect(0, 0, 20, 20), QRect(60, 40, 360, 320)});
    worker.submitFrame(ownerFrame());
    gate.letOn(2);
    QTRY_COMPARE_WITH_TIMEOUT(watcher.results.size(), 2, longMs);
    QCOMPARE(log.linesStartingWith(start),
             QStringList{start + u" regions= 2 follow_assist_faces= 1"_s});
    QCOMPARE(watcher.results[1].size(), 1); // Both passes found the same face.
}

void FaceRecognitionWorkerTest::theLogIsLimitedToOneLineASecond() {
    const LogCapture log;
    FaceRecognitionWorker worker(5000);
    const Watcher watcher(worker);
    worker.start();
    QElapsedTimer sinceFirst;
    for (int frame = 1; frame <= 12; ++frame) {
        worker.submitFrame(QImage(8, 8, QImage::Format_RGB888));
        QTRY_COMPARE_WITH_TIMEOUT(watcher.results.size(), frame, longMs);
        if (frame == 1)
            sinceFirst.start();
    }
    const auto lines = log.linesStartingWith(u"Qt face overlays: count="_s).size();
    QVERIFY(lines >= 1);
    QVERIFY(lines <= 2 + sinceFirst.elapsed() / 1000);
    QVERIFY(lines < 12);
}

void FaceRecognitionWorkerTest::stoppedWhileIdle() {
    FaceRecognitionWorker worker(5000);
    const Watcher watcher(worker);
    worker.start();
    QTRY_COMPARE_WITH_TIMEOUT(watcher.statuses.size(), 1, longMs);
    worker.stop();
    QVERIFY(worker.wait(3000));
    QTRY_COMPARE(watcher.statuses.size(), 2);
    QCOMPARE(watcher.statuses[1], stopped);
    QVERIFY(watcher.results.isEmpty());
}

void FaceRecognitionWorkerTest::stoppedBeforeTheStart() {
    FaceRecognitionWorker worker(5000);
    const Watcher watcher(worker);
    worker.submitFrame(ownerFrame());
    worker.stop();
    worker.start();
    QVERIFY(worker.wait(3000));
    QCoreApplication::processEvents();
    QVERIFY(watcher.statuses.isEmpty());
    QVERIFY(watcher.results.isEmpty());
    const FaceRecognitionWorker neverStarted(5000);
}

void FaceRecognitionWorkerTest::stoppedTwiceAndAfterTheEnd() {
    FaceRecognitionWorker worker(5000);
    const Watcher watcher(worker);
    worker.start();
    QTRY_COMPARE_WITH_TIMEOUT(watcher.statuses.size(), 1, longMs);
    worker.stop();
    worker.stop();
    QVERIFY(worker.wait(3000));
    worker.stop();
    worker.submitFrame(ownerFrame());
    QCoreApplication::processEvents();
    QCOMPARE(watcher.statuses.count(stopped), 1);
}

void FaceRecognitionWorkerTest::stoppedWithAFramePending() {
    FaceRecognitionWorker worker(5000);
    Gate gate(worker);
    const Watcher watcher(worker);
    worker.start();
    worker.submitFrame(emptyFrame());
    QVERIFY(gate.waitForResult());
    worker.submitFrame(ownerFrame());
    worker.stop();
    gate.letOn(2);
    QVERIFY(worker.wait(3000));
    QTRY_COMPARE(watcher.statuses.value(1), stopped);
    QCOMPARE(watcher.results.size(), 1);
}

void FaceRecognitionWorkerTest::interruptedWithoutAStop() {
    FaceRecognitionWorker worker(5000);
    const Watcher watcher(worker);
    worker.start();
    QTRY_COMPARE_WITH_TIMEOUT(watcher.statuses.size(), 1, longMs);
    worker.requestInterruption();
    QVERIFY(worker.wait(3000));
    QTRY_COMPARE(watcher.statuses.value(1), stopped);
}

void FaceRecognitionWorkerTest::destroyedWhileBusy() {
    QElapsedTimer timer;
    {
        FaceRecognitionWorker worker(5000);
        const Watcher watcher(worker);
        worker.start();
        QTRY_COMPARE_WITH_TIMEOUT(watcher.statuses.size(), 1, longMs);
        worker.setBodyRegions(QList<QRect>(200, QRect(0, 0, 480, 360)));
        worker.submitFrame(ownerFrame());
        QTest::qWait(50); // Into the pass, which would take many seconds.
        timer.start();
    }
    QVERIFY2(timer.elapsed() < 3000, qPrintable(QString::number(timer.elapsed())));
}

void FaceRecognitionWorkerTest::aPassThatFailsSkipsItsFrame() {
    face::Options options;
    options.scaleFactor = 1.0; // The cascades refuse it.
    const LogCapture log;
    FaceRecognitionWorker worker(5000, nullptr, options);
    const Watcher watcher(worker);
    const auto skippedLines = [&log] {
        return log.linesStartingWith(u"Qt face frame skipped:"_s).size();
    };
    QElapsedTimer timer;
    timer.start();
    worker.start();
    worker.submitFrame(ownerFrame());
    QTRY_COMPARE_WITH_TIMEOUT(skippedLines(), 1, longMs);
    // It goes on with the frames that follow, and says so again after a second.
    const auto submitAndCount = [&] {
        worker.submitFrame(ownerFrame());
        return skippedLines();
    };
    QTRY_COMPARE_WITH_TIMEOUT(submitAndCount(), 2, longMs);
    QVERIFY2(timer.elapsed() >= 1000, qPrintable(QString::number(timer.elapsed())));
    QVERIFY(worker.isRunning());
    worker.stop();
    QVERIFY(worker.wait(3000));
    QTRY_COMPARE(watcher.statuses.value(1), stopped);
    QVERIFY(watcher.results.isEmpty());
}

void FaceRecognitionWorkerTest::itGivesWayToOtherThreads() {
    FaceRecognitionWorker worker(5000);
    const int before = getpriority(PRIO_PROCESS, 0);
    std::atomic<int> ofWorker = -1;
    QObject::connect(
        &worker, &FaceRecognitionWorker::overlaysReady, &worker,
        [&ofWorker] { ofWorker = getpriority(PRIO_PROCESS, 0); }, Qt::DirectConnection);
    worker.start();
    worker.submitFrame(QImage(8, 8, QImage::Format_RGB888));
    QTRY_VERIFY_WITH_TIMEOUT(ofWorker != -1, longMs);
    QCOMPARE(ofWorker.load(), std::max(before, 10));
    QCOMPARE(getpriority(PRIO_PROCESS, 0), before);
}

/// Threads of the library's pool would not give way as this one does.
void FaceRecognitionWorkerTest::theLibraryStartsNoThreadsForIt() {
    cv::setNumThreads(4);
    FaceRecognitionWorker worker(5000);
    QCOMPARE(cv::getNumThreads(), 1);
    const Watcher watcher(worker);
    // Without those that Qt starts to convert an image.
    const auto threads = [] {
        qsizetype count = 0;
        const QDir tasks(u"/proc/self/task"_s);
        for (const QString& task : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
            QFile name(tasks.filePath(task + u"/comm"_s));
            if (name.open(QIODevice::ReadOnly) && name.readAll() != "Thread (pooled)\n")
                ++count;
        }
        return count;
    };
    const qsizetype before = threads();
    worker.start();
    worker.submitFrame(emptyFrame());
    QTRY_COMPARE_WITH_TIMEOUT(watcher.results.size(), 1, longMs);
    QCOMPARE(threads(), before + 1);
}

void FaceRecognitionWorkerTest::theSearchHasItsMemoryFromTheStart() {
    const auto residentMib = [] {
        QFile file(u"/proc/self/statm"_s);
        const double pages =
            file.open(QIODevice::ReadOnly) ? file.readAll().split(' ').value(1).toDouble() : 0.0;
        return pages * static_cast<double>(sysconf(_SC_PAGESIZE)) / (1024.0 * 1024.0);
    };
    FaceRecognitionWorker worker(5000);
    const Watcher watcher(worker);
    worker.start();
    worker.submitFrame(emptyFrame());
    QTRY_COMPARE_WITH_TIMEOUT(watcher.results.size(), 1, longMs);
    const double before = residentMib();
    const QSize size(1920, 1080);
    worker.setBodyRegions({QRect(QPoint(0, 0), size)});
    QImage frame(size, QImage::Format_RGB888);
    frame.fill(QColor(70, 70, 70));
    worker.submitFrame(frame);
    QTRY_COMPARE_WITH_TIMEOUT(watcher.results.size(), 2, longMs);
    const double grown = residentMib() - before;
    QVERIFY2(grown < 40.0, qPrintable(u"grown by %1 MiB"_s.arg(grown)));
}

QTEST_GUILESS_MAIN(FaceRecognitionWorkerTest)
#include "face_recognition_worker_test.moc"
