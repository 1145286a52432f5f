#include "sensor_frames.h"

#include "frames/sensor_facts.h"

#include <cstring>
#include <random>

namespace {

constexpr std::size_t colorPixels = std::size_t{sensor::colorWidth} * sensor::colorHeight;
constexpr std::size_t depthPixels = std::size_t{sensor::depthWidth} * sensor::depthHeight;

SensorFrames::Bytes noise() {
    std::mt19937 random(1);
    SensorFrames::Bytes bytes(colorPixels * sensor::bytesPerPixel);
    for (unsigned char& byte : bytes)
        byte = static_cast<unsigned char>(random());
    return bytes;
}

SensorFrames::Bytes floatFrame(float base, float slope, float noise) {
    std::mt19937 random(7);
    std::uniform_real_distribution<float> unit(0.0F, 1.0F);
    SensorFrames::Bytes bytes(depthPixels * sizeof(float));
    for (std::size_t i = 0; i < depthPixels; ++i) {
        const bool reading = unit(random) > 0.1F;
        const auto column = static_cast<float>(i % sensor::depthWidth);
        const float value = reading ? base + slope * column + noise * unit(random) : 0.0F;
        std::memcpy(&bytes[i * sizeof value], &value, sizeof value);
    }
    return bytes;
}

FrameView viewOf(const SensorFrames::Bytes& bytes, int width, int height) {
    return {bytes.data(), static_cast<std::size_t>(width), static_cast<std::size_t>(height),
            sensor::bytesPerPixel, false};
}

} // namespace

SensorFrames::SensorFrames()
    : color(noise()), infrared(floatFrame(100.0F, 20.0F, 2000.0F)),
      depth(floatFrame(400.0F, 8.0F, 300.0F)) {}

FrameView SensorFrames::colorView() const {
    return viewOf(color, sensor::colorWidth, sensor::colorHeight);
}

FrameView SensorFrames::infraredView() const {
    return viewOf(infrared, sensor::depthWidth, sensor::depthHeight);
}

FrameView SensorFrames::depthView() const {
    return viewOf(depth, sensor::depthWidth, sensor::depthHeight);
}
