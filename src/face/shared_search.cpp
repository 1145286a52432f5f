#include "face/shared_search.h"

#include <opencv2/imgproc.hpp>

namespace {

constexpr double groupTolerance = 0.2; // as the library groups
/// Scale factors beyond these are not worth a search of our own: they take the library for ever, or
/// one scale.
constexpr double minScaleFactor = 1.001;
constexpr double maxScaleFactor = 100.0;

/// A cascade whose searches are done by CascadeSearch where it can, and by the library elsewhere.
class SearchingCascade : public cv::BaseCascadeClassifier {
public:
    SearchingCascade(cv::Ptr<cv::BaseCascadeClassifier> theirs, std::unique_ptr<CascadeSearch> ours)
        : library(std::move(theirs)), search(std::move(ours)) {}

    bool empty() const override { return library->empty(); }
    bool load(const cv::String& filename) override {
        search.reset(); // it belongs to another file
        return library->load(filename);
    }
    void detectMultiScale(cv::InputArray image, std::vector<cv::Rect>& hits, double factor,
                          int minNeighbors, int flags, cv::Size minSize,
                          cv::Size maxSize) override {
        CascadeSearch* ours = image.isMat() ? searchFor(image.getMat(), factor) : nullptr;
        if (!ours || (maxSize.width != 0 && maxSize.height != 0)) {
            library->detectMultiScale(image, hits, factor, minNeighbors, flags, minSize, maxSize);
            return;
        }
        hits = ours->candidates(image.getMat(), factor, minSize);
        cv::groupRectangles(hits, minNeighbors, groupTolerance);
    }
    void detectMultiScale(cv::InputArray image, std::vector<cv::Rect>& hits,
                          std::vector<int>& numbers, double factor, int minNeighbors, int flags,
                          cv::Size minSize, cv::Size maxSize) override {
        library->detectMultiScale(image, hits, numbers, factor, minNeighbors, flags, minSize,
                                  maxSize);
    }
    void detectMultiScale(cv::InputArray image, std::vector<cv::Rect>& hits,
                          std::vector<int>& levels, std::vector<double>& weights, double factor,
                          int minNeighbors, int flags, cv::Size minSize, cv::Size maxSize,
                          bool outputRejectLevels) override {
        library->detectMultiScale(image, hits, levels, weights, factor, minNeighbors, flags,
                                  minSize, maxSize, outputRejectLevels);
    }
    bool isOldFormatCascade() const override { return library->isOldFormatCascade(); }
    cv::Size getOriginalWindowSize() const override { return library->getOriginalWindowSize(); }
    int getFeatureType() const override { return library->getFeatureType(); }
    void* getOldCascade() override { return library->getOldCascade(); }
    void setMaskGenerator(const cv::Ptr<MaskGenerator>& generator) override {
        library->setMaskGenerator(generator);
    }
    cv::Ptr<MaskGenerator> getMaskGenerator() override { return library->getMaskGenerator(); }

    /// Ours, where it knows how to search such a picture; otherwise null.
    CascadeSearch* searchFor(const cv::Mat& picture, double factor) {
        const bool known = search && picture.dims == 2 && picture.type() == CV_8UC1 &&
                           picture.cols >= search->window().width &&
                           picture.rows >= search->window().height && factor >= minScaleFactor &&
                           factor <= maxScaleFactor && library->getMaskGenerator().empty();
        return known ? search.get() : nullptr;
    }

private:
    cv::Ptr<cv::BaseCascadeClassifier> library;
    std::unique_ptr<CascadeSearch> search;
};

/// A task for each search, or none where one of them is the library's.
std::vector<CascadeSearch::Task>
tasksFor(const cv::Mat& picture, std::span<const PictureSearch> searches, double scaleFactor) {
    std::vector<CascadeSearch::Task> tasks;
    for (const PictureSearch& wanted : searches) {
        auto* cascade = dynamic_cast<SearchingCascade*>(wanted.cascade->cc.get());
        CascadeSearch* search = cascade ? cascade->searchFor(picture, scaleFactor) : nullptr;
        if (!search)
            return {};
        tasks.push_back({search, wanted.mirrored});
    }
    return tasks;
}

/// What cv::CascadeClassifier does with all candidates.
std::vector<cv::Rect> grouped(std::vector<cv::Rect> candidates, int minNeighbors, cv::Size size) {
    cv::groupRectangles(candidates, minNeighbors, groupTolerance);
    for (cv::Rect& hit : candidates)
        hit &= cv::Rect(cv::Point(), size);
    std::erase_if(candidates, [](const cv::Rect& hit) { return hit.empty(); });
    return candidates;
}

} // namespace

void searchBy(cv::CascadeClassifier& cascade, std::unique_ptr<CascadeSearch> search) {
    cascade.cc = cv::Ptr<SearchingCascade>(new SearchingCascade(cascade.cc, std::move(search)));
}

void detectTogether(const cv::Mat& picture, std::span<PictureSearch> searches, double scaleFactor,
                    int minNeighbors, cv::Size minSize, const std::stop_token& stop) {
    std::vector<CascadeSearch::Task> tasks = tasksFor(picture, searches, scaleFactor);
    if (!tasks.empty()) {
        CascadeSearch::searchTogether(picture, tasks, scaleFactor, minSize, stop);
        for (std::size_t i = 0; i < tasks.size(); ++i)
            searches[i].hits = grouped(std::move(tasks[i].found), minNeighbors, picture.size());
        return;
    }
    for (PictureSearch& next : searches) {
        if (stop.stop_requested())
            return;
        cv::Mat mirror;
        if (next.mirrored)
            cv::flip(picture, mirror, 1);
        const cv::Mat& searched = next.mirrored ? mirror : picture;
        next.cascade->detectMultiScale(searched, next.hits, scaleFactor, minNeighbors, 0, minSize,
                                       cv::Size());
    }
}
