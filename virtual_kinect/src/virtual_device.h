#pragma once

#include "delivery_thread.h"
#include "faults.h"
#include "frame_source.h"

#include <libfreenect2/libfreenect2.hpp>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

namespace virtual_kinect {

class BufferPool;

/// A device that delivers a source's frames when they are due: one thread renders them, one calls
/// the listener with colour, one with infrared and depth.
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

    /// Readings outside of it are none. In millimetres, both inclusive.
    struct DepthRange {
        float min_mm;
        float max_mm;
    };

    /// The delivery threads of one run, and the depth that is held back.
    struct Outlets {
        std::unique_ptr<DeliveryThread> color;
        std::unique_ptr<DeliveryThread> irAndDepth;
        std::deque<Delivery> lateDepth;
    };

    void endThread();
    void streamFrames(Listeners to, DepthRange range);
    bool waitUntil(std::chrono::steady_clock::time_point due);
    bool isSilent(std::uint64_t number) const;
    void deliverFrames(std::uint64_t number, Outlets& to, const DepthRange& range, FrameSet& set);
    template <typename Buffer>
    void addFrame(Delivery& delivery, libfreenect2::Frame::Type type, std::uint64_t number,
                  int width, int height, Buffer& buffer);

    // Constant:
    const std::shared_ptr<FrameSource> source;
    const Faults faults;
    const std::shared_ptr<std::atomic<bool>> unplugged;
    const std::function<void(VirtualDevice*)> destroyed;
    const std::shared_ptr<BufferPool> pool;

    // The caller's thread only:
    ColorCameraParams colorParams;
    IrCameraParams irParams;
    Config configuration;
    Listeners listeners;
    bool closed = false;
    std::thread thread;

    // Under the mutex:
    std::mutex mutex;
    std::condition_variable stopping;
    bool stopRequested = false;
};

} // namespace virtual_kinect
