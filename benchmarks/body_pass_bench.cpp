#include "awareness/body_candidates.h"

#include "awareness/plain_body_candidates.h"
#include "body_scenes.h"
#include "ratio_table.h"

#include <benchmark/benchmark.h>
#include <opencv2/imgproc.hpp>

#include <memory>

namespace {

std::function<void()> bodyPass(const DepthScene& frame) {
    return [scene = std::make_shared<DepthScene>(frame)] {
        benchmark::DoNotOptimize(
            detectDepthBodyCandidates(scene->mm, scene->width, scene->height, scenes::colorSize));
    };
}

std::function<void()> plainBodyPass(const DepthScene& frame) {
    return [scene = std::make_shared<DepthScene>(frame)] {
        benchmark::DoNotOptimize(
            plain::bodyCandidates(scene->mm, scene->width, scene->height, scenes::colorSize));
    };
}

/// OpenCV's labelling of the frame's grid of cells, which is given to it ready made.
std::function<void()> labelling(const DepthScene& frame) {
    cv::Mat mask(frame.height / 4, frame.width / 4, CV_8UC1, cv::Scalar(0));
    for (int y = 0; y < mask.rows * 4; ++y) {
        for (int x = 0; x < mask.cols * 4; ++x) {
            if (plain::isValid(frame.mm[qsizetype(y) * frame.width + x]))
                ++mask.at<unsigned char>(y / 4, x / 4);
        }
    }
    mask = mask >= 4;
    return [mask] {
        cv::Mat labels;
        cv::Mat stats;
        cv::Mat centroids;
        benchmark::DoNotOptimize(
            cv::connectedComponentsWithStats(mask, labels, stats, centroids, 4, CV_32S));
    };
}

RatioRow againstUsualFrame(const std::string& what, DepthScene (*frame)()) {
    return {.what = what, .against = "body pass, three people", .atMost = 4.0, .prepare = [frame] {
                return Contest{bodyPass(frame()), bodyPass(scenes::threePeople())};
            }};
}

const RatioTable::Claim againstPlain({
    .what = "body pass, three people",
    .against = "plain search",
    .atMost = 0.5,
    .prepare =
        [] {
            const DepthScene frame = scenes::threePeople();
            return Contest{bodyPass(frame), plainBodyPass(frame)};
        },
});

const RatioTable::Claim againstLabelling({
    .what = "body pass, three people",
    .against = "cv::connectedComponentsWithStats on its mask",
    .atMost = 1.5,
    .prepare =
        [] {
            const DepthScene frame = scenes::threePeople();
            return Contest{bodyPass(frame), labelling(frame)};
        },
});

const RatioTable::Claim specklesAgainstUsual(againstUsualFrame("body pass, speckles",
                                                               scenes::speckles));
const RatioTable::Claim combAgainstUsual(againstUsualFrame("body pass, comb", scenes::comb));
const RatioTable::Claim giantsAgainstUsual(againstUsualFrame("body pass, two giants",
                                                             scenes::twoGiants));
const RatioTable::Claim sievesAgainstUsual(againstUsualFrame("body pass, two sieves",
                                                             scenes::sieves));

} // namespace
