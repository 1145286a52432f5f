#include "face/cascade_search.h"

#include "face/cascade_scales.h"

namespace {

/// Takes the windows of one scale picture back to the picture.
struct Finds {
    const CascadeScale& scale;
    std::vector<cv::Rect>& found;

    static void add(void* context, int x, int y) {
        const auto& [scale, found] = *static_cast<const Finds*>(context);
        const auto back = [&scale = scale](int at) {
            return cvRound(static_cast<float>(at * scale.step) * scale.scale);
        };
        found.emplace_back(cv::Point(back(x), back(y)), scale.hit);
    }
};

} // namespace

CascadeSearch::CascadeSearch(const CascadeData& cascade, CascadeTables prepared,
                             const CascadeKernels& loops)
    : windowSize(cascade.window), tables(std::move(prepared)), kernels(loops), sums(loops) {}

std::unique_ptr<CascadeSearch>
CascadeSearch::make(const CascadeData& cascade, const CascadeKernels& kernels, double extraMargin) {
    std::optional<CascadeTables> tables = CascadeTables::make(cascade, extraMargin);
    if (!tables)
        return nullptr;
    return std::unique_ptr<CascadeSearch>(new CascadeSearch(cascade, std::move(*tables), kernels));
}

std::vector<cv::Rect> CascadeSearch::candidates(const cv::Mat& picture, double scaleFactor,
                                                cv::Size minSize) {
    std::vector<cv::Rect> found;
    const std::vector<CascadeScale> scales =
        cascadeScales(picture.size(), windowSize, scaleFactor, minSize);
    if (scales.empty())
        return found;
    const std::size_t stride = CascadeSums::strideFor(scales.front().picture.width);
    for (const CascadeScale& scale : scales) {
        KernelPicture sumsHere = sums.of(picture, scale.picture, scale.scale, stride, scale.step);
        sumsHere.windowsX = scale.windows.width;
        sumsHere.windowsY = scale.windows.height;
        const std::size_t bytes = kernels.stripBytes(static_cast<std::size_t>(scale.windows.width));
        const std::size_t words = (bytes + sizeof(std::uint64_t) - 1) / sizeof(std::uint64_t);
        if (strip.size() < words)
            strip.resize(words);
        Finds finds{scale, found};
        const KernelMemory memory{reinterpret_cast<unsigned char*>(strip.data())};
        kernels.search(sumsHere, tables.forRows(stride, scale.step), memory, {&finds, &Finds::add});
    }
    return found;
}
