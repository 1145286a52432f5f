#include "record/recording_writer.h"

#include <exception>
#include <pthread.h>

namespace record {

using namespace Qt::StringLiterals;

/// A set until all its pictures are written.
struct RecordingWriter::Pending {
    FrameSet frames;
    std::int64_t number = 0;
    std::int64_t time = 0;
    std::int64_t colorTime = 0;
    // Under the mutex:
    int streamsLeft = 0;
    std::int64_t bytes = 0;
    bool failed = false;
};

/// The sets whose pictures of one stream are still to be written.
struct RecordingWriter::Queue {
    Stream stream;
    std::deque<std::shared_ptr<Pending>> sets;
};

RecordingWriter::RecordingWriter(RecordingFiles& recordingFiles, bool withColor, bool keepAllBits,
                                 int maxUnderWay)
    : files(recordingFiles), lossless(keepAllBits), capacity(maxUnderWay),
      streamCount(withColor ? 3 : 2) {
    for (const Stream stream : {Stream::Infrared, Stream::Depth, Stream::Color})
        if (stream != Stream::Color || withColor)
            queues.push_back(std::make_unique<Queue>(Queue{stream, {}}));
    for (const auto& queue : queues) {
        const int writers = queue->stream == Stream::Color && lossless ? 2 : 1;
        for (int writer = 0; writer < writers; ++writer)
            threads.emplace_back([this, &queue] { run(*queue); });
    }
}

RecordingWriter::~RecordingWriter() {
    finish();
}

bool RecordingWriter::add(FrameSet set, std::int64_t time, std::int64_t colorTime) {
    {
        const std::lock_guard lock(mutex);
        if (underWay >= capacity || !firstFailure.isEmpty()) {
            ++done.dropped;
            return false;
        }
        ++underWay;
        const auto pending = std::make_shared<Pending>(
            Pending{std::move(set), nextNumber++, time, colorTime, streamCount});
        for (const auto& queue : queues)
            queue->sets.push_back(pending);
    }
    work.notify_all();
    return true;
}

void RecordingWriter::finish() {
    {
        const std::lock_guard lock(mutex);
        finishing = true;
    }
    work.notify_all();
    for (std::thread& thread : threads)
        thread.join();
    threads.clear();
}

WriterCounts RecordingWriter::counts() const {
    const std::lock_guard lock(mutex);
    return done;
}

QString RecordingWriter::failure() const {
    const std::lock_guard lock(mutex);
    return firstFailure;
}

/// A writing thread.
void RecordingWriter::run(Queue& queue) {
    pthread_setname_np(pthread_self(), "record-writer"); // for whoever measures the process
    FrameEncoder encoder;
    for (;;) {
        std::shared_ptr<Pending> set;
        bool lost = false;
        {
            std::unique_lock lock(mutex);
            work.wait(lock, [&] { return finishing || !queue.sets.empty(); });
            if (queue.sets.empty())
                return;
            set = std::move(queue.sets.front());
            queue.sets.pop_front();
            lost = !firstFailure.isEmpty();
        }
        if (lost)
            streamDone(*set, 0, {});
        else
            writePicture(queue.stream, *set, encoder);
    }
}

void RecordingWriter::writePicture(Stream stream, Pending& set, FrameEncoder& encoder) {
    QString failed;
    qint64 written = 0;
    FramePixels& pixels = stream == Stream::Color      ? set.frames.color
                          : stream == Stream::Infrared ? set.frames.infrared
                                                       : set.frames.depth;
    try {
        const Bytes& bytes = stream != Stream::Color ? encoder.wholeUnits(pixels)
                             : lossless              ? encoder.png(pixels, set.frames.colorIsRgbx)
                                                     : encoder.jpeg(pixels, set.frames.colorIsRgbx);
        failed = files.writePicture(stream, set.number, bytes);
        written = static_cast<qint64>(bytes.size());
    } catch (const std::exception& error) {
        failed = u"A picture cannot be encoded: "_s + QString::fromUtf8(error.what());
    }
    pixels.data.reset(); // the sensor's memory goes back at once
    streamDone(set, written, failed);
}

/// One stream of a set is written, or lost when `failed` says why or another write failed before.
/// The last one makes the set part of the recording.
void RecordingWriter::streamDone(Pending& set, qint64 bytes, const QString& failed) {
    const std::lock_guard lock(mutex);
    set.bytes += bytes;
    set.failed = set.failed || bytes == 0 || !failed.isEmpty();
    if (firstFailure.isEmpty())
        firstFailure = failed;
    if (--set.streamsLeft > 0)
        return;
    --underWay;
    if (set.failed) {
        files.discard(set.number);
        ++done.dropped;
        return;
    }
    const QString incomplete = files.complete(set.number, set.time, set.colorTime);
    if (incomplete.isEmpty()) {
        ++done.sets;
        done.bytes += set.bytes;
        return;
    }
    ++done.dropped;
    if (firstFailure.isEmpty())
        firstFailure = incomplete;
}

} // namespace record
