#include "app/worker_thread.h"

#include <QDeadlineTimer>
#include <QList>
#include <QMutexLocker>

#include <algorithm>

namespace {

/// Workers let go and not yet deleted. Never destroyed itself: it is asked after the last event
/// loop, and a worker may outlive everything else.
QList<QThread*>& workersLetGo() {
    static auto* const workers = new QList<QThread*>;
    return *workers;
}

} // namespace

WorkerThread::WorkerThread(QObject* parent) : QThread(parent) {}

WorkerThread::~WorkerThread() {
    endRun();
}

void WorkerThread::stop() {
    stopSource.request_stop();
    {
        const QMutexLocker lock(&stopMutex);
        stopRequested = true;
        wakeUp.wakeAll();
    }
    requestInterruption();
}

bool WorkerThread::isStopRequested() {
    if (isInterruptionRequested())
        return true;
    const QMutexLocker lock(&stopMutex);
    return stopRequested;
}

void WorkerThread::endRun() {
    stop();
    wait();
}

void WorkerThread::release(WorkerThread* worker, std::chrono::milliseconds bound) {
    if (worker == nullptr)
        return;
    worker->stop();
    if (worker->wait(QDeadlineTimer(bound))) {
        delete worker;
        return;
    }
    worker->setParent(nullptr);
    worker->disconnect();
    workersLetGo().append(worker);
    connect(worker, &QObject::destroyed, [worker] { workersLetGo().removeOne(worker); });
    connect(worker, &QThread::finished, worker, &QObject::deleteLater);
    // It may have finished between the end of the wait and the connection.
    if (worker->isFinished())
        worker->deleteLater();
}

bool WorkerThread::anyLetGoStillRuns() {
    return std::ranges::any_of(workersLetGo(),
                               [](QThread* worker) { return !worker->wait(QDeadlineTimer(0)); });
}
