#pragma once

#include "faults.h"
#include "frame_source.h"

#include <libfreenect2/libfreenect2.hpp>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

namespace virtual_kinect {

class BufferPool;

/// A device whose thread delivers a source's frames when they are due.
///
/// A frame is never delivered before its time. Where rendering or a listener takes longer than the
/// distance to the next frame, the frames that have become overdue are left out, so that the
/// numbers keep up with the clock instead of the frames coming in a burst.
class VirtualDevice : public libfreenect2::Freenect2Device {
public:
    /// `unplugged` is set when the device is pulled out; `onDestroyed` is called at the end.
    VirtualDevice(std::shared_ptr<FrameSource> source, Faults faults,
                  std::shared_ptr<std::atomic<bool>> unplugged,
                  std::function<void(VirtualDevice*)> onDestroyed);
    ~VirtualDevice() override;
    VirtualDevice(const VirtualDevice&) = delete;
    VirtualDevice& operator=(const VirtualDevice&) = delete;

    bool isClosed() const { return closed; }

    std::string getSerialNumber() override;
    std::string getFirmwareVersion() override;
    ColorCameraParams getColorCameraParams() override;
    IrCameraParams getIrCameraParams() override;
    void setColorCameraParams(const ColorCameraParams& params) override;
    void setIrCameraParams(const IrCameraParams& params) override;
    void setConfiguration(const Config& config) override;
    void setColorFrameListener(libfreenect2::FrameListener* listener) override;
    void setIrAndDepthFrameListener(libfreenect2::FrameListener* listener) override;
    bool start() override;
    bool startStreams(bool rgb, bool depth) override;
    bool stop() override;
    bool close() override;

private:
    struct Listeners {
        libfreenect2::FrameListener* color = nullptr;
        libfreenect2::FrameListener* irAndDepth = nullptr;
    };

    void endThread();
    void streamFrames(Listeners to);
    bool waitUntil(std::chrono::steady_clock::time_point due);
    bool isSilent(std::uint64_t number) const;
    void deliverFrames(std::uint64_t number, const Listeners& to, FrameSet& set);
    template <typename Buffer>
    void deliverFrame(libfreenect2::Frame::Type type, std::uint64_t number,
                      libfreenect2::FrameListener* to, int width, int height, Buffer& buffer);

    // Constant:
    const std::shared_ptr<FrameSource> source;
    const Faults faults;
    const std::shared_ptr<std::atomic<bool>> unplugged;
    const std::function<void(VirtualDevice*)> destroyed;
    const std::shared_ptr<BufferPool> pool;

    // The caller's thread only:
    ColorCameraParams colorParams;
    IrCameraParams irParams;
    Listeners listeners;
    bool closed = false;
    std::thread thread;

    // Under the mutex:
    std::mutex mutex;
    std::condition_variable stopping;
    bool stopRequested = false;
};

} // namespace virtual_kinect
