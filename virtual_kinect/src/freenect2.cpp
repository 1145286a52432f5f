#include "attached_source.h"
#include "faults.h"
#include "log.h"
#include "virtual_device.h"

#include <libfreenect2/libfreenect2.hpp>

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

namespace libfreenect2 {

using virtual_kinect::log;

namespace {

/// An environment variable's text; empty when it is not set.
std::string environment(const char* name) {
    const char* text = std::getenv(name);
    return text == nullptr ? std::string() : std::string(text);
}

virtual_kinect::Faults wantedFaults() {
    std::vector<std::string> complaints;
    const auto faults =
        virtual_kinect::parseFaults(environment("LUMENO_VIRTUAL_KINECT_FAULTS"), complaints);
    for (const std::string& complaint : complaints)
        log(Logger::Error, "LUMENO_VIRTUAL_KINECT_FAULTS: " + complaint);
    return faults;
}

} // namespace

Freenect2Device::~Freenect2Device() = default;

Freenect2Device::Config::Config()
    : MinDepth(0.5F), MaxDepth(4.5F), EnableBilateralFilter(true), EnableEdgeAwareFilter(true) {}

/// A device is attached or not, so that there is at most one to find.
class Freenect2Impl {
public:
    ~Freenect2Impl() {
        while (!devices.empty())
            delete devices.back();
    }

    Freenect2Device* open() {
        const auto opened = std::find_if(devices.begin(), devices.end(),
                                         [](const auto* device) { return !device->isClosed(); });
        if (opened != devices.end()) {
            log(Logger::Warning, "the device is open already");
            return *opened;
        }
        log(Logger::Info, "opening...");
        if (faults.throwsAtOpen)
            throw std::runtime_error("throws is among the faults");
        const char* refusal = nullptr;
        if (!attached)
            refusal = "no such device";
        else if (faults.busy)
            refusal = "busy is among the faults";
        else if (*unplugged)
            refusal = "the device is unplugged";
        if (refusal != nullptr) {
            log(Logger::Error, std::string("cannot open: ") + refusal);
            return nullptr;
        }
        devices.push_back(new virtual_kinect::VirtualDevice(
            attached, faults, unplugged,
            [this](virtual_kinect::VirtualDevice* device) { std::erase(devices, device); }));
        log(Logger::Info, "opened");
        return devices.back();
    }

    std::shared_ptr<virtual_kinect::FrameSource> attached;
    virtual_kinect::Faults faults;
    std::shared_ptr<std::atomic<bool>> unplugged = std::make_shared<std::atomic<bool>>(false);
    std::vector<virtual_kinect::VirtualDevice*> devices;
};

Freenect2::Freenect2(void*) : impl_(new Freenect2Impl) {}

Freenect2::~Freenect2() {
    delete impl_;
}

int Freenect2::enumerateDevices() {
    log(Logger::Info, "enumerating devices...");
    impl_->attached.reset();
    const std::string wanted = environment("LUMENO_VIRTUAL_KINECT");
    if (!wanted.empty() && !*impl_->unplugged) {
        impl_->faults = wantedFaults();
        impl_->attached = virtual_kinect::makeAttachedSource(wanted, impl_->faults.replay);
    }
    if (impl_->attached) {
        if (impl_->faults.noPermission) {
            log(Logger::Error, "cannot look at the device: no-permission is among the faults");
            impl_->attached.reset();
        }
    }
    if (impl_->attached)
        log(Logger::Info, "found " + impl_->attached->serialNumber());
    const int count = impl_->attached ? 1 : 0;
    log(Logger::Info, "found " + std::to_string(count) + " devices");
    return count;
}

std::string Freenect2::getDeviceSerialNumber(int idx) {
    return idx == 0 && impl_->attached ? impl_->attached->serialNumber() : std::string();
}

std::string Freenect2::getDefaultDeviceSerialNumber() {
    return getDeviceSerialNumber(0);
}

Freenect2Device* Freenect2::openDevice(int idx) {
    return openDevice(idx, nullptr);
}

Freenect2Device* Freenect2::openDevice(int idx, const PacketPipeline* factory) {
    return openDevice(getDeviceSerialNumber(idx), factory);
}

Freenect2Device* Freenect2::openDevice(const std::string& serial) {
    return openDevice(serial, nullptr);
}

Freenect2Device* Freenect2::openDevice(const std::string& serial, const PacketPipeline* factory) {
    delete factory;
    if (serial.empty() || serial != getDefaultDeviceSerialNumber()) {
        log(Logger::Error, "cannot open: no device has the serial number \"" + serial + "\"");
        return nullptr;
    }
    return impl_->open();
}

Freenect2Device* Freenect2::openDefaultDevice() {
    return openDevice(0);
}

Freenect2Device* Freenect2::openDefaultDevice(const PacketPipeline* factory) {
    return openDevice(0, factory);
}

} // namespace libfreenect2
