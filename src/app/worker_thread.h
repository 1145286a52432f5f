#pragma once

#include <QMutex>
#include <QThread>
#include <QWaitCondition>

#include <chrono>
#include <stop_token>

/// A thread that works until it is stopped, and the one way to end it.
///
/// Contract:
/// - stop() asks the run to end and returns at once. It is final, and may be called from any
/// thread,
///   before the start, while the run waits or works, twice, and after the end. A worker that was
///   stopped before its start runs only as far as its first look at the request.
/// - The request is made under `stopMutex`, and wakes whoever waits for `wakeUp`, so that a run
///   which checks it under that mutex before it waits never sleeps through it.
/// - release() ends the owner's interest: the run is asked to stop, waited for at most `stopBound`,
///   and deleted. One that has not ended by then, because a library that it uses hangs, is let go:
///   it has no parent and no receivers any more, and deletes itself if its run ever ends.
///   Destroying a thread that runs would end the process.
/// - A worker that is not released is destroyed like any other object, for example as a local
///   variable. There is no way out then: its destructor stops the run and waits for its end,
///   however long that takes.
///
/// What derives from it calls endRun() in its destructor, while the members that the run uses still
/// exist; looks at isStopRequested() between the pieces of its work; hands stopToken() to functions
/// that only have to know whether to go on; and lets no exception leave run().
class WorkerThread : public QThread {
    Q_OBJECT

public:
    /// How long release() waits.
    static constexpr std::chrono::milliseconds stopBound{3000};

    explicit WorkerThread(QObject* parent = nullptr);
    ~WorkerThread() override;

    void stop();

    /// See above; nothing happens for a null pointer. To be called on the thread on which the
    /// worker object lives. `bound` is for tests.
    static void release(WorkerThread* worker, std::chrono::milliseconds bound = stopBound);

    /// Whether a worker that was let go still runs. While one does, the process must not destroy
    /// its static objects, which that worker may use.
    static bool anyLetGoStillRuns();

protected:
    /// Whether stop() was called, or QThread's own requestInterruption().
    bool isStopRequested();
    std::stop_token stopToken() const { return stopSource.get_token(); }
    /// Stops the run and waits for its end without a bound.
    void endRun();

    // The mutex guards the flag, and whatever else a derived class hands to its run.
    QMutex stopMutex;
    QWaitCondition wakeUp;
    bool stopRequested = false;

private:
    std::stop_source stopSource;
};
