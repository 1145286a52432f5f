#include "kinect/frame_conversion.h"

#include "kinect/sensor_facts.h"
#include "ratio_table.h"
#include "support/plain_conversion.h"

#include <benchmark/benchmark.h>
#include <opencv2/imgproc.hpp>

#include <cstring>
#include <memory>
#include <random>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;

constexpr std::size_t colorPixels = std::size_t{sensor::colorWidth} * sensor::colorHeight;
constexpr std::size_t depthPixels = std::size_t{sensor::depthWidth} * sensor::depthHeight;

FrameView viewOf(const Bytes& bytes, int width, int height) {
    return {bytes.data(), static_cast<std::size_t>(width), static_cast<std::size_t>(height),
            sensor::bytesPerPixel, false};
}

/// A frame of the sensor's kind: smooth surfaces with noise, and a tenth of it without a reading.
Bytes floatFrame(float base, float slope, float noise) {
    std::mt19937 random(7);
    std::uniform_real_distribution<float> unit(0.0F, 1.0F);
    Bytes bytes(depthPixels * sizeof(float));
    for (std::size_t i = 0; i < depthPixels; ++i) {
        const bool reading = unit(random) > 0.1F;
        const auto column = static_cast<float>(i % sensor::depthWidth);
        const float value = reading ? base + slope * column + noise * unit(random) : 0.0F;
        std::memcpy(&bytes[i * sizeof value], &value, sizeof value);
    }
    return bytes;
}

struct Frames {
    Frames() {
        std::mt19937 random(1);
        for (unsigned char& byte : color)
            byte = static_cast<unsigned char>(random());
    }
    FrameView colorView() const { return viewOf(color, sensor::colorWidth, sensor::colorHeight); }
    FrameView infraredView() const {
        return viewOf(infrared, sensor::depthWidth, sensor::depthHeight);
    }
    FrameView depthView() const { return viewOf(depth, sensor::depthWidth, sensor::depthHeight); }

    Bytes color = Bytes(colorPixels * sensor::bytesPerPixel);
    Bytes infrared = floatFrame(100.0F, 20.0F, 2000.0F);
    Bytes depth = floatFrame(400.0F, 8.0F, 300.0F);
    FrameConverter converter;
};

const RatioTable::Claim colorAgainstCopy({
    .what = "colour frame to image",
    .against = "memcpy of the same bytes",
    .atMost = 1.3,
    .prepare =
        [] {
            const auto frames = std::make_shared<Frames>();
            const auto copy = std::make_shared<Bytes>(frames->color.size());
            return Contest{
                [=] { benchmark::DoNotOptimize(frames->converter.color(frames->colorView())); },
                [=] {
                    std::memcpy(copy->data(), frames->color.data(), copy->size());
                    benchmark::ClobberMemory();
                }};
        },
});

const RatioTable::Claim colorAgainstOpenCv({
    .what = "colour frame to image",
    .against = "cv::cvtColor",
    .atMost = std::nullopt,
    .prepare =
        [] {
            const auto frames = std::make_shared<Frames>();
            const auto image = std::make_shared<cv::Mat>();
            return Contest{
                [=] { benchmark::DoNotOptimize(frames->converter.color(frames->colorView())); },
                [=] {
                    const cv::Mat frame(sensor::colorHeight, sensor::colorWidth, CV_8UC4,
                                        frames->color.data());
                    cv::cvtColor(frame, *image, cv::COLOR_BGRA2RGB);
                }};
        },
});

const RatioTable::Claim infraredAgainstLoop({
    .what = "infrared frame to image",
    .against = "plain loop",
    .atMost = 0.35,
    .prepare =
        [] {
            const auto frames = std::make_shared<Frames>();
            return Contest{
                [=] {
                    benchmark::DoNotOptimize(frames->converter.infrared(frames->infraredView()));
                },
                [=] {
                    benchmark::DoNotOptimize(plain::infrared(
                        frames->infrared.data(), sensor::depthWidth, sensor::depthHeight));
                }};
        },
});

const RatioTable::Claim depthAgainstLoop({
    .what = "depth frame to image",
    .against = "plain loop",
    .atMost = 0.25,
    .prepare =
        [] {
            const auto frames = std::make_shared<Frames>();
            return Contest{
                [=] { benchmark::DoNotOptimize(frames->converter.depth(frames->depthView())); },
                [=] {
                    benchmark::DoNotOptimize(plain::depth(frames->depth.data(), sensor::depthWidth,
                                                          sensor::depthHeight));
                }};
        },
});

} // namespace
