#include "face/face_recognition_worker.h"

#include "app/record_types.h"
#include "owner_place.h"
#include "synthetic_face.h"

#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QMutex>
#include <QRandomGenerator>
#include <QSemaphore>
#include <QTest>
#include <algorithm>
#include <atomic>

using namespace Qt::StringLiterals;

namespace {

constexpr int longMs = 60'000;
/// A machine that is busy makes every wait longer, so a wait that has to be short is tried again.
constexpr int tries = 20;

/// A frame that shows nothing, so that a pass takes no time to speak of.
QImage emptyFrame() {
    return QImage(8, 8, QImage::Format_RGB888);
}

/// A worker that always has a frame to work on: with each of its results it gets the next one.
class FedWorker {
    QMutex mutex;
    QImage frame = emptyFrame(); // under the mutex
    QElapsedTimer clock;
    std::atomic<qint64> lastCycleMs = 0;
    std::atomic<qint64> lastResultMs = 0;
    QSemaphore results;

    QImage currentFrame() {
        const QMutexLocker lock(&mutex);
        return frame;
    }

public:
    FedWorker() {
        QObject::connect(
            &worker, &FaceRecognitionWorker::overlaysReady, &worker,
            [this] {
                const qint64 nowMs = clock.elapsed();
                lastCycleMs = nowMs - lastResultMs;
                lastResultMs = nowMs;
                worker.submitFrame(currentFrame());
                results.release();
            },
            Qt::DirectConnection);
        clock.start();
        worker.start();
        worker.submitFrame(emptyFrame());
    }
    /// Gives it that frame from now on, and waits until no result of the one before can follow: one
    /// may be on its way and a second one be submitted already.
    bool showFrom(const QImage& next) {
        {
            const QMutexLocker lock(&mutex);
            frame = next;
        }
        worker.submitFrame(next);
        results.tryAcquire(results.available());
        return waitForResult() && waitForResult();
    }
    bool waitForResult() { return results.tryAcquire(1, longMs); }
    /// Until `count` cycles in a row were as long as only a rest makes them.
    bool waitForRest(int count) {
        const QDeadlineTimer giveUp(longMs);
        for (int rests = 0; rests < count;) {
            if (giveUp.hasExpired() || !waitForResult())
                return false;
            rests = cycleMs() >= restingCycleMs ? rests + 1 : 0;
        }
        return true;
    }
    qint64 cycleMs() const { return lastCycleMs; }

    /// PassRest::cycleMs, less what a clock in whole milliseconds may lose.
    static constexpr qint64 restingCycleMs = 385;
    FaceRecognitionWorker worker{5000};
};

} // namespace

/// When the worker's thread waits, and what ends a wait.
class FaceRestTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { registerRecordTypes(); }
    void itRestsBetweenPassesWhenNothingIsNew();
    void itDoesNotRestAtFirst();
    void aPassTakesItsTimeFromTheRest();
    void aFaceThatComesEndsTheResting();
    void anotherNumberOfBodiesEndsTheRest_data();
    void anotherNumberOfBodiesEndsTheRest();
    void aStopEndsTheRest();
    void anIdleWorkerLooksForAnInterruptionFourTimesASecond();

private:
    OwnerPlace place;
};

void FaceRestTest::itRestsBetweenPassesWhenNothingIsNew() {
    FedWorker fed;
    QVERIFY(fed.waitForResult());
    QElapsedTimer sinceFirst;
    sinceFirst.start();
    // Although a frame waits and others come.
    QVERIFY(fed.waitForRest(3));
    QVERIFY(sinceFirst.elapsed() >= 2000);
    fed.worker.submitFrame(emptyFrame());
    QVERIFY(fed.waitForResult());
    QVERIFY(fed.cycleMs() >= FedWorker::restingCycleMs);
}

void FaceRestTest::itDoesNotRestAtFirst() {
    bool quick = false;
    for (int attempt = 0; attempt < tries && !quick; ++attempt) {
        FedWorker fed;
        QVERIFY(fed.waitForResult());
        quick = true;
        for (int cycle = 0; cycle < 5; ++cycle) {
            QVERIFY(fed.waitForResult());
            quick = quick && fed.cycleMs() < FedWorker::restingCycleMs;
        }
    }
    QVERIFY(quick);
}

