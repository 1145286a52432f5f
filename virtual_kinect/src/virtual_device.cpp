#include "virtual_device.h"

#include "buffer_pool.h"
#include "camera_fields.h"
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
      pool(std::make_shared<BufferPool>()) {
    const Calibration calibration = source->calibration();
    colorParams =
        paramsOf<ColorCameraParams>(colorCameraFields<ColorCameraParams>(), calibration.color);
    irParams = paramsOf<IrCameraParams>(irCameraFields<IrCameraParams>(), calibration.infrared);
}

VirtualDevice::~VirtualDevice() {
    VirtualDevice::close();
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

void VirtualDevice::setConfiguration(const Config& config) {
    configuration = config;
}

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
    log(Logger::Info, "starting...");
    if (!closed && !thread.joinable()) {
        std::this_thread::sleep_for(faults.slowStart);
        if (faults.throwsAtStart)
            throw ThrownAtStart{};
    }
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
        Listeners{rgb ? listeners.color : nullptr, depth ? listeners.irAndDepth : nullptr},
        DepthRange{configuration.MinDepth * 1000, configuration.MaxDepth * 1000});
    log(Logger::Info, "started");
    return true;
}

bool VirtualDevice::stop() {
    log(Logger::Info, "stopping...");
    if (!thread.joinable()) {
        log(Logger::Info, "nothing to stop");
        return false;
    }
    std::this_thread::sleep_for(faults.slowStop);
    endThread();
    if (*unplugged) {
        log(Logger::Error, "stop: the device is unplugged");
        return false;
    }
    log(Logger::Info, "stopped");
    return true;
}

bool VirtualDevice::close() {
    log(Logger::Info, "closing...");
    if (closed) {
        log(Logger::Info, "nothing to close");
        return true;
    }
    if (thread.joinable())
        stop();
    std::this_thread::sleep_for(faults.slowClose);
    listeners = {};
    closed = true;
    log(Logger::Info, "closed");
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

/// The device's own thread.
void VirtualDevice::streamFrames(Listeners to, DepthRange range) {
    pthread_setname_np(pthread_self(), "virtual-sensor"); // not its starter's name, when measured
    Outlets outlets;
    if (to.color != nullptr)
        outlets.color = std::make_unique<DeliveryThread>("virtual-color", *to.color);
    if (to.irAndDepth != nullptr)
        outlets.irAndDepth = std::make_unique<DeliveryThread>("virtual-depth", *to.irAndDepth);
    const auto began = steady_clock::now();
    auto nextComplaint = began;
    FrameSet set;
    for (std::uint64_t number = 0; waitUntil(began + source->timeOf(number)); ++number) {
        while (source->timeOf(number + 1) <= steady_clock::now() - began)
            ++number;
        if (source->ends(number)) {
            log(Logger::Info, "all frames have been shown");
            return;
        }
        if (faults.unpluggedAt && number >= *faults.unpluggedAt) {
            log(Logger::Error, "unplugged at frame " + std::to_string(number));
            *unplugged = true;
            return;
        }
        try {
            if (!isSilent(number))
                deliverFrames(number, outlets, range, set);
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

void VirtualDevice::deliverFrames(std::uint64_t number, Outlets& to, const DepthRange& range,
                                  FrameSet& set) {
    set.bgrx = pool->take<BufferPool::Bytes>();
    set.infrared = pool->take<BufferPool::Floats>();
    set.depth = pool->take<BufferPool::Floats>();
    source->render(number, set);
    if (faults.holds(FrameFault::Rgbx, Frame::Color, number))
        exchangeRedAndBlue(set.bgrx);
    for (float& reading : set.depth)
        reading = reading >= range.min_mm && reading <= range.max_mm ? reading : 0;

    Delivery color;
    addFrame(color, Frame::Color, number, set.colorWidth, set.colorHeight, set.bgrx);
    Delivery depth;
    addFrame(depth, Frame::Ir, number, set.depthWidth, set.depthHeight, set.infrared);
    addFrame(depth, Frame::Depth, number, set.depthWidth, set.depthHeight, set.depth);
    to.lateDepth.push_back(std::move(depth));
    if (to.color)
        to.color->offer(std::move(color));
    if (to.lateDepth.size() <= faults.depthLate)
        return;
    if (to.irAndDepth)
        to.irAndDepth->offer(std::move(to.lateDepth.front()));
    to.lateDepth.pop_front();
}

template <typename Buffer>
void VirtualDevice::addFrame(Delivery& delivery, Frame::Type type, std::uint64_t number, int width,
                             int height, Buffer& buffer) {
    auto frame = std::make_unique<PooledFrame<Buffer>>(width, height, std::move(buffer), pool);
    if (faults.holds(FrameFault::Missing, type, number))
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
    delivery.emplace_back(type, std::move(frame));
}

} // namespace virtual_kinect
