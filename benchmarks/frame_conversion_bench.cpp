#include "kinect/frame_conversion.h"

#include "frames/sensor_facts.h"
#include "ratio_table.h"
#include "sensor_frames.h"
#include "support/plain_conversion.h"

#include <benchmark/benchmark.h>
#include <opencv2/imgproc.hpp>

#include <cstring>
#include <memory>

namespace {

struct Conversion {
    SensorFrames frames;
    FrameConverter converter;

    void color() { benchmark::DoNotOptimize(converter.color(frames.colorView())); }
    void infrared() { benchmark::DoNotOptimize(converter.infrared(frames.infraredView())); }
    void depth() { benchmark::DoNotOptimize(converter.depth(frames.depthView())); }
};

const RatioTable::Claim colorAgainstCopy({
    .what = "colour frame to image",
    .against = "memcpy of the same bytes",
    .atMost = 1.3,
    .prepare =
        [] {
            const auto conversion = std::make_shared<Conversion>();
            const auto copy =
                std::make_shared<SensorFrames::Bytes>(conversion->frames.color.size());
            return Contest{[=] { conversion->color(); },
                           [=] {
                               std::memcpy(copy->data(), conversion->frames.color.data(),
                                           copy->size());
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
            const auto conversion = std::make_shared<Conversion>();
            const auto image = std::make_shared<cv::Mat>();
            return Contest{[=] { conversion->color(); },
                           [=] {
                               const cv::Mat frame(sensor::colorHeight, sensor::colorWidth, CV_8UC4,
                                                   conversion->frames.color.data());
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
            const auto conversion = std::make_shared<Conversion>();
            return Contest{[=] { conversion->infrared(); },
                           [=] {
                               benchmark::DoNotOptimize(
                                   plain::infrared(conversion->frames.infrared.data(),
                                                   sensor::depthWidth, sensor::depthHeight));
                           }};
        },
});

const RatioTable::Claim depthAgainstLoop({
    .what = "depth frame to image",
    .against = "plain loop",
    .atMost = 0.25,
    .prepare =
        [] {
            const auto conversion = std::make_shared<Conversion>();
            return Contest{[=] { conversion->depth(); },
                           [=] {
                               benchmark::DoNotOptimize(
                                   plain::depth(conversion->frames.depth.data(), sensor::depthWidth,
                                                sensor::depthHeight));
                           }};
        },
});

} // namespace
