#pragma once

#include "common/console.h"
#include "record/recording_description.h"
#include "record/recording_writer.h"
#include "record/time_line.h"

#include <libfreenect2/frame_listener_impl.h>

#include <QString>

#include <chrono>
#include <functional>
#include <optional>

class SensorSession;

namespace record {

/// What the person wants.
struct RecordingOptions {
    QString folder;
    std::optional<std::chrono::seconds> length; ///< without it until somebody stops it
    bool moment = false;                        ///< a single set
    bool withColor = true;
    bool lossless = false;
    std::int64_t keepFreeBytes = 0;   ///< ends when less is left on the disk
    std::chrono::seconds patience{0}; ///< ends when the sensor sends nothing for so long
};

/// Records from the first sensor until one of the ends comes: what was asked for is done, `stopped`
/// says so, the disk is nearly full, a file cannot be written, or the sensor is silent. The folder
/// then holds all sets so far; without any it is left as it was found.
class Recorder {
public:
    Recorder(const RecordingOptions& options, tool::Console& console,
             std::function<bool()> stopped);

    /// Returns the status to end with: tool::Succeeded when what was asked for was done or the
    /// person stopped it and there is something to play, else tool::Failed after a complaint.
    int run();

private:
    struct Ending;

    int recordFrom(SensorSession& session);
    Ending takeSets(SensorSession& session, RecordingWriter& writer);
    bool takeSet(libfreenect2::FrameMap frames, RecordingWriter& writer);
    std::int64_t missedBefore(const libfreenect2::FrameMap& frames);
    std::optional<FrameSet> usableSet(libfreenect2::FrameMap& frames);
    void lookAtDisk();
    bool isDiskNearlyFull() const;
    QString figures(const WriterCounts& counts) const;
    void showProgress(const RecordingWriter& writer);
    int report(const Ending& ending);

    const RecordingOptions options;
    tool::Console& console;
    const std::function<bool()> stopped;
    RecordingFiles files;

    RecordedDevice device;
    RecordingSummary summary;
    TimeLine times;
    std::int64_t newestTime = 0;          ///< of a set that was taken, eighths of a millisecond
    std::int64_t setsSeen = 0;            ///< before a moment is taken
    std::optional<FramePixels> colorSize; ///< of the first usable set, without data
    FramePixels depthSize;
    std::optional<std::uint32_t> newestSequence;
    std::int64_t freeBytes = 0;                ///< on the folder's disk, when it was last looked at
    tool::Console::Clock::time_point nextLook; ///< at the disk, and for progress
};

} // namespace record
