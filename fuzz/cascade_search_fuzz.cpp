// The cascade search against the library's own, over pictures, parameters and cascade files.

#include "face/cascade_data.h"
#include "face/cascade_order.h"
#include "face/cascade_search.h"
#include "face/face_options.h"
#include "face/library_search.h"
#include "fuzz_input.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <opencv2/imgproc.hpp>
#include <opencv2/objdetect.hpp>
#include <vector>

namespace {

/// One cascade, cut after some stages, for the library and for each kernel.
struct Pair {
    cv::CascadeClassifier theirs;
    std::vector<std::unique_ptr<CascadeSearch>> ours;
};

Pair pairOf(const CascadeData& cascade) {
    Pair pair{librarySearching(cascade), {}};
    for (const CascadeKernels& kernels : supportedCascadeKernels()) {
        if (auto search = CascadeSearch::make(cascade, kernels))
            pair.ours.push_back(std::move(search));
    }
    return pair;
}

std::vector<Pair>& pairs() {
    static std::vector<Pair> all = [] {
        std::vector<Pair> made;
        for (const std::string& path :
             {face::Options().frontalCascadePath, face::Options().profileCascadePath}) {
            const auto data = readCascade(path);
            for (const std::size_t stages : {1U, 2U, 4U, 9U, 100U})
                made.push_back(pairOf(cutCascade(*data, stages)));
            made.push_back(pairOf(quicklyOrdered(*data, trialPictures().front())));
        }
        return made;
    }();
    return all;
}

void compare(Pair& pair, const cv::Mat& picture, double factor, cv::Size minSize) {
    const std::vector<cv::Rect> wanted = libraryFinds(pair.theirs, picture, factor, minSize);
    for (const auto& search : pair.ours) {
        require(sorted(search->candidates(picture, factor, minSize)) == wanted,
                "the candidates are the library's");
    }
    cv::Mat mirror;
    cv::flip(picture, mirror, 1);
    CascadeSearch& search = *pair.ours.front();
    std::vector<CascadeSearch::Task> tasks{{&search}, {&search, true}};
    CascadeSearch::searchTogether(picture, tasks, factor, minSize);
    require(sorted(tasks[0].found) == wanted, "a search with another one finds the same");
    require(sorted(tasks[1].found) == libraryFinds(pair.theirs, mirror, factor, minSize),
            "so does the one of the mirror image");
}

/// Noise of a grain and a contrast that the input chooses, with bytes of the input in it.
cv::Mat pictureFrom(FuzzInput& input) {
    const cv::Size size(input.between(1, 140), input.between(1, 110));
    const int grain = input.between(1, 12);
    cv::Mat coarse(std::max(size.height / grain, 1), std::max(size.width / grain, 1), CV_8U);
    cv::RNG(static_cast<std::uint64_t>(input.between(1, 1 << 30)))
        .fill(coarse, cv::RNG::UNIFORM, 0, 256);
    for (int i = input.between(0, 40); i > 0; --i) {
        coarse.at<uchar>(input.between(0, coarse.rows - 1), input.between(0, coarse.cols - 1)) =
            static_cast<uchar>(input.between(0, 255));
    }
    cv::Mat picture;
    cv::resize(coarse, picture, size, 0.0, 0.0, cv::INTER_CUBIC);
    picture.convertTo(picture, CV_8U, input.between(1, 20) / 10.0, input.between(-60, 200));
    return picture;
}

/// A cascade file with some bytes overwritten: it may be refused, or searched by both.
void searchDamaged(FuzzInput& input) {
    static const std::string whole =
        cascadeText(cutCascade(*readCascade(face::Options().frontalCascadePath), 2));
    std::string text = whole;
    for (int i = input.between(1, 6); i > 0; --i) {
        const int at = input.between(0, static_cast<int>(text.size()) - 1);
        text[static_cast<std::size_t>(at)] = static_cast<char>(input.byte());
    }
    try {
        const auto cascade = parseCascade(text);
        if (!cascade)
            return;
        const auto search = CascadeSearch::make(*cascade, supportedCascadeKernels().front());
        if (search)
            search->candidates(pictureFrom(input), 1.2, {});
    } catch (const cv::Exception&) {
        // Not a file of any kind.
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    cv::setNumThreads(1);
    if (input.byte() % 8 == 7) {
        searchDamaged(input);
        return 0;
    }
    Pair& pair =
        pairs()[static_cast<std::size_t>(input.between(0, static_cast<int>(pairs().size()) - 1))];
    const cv::Mat picture = pictureFrom(input);
    const double factor = 1.05 + input.between(0, 200) / 100.0;
    const int side = input.between(0, 60);
    compare(pair, picture, factor, {side, side + input.between(0, 10)});
    return 0;
}
