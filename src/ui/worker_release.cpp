#include "ui/worker_release.h"

#include <QList>
#include <algorithm>

namespace {

/// Workers let go and not yet deleted. Itself never destroyed: it is asked after the last event
/// loop, and a worker may outlive everything else.
QList<QThread*>& lettingGo() {
    static auto* workers = new QList<QThread*>;
    return *workers;
}

} // namespace

void letWorkerGo(QThread* worker, const QObject* receiver) {
    worker->setParent(nullptr);
    QObject::disconnect(worker, nullptr, receiver, nullptr);
    lettingGo().append(worker);
    QObject::connect(worker, &QObject::destroyed, [worker] { lettingGo().removeOne(worker); });
    QObject::connect(worker, &QThread::finished, worker, &QObject::deleteLater);
    // It may have finished between the end of the wait and the connection.
    if (worker->isFinished())
        worker->deleteLater();
}

bool workersLetGoStillRun() {
    return std::ranges::any_of(lettingGo(),
                               [](QThread* worker) { return !worker->wait(QDeadlineTimer(0)); });
}
