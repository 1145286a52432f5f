#include "kinect/sensor_session.h"

#include <exception>
#include <utility>

using libfreenect2::Frame;

namespace {

constexpr unsigned int withoutColor = Frame::Ir | Frame::Depth;
constexpr unsigned int allStreams = Frame::Color | withoutColor;

} // namespace

SensorSession::~SensorSession() {
    try {
        close();
    } catch (...) {
        // Whoever wants to know calls close().
    }
}

std::optional<SensorFailure> SensorSession::start(bool withColor) {
    colorWanted = withColor;
    using Step = SensorFailure::Step;
    constexpr std::pair<Step, bool (SensorSession::*)()> steps[] = {
        {Step::Enumerate, &SensorSession::enumerate},
        {Step::Open, &SensorSession::open},
        {Step::Start, &SensorSession::startStreams}};
    for (const auto& [step, run] : steps) {
        try {
            if (!(this->*run)())
                return SensorFailure{step, {}};
        } catch (const std::exception& error) {
            return SensorFailure{step, QString::fromUtf8(error.what())};
        } catch (...) {
            return SensorFailure{step, QStringLiteral("an exception of an unknown type")};
        }
    }
    return std::nullopt;
}

bool SensorSession::enumerate() {
    context.emplace();
    return context->enumerateDevices() >= 1;
}

bool SensorSession::open() {
    opened = context->openDevice(context->getDefaultDeviceSerialNumber());
    return opened != nullptr;
}

bool SensorSession::startStreams() {
    listener.emplace(colorWanted ? allStreams : withoutColor);
    if (colorWanted)
        opened->setColorFrameListener(&*listener);
    opened->setIrAndDepthFrameListener(&*listener);
    streaming = colorWanted ? opened->start() : opened->startStreams(false, true);
    return streaming;
}

bool SensorSession::wait(std::chrono::milliseconds timeout) {
    return listener->waitForNewFrame(held, static_cast<int>(timeout.count()));
}

void SensorSession::release() {
    listener->release(held);
}

libfreenect2::FrameMap SensorSession::take() {
    return std::exchange(held, {});
}

void SensorSession::close() {
    if (!held.empty())
        release();
    auto* const device = std::exchange(opened, nullptr);
    if (device == nullptr)
        return;
    std::exception_ptr thrown;
    const auto attempt = [&thrown](auto&& step) {
        try {
            step();
        } catch (...) {
            thrown = std::current_exception();
        }
    };
    if (std::exchange(streaming, false))
        attempt([device] { device->stop(); });
    attempt([device] { device->close(); });
    if (thrown)
        std::rethrow_exception(thrown);
}
