#include "record/recorder.h"

#include "common/command_line.h"
#include "kinect/sensor_session.h"

#include <QFile>

#include <exception>
#include <filesystem>
#include <utility>

namespace record {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using libfreenect2::Frame;
using Clock = tool::Console::Clock;

namespace {

constexpr std::int64_t stampsPerSecond = 8000;
/// By then the colour camera has found its exposure.
constexpr std::int64_t setsBeforeMoment = 30;
/// How soon a stop is noticed while nothing comes.
constexpr auto longestWait = 250ms;
constexpr auto lookDistance = 1s;
/// A larger gap between sequence numbers is a sensor that started anew.
constexpr std::uint32_t largestGap = 9000;

QString megabytes(std::int64_t bytes) {
    return QString::number(static_cast<double>(bytes) / 1e6, 'f', 1) + u" MB"_s;
}

QString gigabytes(std::int64_t bytes) {
    return QString::number(static_cast<double>(bytes) / 1e9, 'f', 1) + u" GB"_s;
}

QString textOf(const SensorFailure& failure) {
    const QString because =
        failure.exception.isEmpty() ? QString() : u" ("_s + failure.exception + u')';
    switch (failure.step) {
    case SensorFailure::Step::Enumerate:
        return u"no Kinect v2 was found"_s + because;
    case SensorFailure::Step::Open:
        return u"the Kinect does not open; another program may be using it"_s + because;
    case SensorFailure::Step::Start:
        break;
    }
    return u"the Kinect's streams do not start"_s + because;
}

/// Takes one frame out of a set; no data when it cannot be recorded.
FramePixels takePixels(libfreenect2::FrameMap& set, Frame::Type type) {
    const auto found = set.find(type);
    if (found == set.end())
        return {};
    // Frames of either library are their holder's to delete.
    const std::shared_ptr<Frame> frame(found->second);
    set.erase(found);
    if (!frame || frame->data == nullptr || frame->width == 0 || frame->height == 0 ||
        frame->bytes_per_pixel != 4 || frame->status != 0)
        return {};
    return {{frame, frame->data}, static_cast<int>(frame->width), static_cast<int>(frame->height)};
}

bool sameSize(const FramePixels& some, const FramePixels& others) {
    return some.width == others.width && some.height == others.height;
}

} // namespace

/// Why a recording ends.
struct Recorder::Ending {
    bool asWished = false;
    QString why; ///< for recording.json, and for a complaint when it is not as wished
};

Recorder::Recorder(const RecordingOptions& recordingOptions, tool::Console& toolConsole,
                   std::function<bool()> isStopped)
    : options(recordingOptions), console(toolConsole), stopped(std::move(isStopped)),
      files(options.folder, !options.withColor ? std::nullopt
                            : options.lossless ? std::optional(u"png"_s)
                                               : std::optional(u"jpg"_s)) {
    summary.withColor = options.withColor;
    summary.lossless = options.lossless;
}

int Recorder::run() {
    if (const QString failure = files.begin(); !failure.isEmpty()) {
        console.complain(failure);
        return tool::Failed;
    }
    lookAtDisk();
    if (isDiskNearlyFull()) {
        files.removeAll();
        console.complain(u"Only %1 are free on the disk, and %2 must stay free."_s.arg(
            gigabytes(freeBytes), gigabytes(options.keepFreeBytes)));
        return tool::Failed;
    }
    SensorSession session;
    if (const auto failure = session.start(options.withColor)) {
        files.removeAll();
        console.complain(u"Nothing was recorded: "_s + textOf(*failure) + u'.');
        return tool::Failed; // the session's end closes the device, which can take seconds
    }
    return recordFrom(session);
}

int Recorder::recordFrom(SensorSession& session) {
    device.serial = QString::fromStdString(session.device().getSerialNumber());
    device.firmware = QString::fromStdString(session.device().getFirmwareVersion());
    device.infrared = session.device().getIrCameraParams();
    device.color = session.device().getColorCameraParams();

    Ending ending;
    QString failure = files.writeText(u"calibration.json"_s, describeCalibration(device));
    if (failure.isEmpty())
        failure = files.writeText(u"recording.json"_s, describeRecording(device, summary));
    if (failure.isEmpty()) {
        RecordingWriter writer(files, options.withColor, options.lossless);
        ending = takeSets(session, writer);
        // Before the device is closed, since some of its frames use its memory.
        writer.finish();
        summary.counts = writer.counts();
        failure = writer.failure();
    }
    if (!failure.isEmpty())
        ending = {false, failure};
    return report(ending);
}

Recorder::Ending Recorder::takeSets(SensorSession& session, RecordingWriter& writer) {
    auto newestSet = Clock::now();
    nextLook = newestSet + lookDistance;
    try {
        for (;;) {
            if (stopped())
                return {true, u"it was stopped"_s};
            if (const QString failure = writer.failure(); !failure.isEmpty())
                return {false, failure};
            if (session.wait(longestWait)) {
                newestSet = Clock::now();
                if (takeSet(session.take(), writer))
                    return {true,
                            options.moment ? u"the moment was taken"_s : u"the time was up"_s};
            } else if (Clock::now() - newestSet >= options.patience) {
                return {false, u"the sensor sent nothing for %1 s"_s.arg(options.patience.count())};
            }
            if (Clock::now() < nextLook)
                continue;
            nextLook += lookDistance;
            lookAtDisk();
            showProgress(writer);
            if (isDiskNearlyFull())
                return {false, u"only %1 are left on the disk"_s.arg(gigabytes(freeBytes))};
        }
    } catch (const std::exception& error) {
        return {false, u"the sensor's library failed: "_s + QString::fromUtf8(error.what())};
    }
}

/// Hands a set to the writer. True when it was the last one, or came after that.
bool Recorder::takeSet(libfreenect2::FrameMap frames, RecordingWriter& writer) {
    const std::int64_t missed = missedBefore(frames);
    const std::optional<FrameSet> set = usableSet(frames);
    if (options.moment && setsSeen++ < setsBeforeMoment)
        return false;
    if (!set) {
        summary.missed += missed;
        ++summary.unusable;
        return false;
    }
    const std::int64_t time = times.advance(set->stamp);
    if (options.length && time >= options.length->count() * stampsPerSecond)
        return true;
    summary.missed += missed;
    if (!summary.firstFrame.isValid()) {
        summary.firstFrame = QDateTime::currentDateTimeUtc();
        summary.firstSequence = newestSequence.value_or(0);
    }
    newestTime = time;
    writer.add(*set, time, times.beside(set->colorStamp));
    return options.moment;
}

/// How many sets the sensor numbered between the newest one and this.
std::int64_t Recorder::missedBefore(const libfreenect2::FrameMap& frames) {
    const auto depth = frames.find(Frame::Depth);
    if (depth == frames.end() || depth->second == nullptr)
        return 0;
    const std::uint32_t sequence = depth->second->sequence;
    const std::uint32_t gap = sequence - newestSequence.value_or(sequence - 1) - 1;
    newestSequence = sequence;
    return gap <= largestGap ? gap : 0;
}

/// The set as it is recorded; nothing when a frame is missing, broken or of another size than those
/// before, since all pictures of a recording have one size.
std::optional<FrameSet> Recorder::usableSet(libfreenect2::FrameMap& frames) {
    FrameSet set;
    const auto depth = frames.find(Frame::Depth);
    if (depth != frames.end() && depth->second != nullptr)
        set.stamp = set.colorStamp = depth->second->timestamp;
    const auto color = frames.find(Frame::Color);
    if (color != frames.end() && color->second != nullptr) {
        set.colorStamp = color->second->timestamp;
        set.colorIsRgbx = color->second->format == Frame::RGBX;
    }
    set.depth = takePixels(frames, Frame::Depth);
    set.infrared = takePixels(frames, Frame::Ir);
    set.color = takePixels(frames, Frame::Color);
    if (!set.depth.data || !set.infrared.data || (options.withColor && !set.color.data) ||
        !sameSize(set.depth, set.infrared))
        return std::nullopt;
    if (!colorSize) {
        colorSize = {nullptr, set.color.width, set.color.height};
        depthSize = {nullptr, set.depth.width, set.depth.height};
    }
    if (!sameSize(set.color, *colorSize) || !sameSize(set.depth, depthSize))
        return std::nullopt;
    return set;
}

void Recorder::lookAtDisk() {
    // QStorageInfo knows mounted volumes only; a system in a folder (chroot) may have none.
    std::error_code error;
    const auto space =
        std::filesystem::space(QFile::encodeName(options.folder).toStdString(), error);
    freeBytes = error ? -1 : static_cast<qint64>(space.available);
}

bool Recorder::isDiskNearlyFull() const {
    return freeBytes >= 0 && freeBytes < options.keepFreeBytes; // negative: the folder is gone
}

QString Recorder::figures(const WriterCounts& counts) const {
    QString text = u"%1 s, %2 sets, %3 dropped, "_s
                       .arg(static_cast<double>(newestTime) / stampsPerSecond, 0, 'f', 1)
                       .arg(counts.sets)
                       .arg(counts.dropped);
    if (summary.missed > 0)
        text += u"%1 missed, "_s.arg(summary.missed);
    if (summary.unusable > 0)
        text += u"%1 unusable, "_s.arg(summary.unusable);
    return text + megabytes(counts.bytes);
}

void Recorder::showProgress(const RecordingWriter& writer) {
    console.progress(figures(writer.counts()) + u", "_s + gigabytes(freeBytes) + u" free"_s);
}

/// Finishes the folder and says what is in it.
int Recorder::report(const Ending& ending) {
    if (summary.counts.sets == 0) {
        files.removeAll();
        console.complain(u"Nothing was recorded: "_s + ending.why + u'.');
        return tool::Failed;
    }
    summary.repairedTimes = times.repaired();
    summary.end = ending.why;
    files.releaseReserve();
    const QString failure =
        files.writeText(u"recording.json"_s, describeRecording(device, summary));
    console.say(u"%1: %2"_s.arg(options.folder, figures(summary.counts)));
    if (!ending.asWished)
        console.complain(u"The recording ended early: "_s + ending.why + u'.');
    if (!failure.isEmpty())
        console.complain(failure);
    return ending.asWished && failure.isEmpty() ? tool::Succeeded : tool::Failed;
}

} // namespace record
