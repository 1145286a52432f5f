#include "app/worker_thread.h"

#include "support/log_capture.h"

#include <QElapsedTimer>
#include <QMutexLocker>
#include <QPointer>
#include <QSemaphore>
#include <QTest>

#include <atomic>
#include <memory>
#include <thread>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

/// How a run spends its time until it is stopped.
enum class Work {
    Waits, ///< For something to do.
    Works, ///< In pieces.
    Asks,  ///< In a function that only knows the stop token.
    Hangs  ///< And takes no notice of the stop, until the test lets it go on.
};

class TestWorker : public WorkerThread {
    Q_OBJECT

public:
    explicit TestWorker(Work work, QObject* parent = nullptr) : WorkerThread(parent), kind(work) {}
    ~TestWorker() override {
        goOn.release();
        endRun();
    }

    QSemaphore goOn;              ///< Ends a hang.
    QSemaphore begun;             ///< Released when a run has begun.
    std::atomic<int> wakeUps = 0; ///< Of a run that waits.
    std::atomic<bool> sawTheStop = false;

Q_SIGNALS:
    void ended();

protected:
    void run() override {
        begun.release();
        switch (kind) {
        case Work::Waits: {
            const QMutexLocker lock(&stopMutex);
            while (!stopRequested) {
                wakeUp.wait(&stopMutex); // without a bound: a lost call would be seen
                ++wakeUps;
            }
            break;
        }
        case Work::Works:
            while (!isStopRequested())
                std::this_thread::yield();
            break;
        case Work::Asks:
            for (const std::stop_token stop = stopToken(); !stop.stop_requested();)
                std::this_thread::yield();
            break;
        case Work::Hangs:
            goOn.acquire();
            break;
        }
        sawTheStop = isStopRequested() && stopToken().stop_requested();
        Q_EMIT ended();
    }

private:
    const Work kind;
};

class Listener : public QObject {
    Q_OBJECT

public:
    void hear() { ++heard; }
    int heard = 0;
};

} // namespace

/// How a worker's life ends.
class WorkerThreadTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { log = std::make_unique<LogCapture>(); }
    void cleanup() {
        QCOMPARE(log->warnings(), QStringList());
        log.reset();
        QVERIFY(!WorkerThread::anyLetGoStillRuns());
    }

    void stopBeforeTheStartIsNotForgotten_data() { stopEndsTheRun_data(); }
    void stopBeforeTheStartIsNotForgotten();
    void stopEndsTheRun_data();
    void stopEndsTheRun();
    void stopWhileAboutToWaitIsNotSleptThrough();
    void stopTwiceAndFromSeveralThreads();
    void stopIsFinal();
    void interruptionIsAStopToo();
    void stopDoesNotWait();

    void releaseTakesNoWorker();
    void releaseDeletesAWorkerThatEnds_data() { stopEndsTheRun_data(); }
    void releaseDeletesAWorkerThatEnds();
    void releaseDeletesAWorkerThatNeverRan();
    void releaseWaitsForItsBound();
    void aWorkerThatNeverAnswersIsLetGo();
    void aWorkerLetGoOutlivesItsParent();
    void aLocalWorkerWaitsForItsEnd();

private:
    std::unique_ptr<LogCapture> log;
};

void WorkerThreadTest::stopEndsTheRun_data() {
    QTest::addColumn<int>("work");
    QTest::newRow("idle") << int(Work::Waits);
    QTest::newRow("busy") << int(Work::Works);
    QTest::newRow("busy with a function that asks") << int(Work::Asks);
}

