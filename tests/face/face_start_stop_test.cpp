#include "face/face_recognition_worker.h"

#include "app/record_types.h"
#include "support/temporary_place.h"
#include "synthetic_face.h"
#include "ui/main_window.h"

#include <QDir>
#include <QElapsedTimer>
#include <QTest>
#include <opencv2/imgcodecs.hpp>

using namespace Qt::StringLiterals;

namespace {

constexpr int sampleCount = 2000;
constexpr int longMs = 300'000;

} // namespace

/// Stops while a large set of samples is read, trained and written.
class FaceStartStopTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void aStopIsAnsweredAtAnyMoment_data();
    void aStopIsAnsweredAtAnyMoment();
    void theWindowClosesAtAnyMoment_data() { aStopIsAnsweredAtAnyMoment_data(); }
    void theWindowClosesAtAnyMoment();
    void aStopWhileTheModelIsWrittenLeavesNoFile();
    void allSamplesAreLearned();

private:
    TemporaryPlace place;
};

void FaceStartStopTest::initTestCase() {
    registerRecordTypes();
    QVERIFY(QDir().mkpath(u"faces/tavin"_s));
    cv::Mat face = syntheticFace(160);
    for (int i = 0; i < sampleCount; ++i) {
        face.at<uchar>(i / 160, i % 160) = static_cast<uchar>(i);
        QVERIFY(
            cv::imwrite(u"faces/tavin/%1.png"_s.arg(i, 4, 10, QChar(u'0')).toStdString(), face));
    }
}

void FaceStartStopTest::aStopIsAnsweredAtAnyMoment_data() {
    QTest::addColumn<int>("afterMs");
    for (const int afterMs : {0, 1, 100, 400, 700, 1000, 1500, 2000, 2500, 3000, 4000, 5000})
        QTest::addRow("%d ms", afterMs) << afterMs;
}

void FaceStartStopTest::aStopIsAnsweredAtAnyMoment() {
    QFETCH(int, afterMs);
    FaceRecognitionWorker worker(5000);
    worker.start();
    QTest::qWait(afterMs);
    QElapsedTimer timer;
    timer.start();
    worker.stop();
    QVERIFY(worker.wait(3000));
    qInfo() << "stopped after" << timer.elapsed() << "ms";
}

void FaceStartStopTest::theWindowClosesAtAnyMoment() {
    QFETCH(int, afterMs);
    auto window = std::make_unique<MainWindow>(false, false, false, false, 5000, false);
    window->show();
    QTest::qWait(afterMs);
    QElapsedTimer timer;
    timer.start();
    window.reset();
    qInfo() << "closed after" << timer.elapsed() << "ms";
    QVERIFY(timer.elapsed() < 3000);
    QVERIFY(!WorkerThread::anyLetGoStillRuns());
}

void FaceStartStopTest::aStopWhileTheModelIsWrittenLeavesNoFile() {
    QVERIFY(QDir(u"models"_s).removeRecursively());
    FaceRecognitionWorker worker(5000);
    worker.start();
    QTRY_VERIFY_WITH_TIMEOUT(QDir(u"models"_s).exists(), longMs);
    worker.stop();
    QVERIFY(worker.wait(3000));
    QVERIFY(QDir(u"models"_s)
                .isEmpty(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot));
}

void FaceStartStopTest::allSamplesAreLearned() {
    FaceRecognitionWorker worker(5000);
    QStringList statuses;
    connect(&worker, &FaceRecognitionWorker::statusChanged, this,
            [&statuses](const QString& status) { statuses.append(status); });
    QElapsedTimer timer;
    timer.start();
    worker.start();
    QTRY_COMPARE_WITH_TIMEOUT(statuses.size(), 1, longMs);
    qInfo() << "live after" << timer.elapsed() << "ms";
    QVERIFY(statuses[0].startsWith(u"Face recognition live: samples=2000 "_s));
    QVERIFY(QFileInfo(u"models/face_recognizer.yml"_s).size() > 100'000'000);
}

QTEST_MAIN(FaceStartStopTest)
#include "face_start_stop_test.moc"
