#include "face/cascade_guard.h"

#include "face/cascade_data.h"
#include "face/cascade_order.h"
#include "face/cascade_search.h"

#include <algorithm>
#include <array>
#include <memory>
#include <tuple>

namespace {

constexpr double groupTolerance = 0.2; // as the library groups
constexpr double scaleFactor = 1.1;
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
        if (!canSearch(image, factor, maxSize)) {
            library->detectMultiScale(image, hits, factor, minNeighbors, flags, minSize, maxSize);
            return;
        }
        hits = search->candidates(image.getMat(), factor, minSize);
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

private:
    bool canSearch(cv::InputArray image, double factor, cv::Size maxSize) {
        return search && image.isMat() && image.dims() == 2 && image.type() == CV_8UC1 &&
               image.size().width >= search->window().width &&
               image.size().height >= search->window().height && factor >= minScaleFactor &&
               factor <= maxScaleFactor && (maxSize.width == 0 || maxSize.height == 0) &&
               library->getMaskGenerator().empty();
    }

    cv::Ptr<cv::BaseCascadeClassifier> library;
    std::unique_ptr<CascadeSearch> search;
};

void sort(std::vector<cv::Rect>& rects) {
    const auto key = [](const cv::Rect& rect) {
        return std::tuple(rect.width, rect.height, rect.y, rect.x);
    };
    std::sort(rects.begin(), rects.end(),
              [&key](const cv::Rect& a, const cv::Rect& b) { return key(a) < key(b); });
}

bool findTheSame(cv::BaseCascadeClassifier& library, CascadeSearch& search,
                 const std::vector<cv::Mat>& pictures) {
    return std::all_of(pictures.begin(), pictures.end(), [&](const cv::Mat& picture) {
        std::vector<cv::Rect> theirs;
        library.detectMultiScale(picture, theirs, scaleFactor, 0, 0, cv::Size(), cv::Size());
        std::vector<cv::Rect> ours = search.candidates(picture, scaleFactor, cv::Size());
        sort(theirs);
        sort(ours);
        return ours == theirs;
    });
}

bool cutFindTheSame(const CascadeData& cascade, std::size_t stages,
                    const std::vector<cv::Mat>& pictures) {
    const CascadeData cut = cutCascade(cascade, stages);
    const cv::FileStorage storage(cascadeText(cut),
                                  cv::FileStorage::READ | cv::FileStorage::MEMORY);
    cv::CascadeClassifier library;
    const auto search = CascadeSearch::make(cut, supportedCascadeKernels().front());
    return search && library.read(storage.getFirstTopLevelNode()) &&
           findTheSame(*library.cc, *search, pictures);
}

} // namespace

std::string replaceCascadeSearch(cv::CascadeClassifier& cascade, const std::string& path) {
    try {
        const std::optional<CascadeData> data = readCascade(path);
        const std::vector<cv::Mat> pictures = trialPictures();
        auto search = data ? CascadeSearch::make(quicklyOrdered(*data, pictures.front()),
                                                 supportedCascadeKernels().front())
                           : nullptr;
        if (!search)
            return "a kind of cascade that only the library knows";
        for (const std::size_t stages : {1U, 3U, 9U}) {
            if (stages < data->stages.size() && !cutFindTheSame(*data, stages, pictures))
                return "its first stages find something different";
        }
        if (!findTheSame(*cascade.cc, *search, pictures))
            return "both find something different";
        cascade.cc = cv::Ptr<SearchingCascade>(new SearchingCascade(cascade.cc, std::move(search)));
        return {};
    } catch (const std::exception& error) {
        return error.what();
    }
}
