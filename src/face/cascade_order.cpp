#include "face/cascade_order.h"

#include "face/cascade_search.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

namespace {

constexpr double scaleFactor = 1.1;
/// Finding an order for many more stages than usual takes longer than it is worth.
constexpr std::size_t maxStages = 64;

std::vector<cv::Rect> windowsThatPass(const CascadeData& cascade, const cv::Mat& picture) {
    const auto search = CascadeSearch::make(cascade, supportedCascadeKernels().front());
    return search ? search->candidates(picture, scaleFactor, cv::Size()) : std::vector<cv::Rect>();
}

/// A stage that is still to be given its place, and which of the windows under examination pass it.
struct Waiting {
    std::size_t stage = 0;
    std::size_t stumps = 0;
    std::vector<bool> passing;
};

/// The windows under examination, in the order of a search.
struct Examined {
    std::vector<cv::Rect> windows;
    int windowWidth; ///< At scale 1.

    /// How many blocks of neighbours the marked windows come to: a stage takes as much work for a
    /// block as for a window.
    std::size_t countBlocks(const std::vector<bool>& marks) const {
        std::size_t blocks = 0;
        const cv::Rect* first = nullptr; // of the last block
        for (std::size_t i = 0; i < windows.size(); ++i) {
            if (marks[i] && !(first && isWithinBlock(*first, windows[i]))) {
                first = &windows[i];
                ++blocks;
            }
        }
        return blocks;
    }

private:
    bool isWithinBlock(const cv::Rect& first, const cv::Rect& window) const {
        constexpr int blockWindows = 16; // as with AVX2
        const double scale = static_cast<double>(first.width) / windowWidth;
        const double step = scale > 2.0 ? scale : 2.0 * scale;
        return window.width == first.width && window.y == first.y &&
               window.x < first.x + blockWindows * step - 0.5;
    }
};

void keepThoseOf(std::vector<bool>& marks, const std::vector<bool>& others) {
    for (std::size_t i = 0; i < marks.size(); ++i)
        marks[i] = marks[i] && others[i];
}

/// All stages behind the first one, each tried alone on the windows that the first one leaves.
std::vector<Waiting> tryStages(const CascadeData& cascade, const cv::Mat& picture,
                               const std::vector<cv::Rect>& left) {
    std::vector<Waiting> waiting;
    for (std::size_t stage = 1; stage < cascade.stages.size(); ++stage) {
        const std::vector<cv::Rect> passing =
            windowsThatPass(withStages(cascade, {0, stage}), picture);
        Waiting tried{stage, cascade.stages[stage].stumpCount, {}};
        // Both lists are in the same order.
        auto next = passing.begin();
        for (const cv::Rect& window : left) {
            const bool passes = next != passing.end() && *next == window;
            tried.passing.push_back(passes);
            next += passes ? 1 : 0;
        }
        waiting.push_back(std::move(tried));
    }
    return waiting;
}

} // namespace

std::vector<cv::Mat> trialPictures() {
    // Blurred noise of several grain sizes, one above the other. The sizes are such that windows
    // end at all kinds of places in a block and a strip.
    std::vector<cv::Mat> pictures;
    cv::RNG random(20);
    for (const cv::Size size : {cv::Size(131, 97), cv::Size(90, 120), cv::Size(167, 64)}) {
        cv::Mat sum(size, CV_32F, cv::Scalar(128.0));
        for (const int grain : {3, 6, 12}) {
            cv::Mat coarse(size.height / grain, size.width / grain, CV_32F);
            random.fill(coarse, cv::RNG::NORMAL, 0.0, 30.0);
            cv::Mat layer;
            cv::resize(coarse, layer, size, 0.0, 0.0, cv::INTER_CUBIC);
            sum += layer;
        }
        sum.convertTo(pictures.emplace_back(), CV_8U);
    }
    return pictures;
}

CascadeData quicklyOrdered(const CascadeData& cascade, const cv::Mat& picture) {
    if (cascade.stages.size() <= 1 || cascade.stages.size() > maxStages)
        return cascade;
    const Examined examined{windowsThatPass(cutCascade(cascade, 1), picture), cascade.window.width};
    std::vector<Waiting> waiting = tryStages(cascade, picture, examined.windows);
    std::vector<bool> alive(examined.windows.size(), true);
    std::vector<std::size_t> order{0};
    while (!waiting.empty()) {
        // By what factor fewer blocks are left, for each stump: the next stage is the one that
        // pays best. One is added to both numbers, since the second can be 0.
        const auto before = double(examined.countBlocks(alive) + 1);
        const auto gain = [&](const Waiting& tried) {
            std::vector<bool> both = alive;
            keepThoseOf(both, tried.passing);
            return std::log(before / double(examined.countBlocks(both) + 1)) / double(tried.stumps);
        };
        const auto best = std::max_element(
            waiting.begin(), waiting.end(),
            [&gain](const Waiting& a, const Waiting& b) { return gain(a) < gain(b); });
        keepThoseOf(alive, best->passing);
        order.push_back(best->stage);
        waiting.erase(best);
    }
    return withStages(cascade, order);
}