void FaceRestTest::aPassTakesItsTimeFromTheRest() {
    QImage noise(1920, 1080, QImage::Format_Grayscale8);
    QRandomGenerator random(1);
    for (int y = 0; y < noise.height(); ++y)
        std::generate_n(noise.scanLine(y), noise.width(), [&random] { return random() & 0xffU; });
    FedWorker fed;
    QVERIFY(fed.showFrom(noise));
    qint64 passMs = longMs;
    for (int cycle = 0; cycle < 3; ++cycle) { // It does not rest at first.
        QVERIFY(fed.waitForResult());
        passMs = std::min(passMs, fed.cycleMs());
    }
    if (passMs >= FedWorker::restingCycleMs / 2)
        QSKIP("passes are too slow here to leave time for a rest");
    QVERIFY(fed.waitForRest(1));
    bool onTime = false;
    for (int attempt = 0; attempt < tries && !onTime; ++attempt) {
        QVERIFY(fed.waitForRest(1));
        onTime = fed.cycleMs() < FedWorker::restingCycleMs + passMs / 2;
    }
    QVERIFY(onTime);
}

void FaceRestTest::aFaceThatComesEndsTheResting() {
    const QImage stranger = colourFrame(frameWithFace(7)); // One that the cascade finds.
    bool awake = false;
    for (int attempt = 0; attempt < tries && !awake; ++attempt) {
        FedWorker fed;
        QVERIFY(fed.waitForRest(2)); // The first cycle is as long as the start takes.
        QVERIFY(fed.showFrom(stranger));
        awake = true;
        for (int cycle = 0; cycle < 3; ++cycle) {
            QVERIFY(fed.waitForResult());
            awake = awake && fed.cycleMs() < FedWorker::restingCycleMs;
        }
    }
    QVERIFY(awake);
}

void FaceRestTest::anotherNumberOfBodiesEndsTheRest_data() {
    QTest::addColumn<int>("step");
    QTest::newRow("one more") << 1;
    QTest::newRow("one less") << -1;
}

void FaceRestTest::anotherNumberOfBodiesEndsTheRest() {
    QFETCH(int, step);
    FedWorker fed;
    int bodies = tries;
    const auto setBodies = [&] {
        fed.worker.setBodyRegions(QList<QRect>(bodies, QRect(0, 0, 1, 1)));
    };
    setBodies();
    bool ended = false;
    for (int attempt = 0; attempt < tries && !ended; ++attempt) {
        QVERIFY(fed.waitForRest(2));
        bodies += step;
        QElapsedTimer sinceChange;
        sinceChange.start();
        setBodies();
        QVERIFY(fed.waitForResult());
        ended = sinceChange.elapsed() < 200;
    }
    QVERIFY(ended);
}

void FaceRestTest::aStopEndsTheRest() {
    bool ended = false;
    for (int attempt = 0; attempt < tries && !ended; ++attempt) {
        FedWorker fed;
        QVERIFY(fed.waitForRest(2));
        QElapsedTimer sinceStop;
        sinceStop.start();
        fed.worker.stop();
        QVERIFY(fed.worker.wait(longMs));
        ended = sinceStop.elapsed() < 200;
    }
    QVERIFY(ended);
}

/// An interruption, unlike a stop, wakes nobody: it is noticed when the wait for a frame ends.
void FaceRestTest::anIdleWorkerLooksForAnInterruptionFourTimesASecond() {
    bool inTime = false;
    for (int attempt = 0; attempt < tries && !inTime; ++attempt) {
        FaceRecognitionWorker worker(5000);
        QSemaphore result;
        connect(
            &worker, &FaceRecognitionWorker::overlaysReady, &worker,
            [&result] { result.release(); }, Qt::DirectConnection);
        worker.start();
        worker.submitFrame(emptyFrame());
        QVERIFY(result.tryAcquire(1, longMs));
        QElapsedTimer sinceWait; // It begins to wait for the next frame about now.
        sinceWait.start();
        QTest::qSleep(30); // Nothing tells that it waits.
        worker.requestInterruption();
        QVERIFY(worker.wait(longMs));
        inTime = sinceWait.elapsed() >= 240 && sinceWait.elapsed() < 270;
    }
    QVERIFY(inTime);
}

QTEST_GUILESS_MAIN(FaceRestTest)
#include "face_rest_test.moc"