void WorkerThreadTest::stopEndsTheRun() {
    QFETCH(int, work);
    TestWorker worker{Work(work)};
    worker.start();
    worker.begun.acquire();
    worker.stop();
    QVERIFY(worker.wait(10'000));
    QVERIFY(worker.sawTheStop);
}

void WorkerThreadTest::stopBeforeTheStartIsNotForgotten() {
    QFETCH(int, work);
    TestWorker worker{Work(work)};
    worker.stop();
    worker.start();
    QVERIFY(worker.wait(10'000));
    QVERIFY(worker.sawTheStop);
}

void WorkerThreadTest::stopWhileAboutToWaitIsNotSleptThrough() {
    for (int round = 0; round < 50; ++round) {
        TestWorker worker{Work::Waits};
        worker.start();
        worker.begun.acquire(); // it is about to look at the request, or to wait, or waits
        worker.stop();
        QVERIFY(worker.wait(10'000));
        QVERIFY(worker.wakeUps <= 1);
    }
}

void WorkerThreadTest::stopTwiceAndFromSeveralThreads() {
    TestWorker worker{Work::Waits};
    worker.start();
    std::thread first([&worker] { worker.stop(); });
    std::thread second([&worker] { worker.stop(); });
    first.join();
    second.join();
    QVERIFY(worker.wait(10'000));
    worker.stop(); // and after the end
    QVERIFY(worker.sawTheStop);
}

void WorkerThreadTest::stopIsFinal() {
    TestWorker worker{Work::Works};
    for (int run = 0; run < 2; ++run) {
        worker.sawTheStop = false;
        worker.start();
        worker.stop();
        QVERIFY(worker.wait(10'000));
        QVERIFY(worker.sawTheStop);
    }
    worker.sawTheStop = false;
    worker.start(); // not stopped again
    QVERIFY(worker.wait(10'000));
    QVERIFY(worker.sawTheStop);
}

void WorkerThreadTest::interruptionIsAStopToo() {
    TestWorker worker{Work::Works};
    worker.start();
    worker.begun.acquire();
    QVERIFY(!worker.isInterruptionRequested());
    worker.requestInterruption();
    QVERIFY(worker.wait(10'000));

    TestWorker stopped{Work::Hangs};
    stopped.start();
    stopped.begun.acquire();
    stopped.stop();
    QVERIFY(stopped.isInterruptionRequested());
}

void WorkerThreadTest::stopDoesNotWait() {
    TestWorker worker{Work::Hangs};
    worker.start();
    worker.begun.acquire();
    worker.stop();
    QVERIFY(worker.isRunning());
}

void WorkerThreadTest::releaseTakesNoWorker() {
    WorkerThread::release(nullptr);
}

void WorkerThreadTest::releaseDeletesAWorkerThatEnds() {
    QFETCH(int, work);
    QObject parent;
    const QPointer<TestWorker> worker = new TestWorker(Work(work), &parent);
    worker->start();
    worker->begun.acquire();
    WorkerThread::release(worker);
    QVERIFY(!worker);
}

void WorkerThreadTest::releaseDeletesAWorkerThatNeverRan() {
    const QPointer<TestWorker> worker = new TestWorker(Work::Hangs);
    WorkerThread::release(worker, 0ms);
    QVERIFY(!worker);
}

void WorkerThreadTest::releaseWaitsForItsBound() {
    QCOMPARE(WorkerThread::stopBound, 3000ms);
    const QPointer<TestWorker> worker = new TestWorker(Work::Hangs);
    worker->start();
    QElapsedTimer timer;
    timer.start();
    WorkerThread::release(worker, 200ms);
    QVERIFY(timer.elapsed() >= 200);
    QVERIFY(worker); // it was not in time
    worker->goOn.release();
    QTRY_VERIFY(!worker);
}

void WorkerThreadTest::aWorkerThatNeverAnswersIsLetGo() {
    Listener listener;
    const QPointer<TestWorker> worker = new TestWorker(Work::Hangs, &listener);
    connect(worker, &TestWorker::ended, &listener, &Listener::hear);
    worker->start();
    worker->begun.acquire();
    WorkerThread::release(worker, 20ms);
    QVERIFY(worker);
    QVERIFY(worker->isInterruptionRequested());
    QVERIFY(!worker->parent());
    QVERIFY(WorkerThread::anyLetGoStillRuns());

    worker->goOn.release();
    QTRY_VERIFY(!worker); // its own end was the last that it did
    QCOMPARE(listener.heard, 0);
}

void WorkerThreadTest::aWorkerLetGoOutlivesItsParent() {
    QPointer<TestWorker> worker;
    {
        QObject parent;
        worker = new TestWorker(Work::Hangs, &parent);
        worker->start();
        WorkerThread::release(worker, 0ms);
    }
    QVERIFY(worker && worker->isRunning());
    worker->goOn.release();
    QTRY_VERIFY(!worker);
}

void WorkerThreadTest::aLocalWorkerWaitsForItsEnd() {
    std::atomic<bool> ended = false;
    {
        TestWorker worker{Work::Works};
        connect(
            &worker, &TestWorker::ended, &worker, [&ended] { ended = true; }, Qt::DirectConnection);
        worker.start();
        worker.begun.acquire();
    }
    QVERIFY(ended);
}

QTEST_GUILESS_MAIN(WorkerThreadTest)
#include "worker_thread_test.moc"
