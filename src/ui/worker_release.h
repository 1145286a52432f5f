#pragma once

#include <QDeadlineTimer>
#include <QThread>
#include <chrono>
#include <utility>

/// How long a stopping worker is waited for.
inline constexpr std::chrono::milliseconds workerPatience{3000};

/// Ends the ownership of a worker that was asked to stop and did not finish in time. Destroying a
/// running thread would end the process, so the worker is taken out of its parent's tree, its
/// connections to `receiver` are cut, and it is left to delete itself when it finishes. Call on the
/// thread that the worker object lives on.
void letWorkerGo(QThread* worker, const QObject* receiver);

/// Whether a worker that was let go still runs. While one does, the process must not run its static
/// destructors, which would pull the ground from under the worker.
bool workersLetGoStillRun();

/// Stops a worker, waits for it at most `patience`, deletes it or lets it go, and clears the
/// pointer; does nothing for a null pointer.
template <class Worker>
void releaseWorker(Worker*& worker, const QObject* receiver,
                   std::chrono::milliseconds patience = workerPatience) {
    if (!worker)
        return;
    Worker* leaving = std::exchange(worker, nullptr);
    leaving->stop();
    if (leaving->wait(QDeadlineTimer(patience)))
        delete leaving;
    else
        letWorkerGo(leaving, receiver);
}
