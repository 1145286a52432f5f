#include "virtual_device.h"

#include "buffer_pool.h"
#include "log.h"

#include <exception>
#include <pthread.h>

namespace virtual_kinect {

namespace {

using libfreenect2::Frame;
using libfreenect2::Logger;
using std::chrono::steady_clock;

/// Sensor time stamps count eighths of a millisecond.
constexpr std::chrono::microseconds timestampUnit{125};

/// After a frame that cannot be rendered, no complaint about the next ones for this long.
constexpr std::chrono::seconds complaintDistance{1};

/// A frame whose memory goes back to a pool.
template <typename Buffer>
class PooledFrame : public Frame {
public:
    PooledFrame(int frameWidth, int frameHeight, Buffer frameBuffer,
                std::shared_ptr<BufferPool> frameOrigin)
        : Frame(static_cast<std::size_t>(frameWidth), static_cast<std::size_t>(frameHeight), 4,
                reinterpret_cast<unsigned char*>(frameBuffer.data())),
          buffer(std::move(frameBuffer)), origin(std::move(frameOrigin)) {}
    ~PooledFrame() override { origin->giveBack(std::move(buffer)); }

private:
    Buffer buffer;
    std::shared_ptr<BufferPool> origin;
};

/// Typical values of a sensor; the field of view of the pictures is about the same.
libfreenect2::Freenect2Device::ColorCameraParams typicalColorCamera() {
    libfreenect2::Freenect2Device::ColorCameraParams params{};
    params.fx = params.fy = 1081.37F;
    params.cx = 959.5F;
    params.cy = 539.5F;
    return params;
}

libfreenect2::Freenect2Device::IrCameraParams typicalIrCamera() {
    libfreenect2::Freenect2Device::IrCameraParams params{};
    params.fx = params.fy = 365.5F;
    params.cx = 255.5F;
    params.cy = 211.5F;
    return params;
}

void exchangeRedAndBlue(std::vector<std::uint8_t>& pixels) {
    for (std::size_t at = 0; at + 2 < pixels.size(); at += 4)
        std::swap(pixels[at], pixels[at + 2]);
}

} // namespace

VirtualDevice::VirtualDevice(std::shared_ptr<FrameSource> frameSource, Faults deviceFaults,
                             std::shared_ptr<std::atomic<bool>> unpluggedFlag,
                             std::function<void(VirtualDevice*)> onDestroyed)
    : source(std::move(frameSource)), faults(std::move(deviceFaults)),
      unplugged(std::move(unpluggedFlag)), destroyed(std::move(onDestroyed)),
      pool(std::make_shared<BufferPool>()), colorParams(typicalColorCamera()),
      irParams(typicalIrCamera()) {}

VirtualDevice::~VirtualDevice() {
    endThread();
    destroyed(this);
}

std::string VirtualDevice::getSerialNumber() {
    return source->serialNumber();
}

std::string VirtualDevice::getFirmwareVersion() {
    return "virtual";
}

libfreenect2::Freenect2Device::ColorCameraParams VirtualDevice::getColorCameraParams() {
    return colorParams;
}

libfreenect2::Freenect2Device::IrCameraParams VirtualDevice::getIrCameraParams() {
    return irParams;
}

void VirtualDevice::setColorCameraParams(const ColorCameraParams& params) {
    colorParams = params;
}

void VirtualDevice::setIrCameraParams(const IrCameraParams& params) {
    irParams = params;
}

void VirtualDevice::setConfiguration(const Config&) {}

void VirtualDevice::setColorFrameListener(libfreenect2::FrameListener* listener) {
    listeners.color = listener;
}

void VirtualDevice::setIrAndDepthFrameListener(libfreenect2::FrameListener* listener) {
    listeners.irAndDepth = listener;
}

bool VirtualDevice::start() {
    return startStreams(true, true);
}

bool VirtualDevice::startStreams(bool rgb, bool depth) {
    const char* refusal = nullptr;
    if (closed)
        refusal = "the device is closed";
    else if (thread.joinable())
        refusal = "the streams run already";
    else if (*unplugged)
        refusal = "the device is unplugged";
    else if (faults.startFails)
        refusal = "start-fails is among the faults";
    if (refusal != nullptr) {
        log(Logger::Error, std::string("cannot start: ") + refusal);
        return false;
    }
    stopRequested = false;
    thread = std::thread(
        &VirtualDevice::streamFrames, this,
        Listeners{rgb ? listeners.color : nullptr, depth ? listeners.irAndDepth : nullptr});
    return true;
}

bool VirtualDevice::stop() {
    if (!thread.joinable()) {
        log(Logger::Info, "stop: the streams are not running");
        return false;
    }
    std::this_thread::sleep_for(faults.slowStop);
    endThread();
    if (*unplugged)
        log(Logger::Error, "stop: the device is unplugged");
    return !*unplugged;
}

bool VirtualDevice::close() {
    if (thread.joinable())
        stop();
    closed = true;
    return true;
}

void VirtualDevice::endThread() {
    if (!thread.joinable())
        return;
    {
        const std::lock_guard lock(mutex);
        stopRequested = true;
    }
    stopping.notify_all();
    thread.join();
}

/// The device's thread.
void VirtualDevice::streamFrames(Listeners to) {
    pthread_setname_np(pthread_self(), "virtual-sensor"); // not its starter's name, when measured
    const auto began = steady_clock::now();
    auto nextComplaint = began;
    FrameSet set;
    for (std::uint64_t number = 0; waitUntil(began + source->timeOf(number)); ++number) {
        while (source->timeOf(number + 1) <= steady_clock::now() - began)
            ++number;
        if (faults.unpluggedAt && number >= *faults.unpluggedAt) {
            log(Logger::Error, "unplugged at frame " + std::to_string(number));
            *unplugged = true;
            return;
        }
        try {
            if (!isSilent(number))
                deliverFrames(number, to, set);
        } catch (const std::exception& error) {
            // A recording that is damaged in many places must not flood the log.
            if (const auto now = steady_clock::now(); now >= nextComplaint) {
                log(Logger::Error,
                    "frame " + std::to_string(number) + " is left out: " + error.what());
                nextComplaint = now + complaintDistance;
            }
        }
    }
}

/// Returns false when the streams are to stop.
bool VirtualDevice::waitUntil(steady_clock::time_point due) {
    std::unique_lock lock(mutex);
    return !stopping.wait_until(lock, due, [this] { return stopRequested; });
}

bool VirtualDevice::isSilent(std::uint64_t number) const {
    return faults.holds(FrameFault::Missing, Frame::Color, number) &&
           faults.holds(FrameFault::Missing, Frame::Ir, number) &&
           faults.holds(FrameFault::Missing, Frame::Depth, number);
}

void VirtualDevice::deliverFrames(std::uint64_t number, const Listeners& to, FrameSet& set) {
    set.bgrx = pool->take<BufferPool::Bytes>();
    set.infrared = pool->take<BufferPool::Floats>();
    set.depth = pool->take<BufferPool::Floats>();
    source->render(number, set);
    if (faults.holds(FrameFault::Rgbx, Frame::Color, number))
        exchangeRedAndBlue(set.bgrx);
    deliverFrame(Frame::Color, number, to.color, set.colorWidth, set.colorHeight, set.bgrx);
    deliverFrame(Frame::Ir, number, to.irAndDepth, set.depthWidth, set.depthHeight, set.infrared);
    deliverFrame(Frame::Depth, number, to.irAndDepth, set.depthWidth, set.depthHeight, set.depth);
}

template <typename Buffer>
void VirtualDevice::deliverFrame(Frame::Type type, std::uint64_t number,
                                 libfreenect2::FrameListener* to, int width, int height,
                                 Buffer& buffer) {
    auto frame = std::make_unique<PooledFrame<Buffer>>(width, height, std::move(buffer), pool);
    if (to == nullptr || faults.holds(FrameFault::Missing, type, number))
        return;
    frame->format = Frame::Float;
    if (type == Frame::Color) {
        const bool rgbx = faults.holds(FrameFault::Rgbx, type, number);
        frame->format = rgbx ? Frame::RGBX : Frame::BGRX;
        frame->exposure = 10.0F;
        frame->gain = 1.0F;
        frame->gamma = 1.0F;
    }
    frame->sequence = static_cast<std::uint32_t>(number);
    frame->timestamp = static_cast<std::uint32_t>(source->timeOf(number) / timestampUnit);
    if (faults.holds(FrameFault::NullData, type, number))
        frame->data = nullptr;
    if (faults.holds(FrameFault::WrongBytes, type, number))
        frame->bytes_per_pixel = type == Frame::Color ? 3 : 2;
    if (faults.holds(FrameFault::ZeroSize, type, number))
        frame->width = frame->height = 0;
    Frame* offered = frame.release();
    if (!to->onNewFrame(type, offered))
        delete offered;
}

} // namespace virtual_kinect
