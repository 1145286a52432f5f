#include "face/cascade_guard.h"

#include "face/cascade_data.h"
#include "face/cascade_order.h"
#include "face/cascade_search.h"
#include "face/shared_search.h"

#include <algorithm>
#include <array>
#include <memory>
#include <tuple>

namespace {

constexpr double scaleFactor = 1.1;

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
        searchBy(cascade, std::move(search));
        return {};
    } catch (const std::exception& error) {
        return error.what();
    }
}
