#include "awareness/body_candidates.h"

#include "body_scenes.h"
#include "processor_time.h"
#include "ratio_table.h"

#include <benchmark/benchmark.h>

#include <memory>

namespace {

/// A hundredth of the time between two frames of the sensor.
constexpr long onePercentOfAFrame_ns = 333'333;

/// `percent` is the most of a frame's time that the pass may take.
RatioRow ofAFrame(const std::string& what, DepthScene (*scene)(), double percent) {
    return {
        .what = what, .against = "1 % of a frame's 33.3 ms", .atMost = percent, .prepare = [scene] {
            const auto frame = std::make_shared<DepthFrame>(scene().frame());
            return Contest{[frame] {
                               benchmark::DoNotOptimize(
                                   detectDepthBodyCandidates(*frame, scenes::colorSize));
                           },
                           [] { spendProcessorTime(onePercentOfAFrame_ns); }};
        }};
}

const RatioTable::Claim usual(ofAFrame("body pass, three people", scenes::threePeople, 1.0));
const RatioTable::Claim speckles(ofAFrame("body pass, speckles", scenes::speckles, 2.0));
const RatioTable::Claim comb(ofAFrame("body pass, comb", scenes::comb, 2.0));
const RatioTable::Claim giants(ofAFrame("body pass, two giants", scenes::twoGiants, 2.0));
const RatioTable::Claim sieves(ofAFrame("body pass, two sieves", scenes::sieves, 2.0));

} // namespace
