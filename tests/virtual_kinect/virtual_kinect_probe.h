#pragma once

#include <libfreenect2/frame_listener.hpp>
#include <libfreenect2/logger.h>

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

/// Attaches a virtual device, with faults, while it lives.
class AttachedDevice {
public:
    explicit AttachedDevice(const QString& what, const QByteArray& faults = {});
    ~AttachedDevice();
    AttachedDevice(const AttachedDevice&) = delete;
    AttachedDevice& operator=(const AttachedDevice&) = delete;
};

/// Collects the sensor library's log lines while it lives.
class SensorLog {
public:
    SensorLog();
    ~SensorLog();
    SensorLog(const SensorLog&) = delete;
    SensorLog& operator=(const SensorLog&) = delete;

    /// The lines of the error level so far, oldest first.
    QStringList errors() const;
    /// All lines so far, oldest first, without the mark of the stand-in.
    QStringList steps() const;

private:
    struct Lines {
        std::mutex mutex;
        QStringList errors;
        QStringList all;
    };
    class Collector;
    std::shared_ptr<Lines> lines;
};

/// What came of one frame.
struct SeenFrame {
    libfreenect2::Frame::Type type = libfreenect2::Frame::Color;
    std::size_t width = 0;
    std::size_t height = 0;
    std::size_t bytesPerPixel = 0;
    libfreenect2::Frame::Format format = libfreenect2::Frame::Invalid;
    std::uint32_t number = 0;
    std::chrono::microseconds due{0};                ///< by its time stamp
    std::chrono::steady_clock::time_point arrived{}; ///< by the clock
    std::thread::id thread{};                        ///< that called the listener
    QByteArray data;                                 ///< null when the frame had none
};

/// A listener that notes every frame and keeps none.
class FrameNotes : public libfreenect2::FrameListener {
public:
    /// `whileFrame` is called for each frame, on the thread that delivers it.
    explicit FrameNotes(std::function<void(libfreenect2::Frame::Type)> whileFrame = {});

    bool onNewFrame(libfreenect2::Frame::Type type, libfreenect2::Frame* frame) override;

    std::vector<SeenFrame> seen() const;
    std::vector<SeenFrame> seen(libfreenect2::Frame::Type type) const;
    /// Waits until a frame of the stream with at least this number came. Returns false when none
    /// came within ten seconds.
    bool waitFor(libfreenect2::Frame::Type type, std::uint32_t number) const;

private:
    std::function<void(libfreenect2::Frame::Type)> during;
    mutable std::mutex mutex;
    std::vector<SeenFrame> frames;
};
