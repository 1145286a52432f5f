#include "virtual_kinect_probe.h"

#include <QTest>

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;
using libfreenect2::Frame;
using libfreenect2::Logger;

namespace {
constexpr const char* deviceVariable = "LUMENO_VIRTUAL_KINECT";
constexpr const char* faultsVariable = "LUMENO_VIRTUAL_KINECT_FAULTS";
} // namespace

AttachedDevice::AttachedDevice(const QString& what, const QByteArray& faults) {
    qputenv(deviceVariable, what.toLocal8Bit());
    qputenv(faultsVariable, faults);
}

AttachedDevice::~AttachedDevice() {
    qunsetenv(deviceVariable);
    qunsetenv(faultsVariable);
}

class SensorLog::Collector : public Logger {
public:
    explicit Collector(std::shared_ptr<Lines> to) : lines(std::move(to)) {}

    void log(Level level, const std::string& message) override {
        const std::lock_guard lock(lines->mutex);
        const QString text = QString::fromStdString(message);
        lines->all.append(QString(text).remove(u"[virtual kinect] "_s));
        if (level == Error)
            lines->errors.append(text);
    }

private:
    std::shared_ptr<Lines> lines;
};

SensorLog::SensorLog() : lines(std::make_shared<Lines>()) {
    libfreenect2::setGlobalLogger(new Collector(lines));
}

SensorLog::~SensorLog() {
    libfreenect2::setGlobalLogger(libfreenect2::createConsoleLoggerWithDefaultLevel());
}

QStringList SensorLog::errors() const {
    const std::lock_guard lock(lines->mutex);
    return lines->errors;
}

QStringList SensorLog::steps() const {
    const std::lock_guard lock(lines->mutex);
    return lines->all;
}

FrameNotes::FrameNotes(std::function<void(Frame::Type)> whileFrame)
    : during(std::move(whileFrame)) {}

bool FrameNotes::onNewFrame(Frame::Type type, Frame* frame) {
    SeenFrame note;
    note.type = type;
    note.width = frame->width;
    note.height = frame->height;
    note.bytesPerPixel = frame->bytes_per_pixel;
    note.format = frame->format;
    note.number = frame->sequence;
    note.due = std::chrono::microseconds(125) * frame->timestamp;
    note.arrived = std::chrono::steady_clock::now();
    note.thread = std::this_thread::get_id();
    if (frame->data != nullptr)
        note.data = QByteArray(
            reinterpret_cast<const char*>(frame->data),
            static_cast<qsizetype>(frame->width * frame->height * frame->bytes_per_pixel));
    {
        const std::lock_guard lock(mutex);
        frames.push_back(std::move(note));
    }
    if (during)
        during(type);
    return false;
}

std::vector<SeenFrame> FrameNotes::seen() const {
    const std::lock_guard lock(mutex);
    return frames;
}

std::vector<SeenFrame> FrameNotes::seen(Frame::Type type) const {
    const auto all = seen();
    std::vector<SeenFrame> some;
    std::copy_if(all.begin(), all.end(), std::back_inserter(some),
                 [&](const SeenFrame& note) { return note.type == type; });
    return some;
}

bool FrameNotes::waitFor(Frame::Type type, std::uint32_t number) const {
    return QTest::qWaitFor(
        [&] {
            const std::lock_guard lock(mutex);
            return std::any_of(frames.rbegin(), frames.rend(), [&](const SeenFrame& note) {
                return note.type == type && note.number >= number;
            });
        },
        10'000);
}
