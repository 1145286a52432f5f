#include "library_search.h"

#include <QtGlobal>
#include <algorithm>
#include <tuple>

cv::CascadeClassifier librarySearching(const CascadeData& cascade) {
    const cv::FileStorage storage(cascadeText(cascade),
                                  cv::FileStorage::READ | cv::FileStorage::MEMORY);
    cv::CascadeClassifier library;
    if (!library.read(storage.getFirstTopLevelNode()))
        qFatal("the library does not read a made cascade");
    return library;
}

std::vector<cv::Rect> libraryFinds(cv::CascadeClassifier& library, const cv::Mat& picture,
                                   double factor, cv::Size minSize) {
    std::vector<cv::Rect> found;
    library.cc->detectMultiScale(picture, found, factor, 0, 0, minSize, cv::Size());
    return sorted(found);
}

std::vector<cv::Rect> sorted(std::vector<cv::Rect> rects) {
    const auto key = [](const cv::Rect& rect) {
        return std::tuple(rect.width, rect.height, rect.y, rect.x);
    };
    std::sort(rects.begin(), rects.end(),
              [&key](const cv::Rect& a, const cv::Rect& b) { return key(a) < key(b); });
    return rects;
}
