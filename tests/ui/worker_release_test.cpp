#include "ui/worker_release.h"

#include <QPointer>
#include <QSemaphore>
#include <QTest>

using namespace std::chrono_literals;

/// A worker that runs until it is stopped and, when told to hang, until the test says so.
class FakeWorker : public QThread {
    Q_OBJECT

public:
    explicit FakeWorker(QObject* parent, bool hanging = false) : QThread(parent), hangs(hanging) {}
    ~FakeWorker() override {
        unhang.release();
        wait();
    }
    void stop() {
        ++stops;
        stopped.release();
    }
    void run() override {
        stopped.acquire();
        if (hangs)
            unhang.acquire();
        Q_EMIT said();
    }

    int stops = 0;
    QSemaphore unhang;

Q_SIGNALS:
    void said();

private:
    const bool hangs;
    QSemaphore stopped;
};

class Listener : public QObject {
    Q_OBJECT

public:
    void hear() { ++heard; }
    int heard = 0;
};

class WorkerReleaseTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void nothingHappensWithoutAWorker();
    void aWorkerThatStopsInTimeIsDeleted();
    void aWorkerThatNeverRanIsDeleted();
    void aHangingWorkerIsLetGoAndDeletesItselfWhenItFinishes();
    void aHangingWorkerOutlivesItsParent();
};

void WorkerReleaseTest::nothingHappensWithoutAWorker() {
    FakeWorker* none = nullptr;
    releaseWorker(none, this, 0ms);
    QVERIFY(!none);
}

void WorkerReleaseTest::aWorkerThatStopsInTimeIsDeleted() {
    QObject parent;
    auto* worker = new FakeWorker(&parent);
    const QPointer<FakeWorker> watched(worker);
    worker->start();
    releaseWorker(worker, this);
    QVERIFY(!worker);
    QVERIFY(!watched);
    QVERIFY(!workersLetGoStillRun());
}

void WorkerReleaseTest::aWorkerThatNeverRanIsDeleted() {
    auto* worker = new FakeWorker(nullptr, true);
    const QPointer<FakeWorker> watched(worker);
    releaseWorker(worker, this, 0ms);
    QVERIFY(!worker && !watched);
}

void WorkerReleaseTest::aHangingWorkerIsLetGoAndDeletesItselfWhenItFinishes() {
    Listener listener;
    auto* worker = new FakeWorker(&listener, true);
    const QPointer<FakeWorker> watched(worker);
    connect(worker, &FakeWorker::said, &listener, &Listener::hear);
    worker->start();
    releaseWorker(worker, &listener, 20ms);
    QVERIFY(!worker);
    QVERIFY(watched);
    QCOMPARE(watched->stops, 1);
    QVERIFY(!watched->parent());
    QVERIFY(workersLetGoStillRun());

    watched->unhang.release();
    QTRY_VERIFY(!watched);
    QVERIFY(!workersLetGoStillRun());
    QCOMPARE(listener.heard, 0);
}

void WorkerReleaseTest::aHangingWorkerOutlivesItsParent() {
    QPointer<FakeWorker> watched;
    {
        QObject parent;
        auto* worker = new FakeWorker(&parent, true);
        watched = worker;
        worker->start();
        releaseWorker(worker, &parent, 0ms);
    }
    QVERIFY(watched && watched->isRunning());
    watched->unhang.release();
    QTRY_VERIFY(!watched);
}

QTEST_GUILESS_MAIN(WorkerReleaseTest)
#include "worker_release_test.moc"
