#include "kinect/scripted_sensor.h"

#include <libfreenect2/frame_listener_impl.h>
#include <libfreenect2/libfreenect2.hpp>

#include <cstring>
#include <stdexcept>

using namespace Qt::StringLiterals;

namespace {

ScriptedSensor* living = nullptr;

bool step(const QString& name, const QString& details = {}) {
    return ScriptedSensor::current().step(name, details);
}

libfreenect2::Frame* makeFrame(const ScriptedSensor::Picture& picture,
                               libfreenect2::Frame::Format format) {
    auto* frame = new libfreenect2::Frame(static_cast<std::size_t>(picture.size.width()),
                                          static_cast<std::size_t>(picture.size.height()), 4);
    std::memcpy(frame->data, picture.bytes.constData(),
                static_cast<std::size_t>(picture.bytes.size()));
    frame->format = format;
    return frame;
}

class ScriptedDevice : public libfreenect2::Freenect2Device {
public:
    std::string getSerialNumber() override { return "serial-of-the-device"; }
    std::string getFirmwareVersion() override { return "1.2.3"; }
    ColorCameraParams getColorCameraParams() override { return {}; }
    IrCameraParams getIrCameraParams() override { return {}; }
    void setColorCameraParams(const ColorCameraParams&) override {}
    void setIrCameraParams(const IrCameraParams&) override {}
    void setConfiguration(const Config&) override {}
    void setColorFrameListener(libfreenect2::FrameListener*) override { step(u"color listener"_s); }
    void setIrAndDepthFrameListener(libfreenect2::FrameListener*) override {
        step(u"infrared and depth listener"_s);
    }
    bool start() override { return step(u"start"_s); }
    bool startStreams(bool color, bool depth) override {
        return step(u"start some streams"_s, u"%1 %2"_s.arg(color).arg(depth));
    }
    bool stop() override { return step(u"stop"_s); }
    bool close() override { return step(u"close"_s); }
};

} // namespace

ScriptedSensor::ScriptedSensor() {
    living = this;
}

ScriptedSensor::~ScriptedSensor() {
    living = nullptr;
}

ScriptedSensor& ScriptedSensor::current() {
    return *living;
}

bool ScriptedSensor::step(const QString& name, const QString& details) {
    steps.append(details.isEmpty() ? name : name + u' ' + details);
    switch (answers.value(name, Answer::Works)) {
    case Answer::Works:
        return true;
    case Answer::Refuses:
        return false;
    case Answer::ThrowsException:
        throw std::runtime_error("no answer");
    case Answer::ThrowsNumber:
        throw 7;
    }
    return true;
}

namespace libfreenect2 {

Freenect2Device::~Freenect2Device() = default;

class Freenect2Impl {
public:
    ScriptedDevice device;
};

Freenect2::Freenect2(void*) : impl_(nullptr) {
    step(u"context"_s);
    impl_ = new Freenect2Impl;
}

Freenect2::~Freenect2() {
    step(u"context ends"_s);
    delete impl_;
}

int Freenect2::enumerateDevices() {
    return step(u"enumerate"_s) ? 1 : 0;
}

std::string Freenect2::getDefaultDeviceSerialNumber() {
    return "serial-of-the-bus";
}

Freenect2Device* Freenect2::openDevice(const std::string& serial) {
    return step(u"open"_s, QString::fromStdString(serial)) ? &impl_->device : nullptr;
}

SyncMultiFrameListener::SyncMultiFrameListener(unsigned int types) : impl_(nullptr) {
    step(u"listener"_s, QString::number(types));
}

SyncMultiFrameListener::~SyncMultiFrameListener() {
    step(u"listener ends"_s);
}

bool SyncMultiFrameListener::waitForNewFrame(FrameMap& frames, int milliseconds) {
    ScriptedSensor& sensor = ScriptedSensor::current();
    const bool works = step(u"wait"_s, QString::number(milliseconds));
    if (sensor.sets.size() <= 1 && sensor.atTheLastSet)
        sensor.atTheLastSet();
    if (!works || sensor.sets.empty())
        return false;
    const ScriptedSensor::Set set = sensor.sets.front();
    sensor.sets.erase(sensor.sets.begin());
    frames[Frame::Color] = makeFrame(set.color, Frame::BGRX);
    frames[Frame::Ir] = makeFrame(set.infrared, Frame::Float);
    frames[Frame::Depth] = makeFrame(set.depth, Frame::Float);
    return true;
}

void SyncMultiFrameListener::release(FrameMap& frames) {
    step(u"release"_s);
    for (const auto& [type, frame] : frames)
        delete frame;
    frames.clear();
}

bool SyncMultiFrameListener::onNewFrame(Frame::Type, Frame*) {
    return false;
}

} // namespace libfreenect2
