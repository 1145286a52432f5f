#pragma once

#include "record/frame_set.h"
#include "record/recording_files.h"
#include "record/time_line.h"

#include <QString>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace record {

/// What has come to the files so far.
struct WriterCounts {
    std::int64_t sets = 0;    ///< complete ones
    std::int64_t dropped = 0; ///< sets for which there was no room, or that a failure took
    std::int64_t bytes = 0;   ///< of the pictures
};

/// Writes frame sets with threads of its own: one for each stream, and two for colour that is kept
/// without loss, which costs most of a processor's core otherwise.
///
/// At most `capacity` sets are under way. One that comes when there is no room is dropped whole, so
/// that the streams stay together, and counted. After the first failure to write nothing more is
/// taken.
class RecordingWriter {
public:
    /// One second of a sensor's sets, some 300 MB.
    static constexpr int defaultCapacity = 30;

    /// `files` must have begun and outlive this object.
    RecordingWriter(RecordingFiles& files, bool withColor, bool lossless,
                    int capacity = defaultCapacity);
    /// Ends like finish().
    ~RecordingWriter();
    RecordingWriter(const RecordingWriter&) = delete;
    RecordingWriter& operator=(const RecordingWriter&) = delete;

    /// Takes a set that belongs at that time (eighths of a millisecond since the first one). False
    /// when it was dropped. Called by one thread.
    bool add(FrameSet set, std::int64_t time, std::int64_t colorTime);
    /// Writes what is under way and ends the threads.
    void finish();

    WriterCounts counts() const;
    /// What went wrong first; empty when nothing did.
    QString failure() const;

private:
    struct Pending;
    struct Queue;

    void run(Queue& queue);
    void writePicture(Stream stream, Pending& set, FrameEncoder& encoder);
    void streamDone(Pending& set, qint64 bytes, const QString& failed);

    RecordingFiles& files;
    const bool lossless;
    const int capacity;
    const int streamCount;

    mutable std::mutex mutex;
    std::condition_variable work;
    // Under the mutex:
    std::vector<std::unique_ptr<Queue>> queues;
    int underWay = 0;
    bool finishing = false;
    QString firstFailure;
    WriterCounts done;

    std::int64_t nextNumber = 0; ///< The adding thread's.
    std::vector<std::thread> threads;
};

} // namespace record
