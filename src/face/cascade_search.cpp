#include "face/cascade_search.h"

#include <algorithm>
#include <optional>

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

/// The scales that a search still has to look at.
struct Agenda {
    CascadeSearch::Task* task = nullptr;
    std::vector<CascadeScale> scales{};
    std::size_t next = 0;

    bool wants(const CascadeScale& scale) const {
        return next < scales.size() && scales[next].scale == scale.scale;
    }
};

/// The smallest scale that one of them looks at next.
std::optional<CascadeScale> nextScale(const std::vector<Agenda>& agendas) {
    std::optional<CascadeScale> smallest;
    for (const Agenda& agenda : agendas) {
        if (agenda.next < agenda.scales.size() &&
            (!smallest || agenda.scales[agenda.next].scale < smallest->scale))
            smallest = agenda.scales[agenda.next];
    }
    return smallest;
}

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
    Task task{this};
    searchTogether(picture, {&task, 1}, scaleFactor, minSize);
    return std::move(task.found);
}

void CascadeSearch::searchTogether(const cv::Mat& picture, std::span<Task> tasks,
                                   double scaleFactor, cv::Size minSize,
                                   const std::stop_token& stop) {
    std::vector<Agenda> agendas;
    int width = 0;
    for (Task& task : tasks) {
        Agenda& agenda = agendas.emplace_back(Agenda{
            &task, cascadeScales(picture.size(), task.search->windowSize, scaleFactor, minSize)});
        if (!agenda.scales.empty())
            width = std::max(width, agenda.scales.front().picture.width);
    }
    if (width == 0)
        return;
    CascadePyramid& pyramid = tasks.front().search->pyramid;
    CascadeSums& sums = tasks.front().search->sums;
    const std::size_t stride = CascadeSums::strideFor(width);
    pyramid.begin(picture);
    while (const std::optional<CascadeScale> scale = nextScale(agendas)) {
        for (const bool mirrored : {false, true}) {
            std::optional<KernelPicture> summed;
            for (Agenda& agenda : agendas) {
                if (agenda.task->mirrored != mirrored || !agenda.wants(*scale))
                    continue;
                if (stop.stop_requested())
                    return;
                if (!summed) {
                    summed = sums.of(mirrored ? pyramid.mirrored(*scale) : pyramid.upright(*scale),
                                     stride, scale->step);
                }
                agenda.task->search->searchScale(*summed, agenda.scales[agenda.next],
                                                 agenda.task->found);
                ++agenda.next;
            }
        }
    }
}

void CascadeSearch::searchScale(KernelPicture picture, const CascadeScale& scale,
                                std::vector<cv::Rect>& found) {
    picture.windowsX = scale.windows.width;
    picture.windowsY = scale.windows.height;
    const std::size_t bytes = kernels.stripBytes(static_cast<std::size_t>(scale.windows.width));
    const std::size_t words = (bytes + sizeof(std::uint64_t) - 1) / sizeof(std::uint64_t);
    if (strip.size() < words)
        strip.resize(words);
    Finds finds{scale, found};
    const KernelMemory memory{reinterpret_cast<unsigned char*>(strip.data())};
    kernels.search(picture, tables.forRows(picture.stride, scale.step), memory,
                   {&finds, &Finds::add});
}
