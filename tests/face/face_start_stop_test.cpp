#include "face/face_recognition_worker.h"

#include "app/record_types.h"
#include "support/processor_time.h"
#include "support/temporary_place.h"
#include "synthetic_face.h"
#include "ui/main_window.h"

#include <QDir>
#include <QElapsedTimer>
#include <QTest>
#include <cmath>
#include <opencv2/imgcodecs.hpp>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

constexpr int longMs = 300'000;
/// Processor time within which a stop is answered: what the window waits. The clock would measure
/// the machine, since the search for faces gives way to everybody.
constexpr qint64 answerMs = 3000;
constexpr qint64 bytesPerSample = 50'000; // of the model's file, at least

/// A quarter of them takes the same steps in a quarter of the time.
int sampleCount() {
    return qEnvironmentVariableIsSet("LUMENO_LONG_TESTS") ? 2000 : 500;
}

/// Runs a worker until it has learned all samples. Says how long that took; nothing when its status
/// is another one.
std::optional<qint64> millisecondsToLearn() {
    FaceRecognitionWorker worker(5000);
    QStringList statuses;
    QObject::connect(&worker, &FaceRecognitionWorker::statusChanged, &worker,
                     [&statuses](const QString& status) { statuses.append(status); });
    QElapsedTimer timer;
    timer.start();
    worker.start();
    if (!QTest::qWaitFor([&statuses] { return !statuses.isEmpty(); }, longMs))
        return std::nullopt;
    const qint64 took = timer.elapsed();
    const QString live = u"Face recognition live: samples=%1 "_s.arg(sampleCount());
    return statuses.first().startsWith(live) ? std::optional(took) : std::nullopt;
}

} // namespace

/// Stops while a large set of samples is read, trained and written.
class FaceStartStopTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void allSamplesAreLearned();
    void aStopIsAnsweredAtAnyMoment_data();
    void aStopIsAnsweredAtAnyMoment();
    void theWindowClosesAtAnyMoment_data() { aStopIsAnsweredAtAnyMoment_data(); }
    void theWindowClosesAtAnyMoment();
    void aStopWhileTheModelIsWrittenLeavesNoFile();

private:
    int momentMs() const;

    qint64 learningMs = 0;
    TemporaryPlace place;
};

void FaceStartStopTest::initTestCase() {
    registerRecordTypes();
    QVERIFY(QDir().mkpath(u"faces/tavin"_s));
    cv::Mat face = syntheticFace(160);
    for (int i = 0; i < sampleCount(); ++i) {
        face.at<uchar>(i / 160, i % 160) = static_cast<uchar>(i);
        QVERIFY(
            cv::imwrite(u"faces/tavin/%1.png"_s.arg(i, 4, 10, QChar(u'0')).toStdString(), face));
    }
}

void FaceStartStopTest::allSamplesAreLearned() {
    const std::optional<qint64> took = millisecondsToLearn();
    QVERIFY(took);
    learningMs = *took;
    qInfo() << "live after" << learningMs << "ms";
    QVERIFY(QFileInfo(u"models/face_recognizer.yml"_s).size() > sampleCount() * bytesPerSample);
}

/// In parts of the time that learning took, so that the moments lie in each step of it on any
/// machine: the samples are read, then trained, then the model is written.
void FaceStartStopTest::aStopIsAnsweredAtAnyMoment_data() {
    QTest::addColumn<double>("part");
    for (const double part : {0.0, 0.0002, 0.02, 0.08, 0.15, 0.2, 0.3, 0.4, 0.5, 0.6, 0.8, 1.0})
        QTest::addRow("%g %%", 100.0 * part) << part;
}

int FaceStartStopTest::momentMs() const {
    QFETCH(double, part);
    return static_cast<int>(std::lround(part * static_cast<double>(learningMs)));
}

void FaceStartStopTest::aStopIsAnsweredAtAnyMoment() {
    QVERIFY(learningMs > 0);
    FaceRecognitionWorker worker(5000);
    worker.start();
    QTest::qWait(momentMs());
    const qint64 usedBefore = processMs();
    worker.stop();
    QVERIFY(worker.wait(longMs));
    const qint64 used = processMs() - usedBefore;
    qInfo() << "stopped after" << used << "ms";
    QVERIFY(used < answerMs);
}

void FaceStartStopTest::theWindowClosesAtAnyMoment() {
    QVERIFY(learningMs > 0);
    auto window = std::make_unique<MainWindow>(false, false, false, false, 5000, false);
    window->show();
    QTest::qWait(momentMs());
    const qint64 usedBefore = processMs();
    window.reset();
    // Where it got no processor for the time that the window waits, it was let go.
    QTRY_VERIFY_WITH_TIMEOUT(!WorkerThread::anyLetGoStillRuns(), longMs);
    const qint64 used = processMs() - usedBefore;
    qInfo() << "closed after" << used << "ms";
    QVERIFY(used < answerMs);
}

void FaceStartStopTest::aStopWhileTheModelIsWrittenLeavesNoFile() {
    QVERIFY(QDir(u"models"_s).removeRecursively());
    FaceRecognitionWorker worker(5000);
    worker.start();
    QVERIFY(QTest::qWaitFor([] { return QDir(u"models"_s).exists(); }, longMs));
    worker.stop();
    QVERIFY(worker.wait(longMs));
    QVERIFY(QDir(u"models"_s)
                .isEmpty(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot));
}

QTEST_MAIN(FaceStartStopTest)
#include "face_start_stop_test.moc"
