#include "face/face_detection.h"

#include "face/cascade_guard.h"
#include "face/shared_search.h"

#include <QDebug>
#include <algorithm>
#include <filesystem>
#include <opencv2/imgproc.hpp>
#include <span>
#include <tuple>

using face::DetectorMode;
using face::Options;
using face::rectIou;

namespace {

constexpr double mergeOverlap = 0.35;
/// A merged box is replaced by one that is this much larger.
constexpr double mergeLargerArea = 1.2;

// The body pass searches crops at their full size for faces too small for the shrunk frame.
constexpr int regionMinFaceSize = 24;
constexpr int regionMinQualityFaceSize = 34;
constexpr int regionMinWidth = 60;
constexpr int regionMinHeight = 120;
constexpr int headMinSide = 40;
/// A box lower than `lowBodyHeight` is most likely only head and shoulders: half of it would cut
/// the head, so that its crop has this height.
constexpr int headLowBodyHeight = 80;
constexpr int lowBodyHeight = 160;
/// Wide crops hold near people, whose faces need less enlarging.
constexpr int wideCrop = 220;

constexpr char farCropSuffix[] = "+far_crop";

double area(const cv::Rect& rect) {
    return static_cast<double>(rect.width) * static_cast<double>(rect.height);
}

int scaled(int value, double factor) {
    return static_cast<int>(value * factor);
}

/// What the detectors are called in overlays and log lines.
constexpr char frontalName[] = "frontal";
constexpr char leftName[] = "profile_left";
constexpr char rightName[] = "profile_right";

bool shrinks(const Options& options) {
    return options.detectScale < 1.0;
}

/// The image that a cascade searches; empty when shrinking leaves no pixel.
cv::Mat prepared(const cv::Mat& gray, const Options& options) {
    cv::Mat image;
    if (shrinks(options)) {
        const cv::Size size(cvRound(gray.cols * options.detectScale),
                            cvRound(gray.rows * options.detectScale));
        if (size.empty())
            return image;
        cv::resize(gray, image, cv::Size(), options.detectScale, options.detectScale,
                   cv::INTER_AREA);
    } else {
        image = gray;
    }
    if (!image.empty())
        cv::equalizeHist(image, image);
    return image;
}

/// Hits are then in pixels of the image before it was shrunk.
void searchPrepared(const cv::Mat& image, std::span<PictureSearch> searches, const Options& options,
                    const std::stop_token& stop) {
    if (image.empty())
        return;
    const int minSide = std::max(1, scaled(options.minFaceSize, options.detectScale));
    detectTogether(image, searches, options.scaleFactor, options.minNeighbors,
                   cv::Size(minSide, minSide), stop);
    const double back = 1.0 / options.detectScale;
    for (PictureSearch& search : searches) {
        for (cv::Rect& hit : search.hits) {
            hit = cv::Rect(scaled(hit.x, back), scaled(hit.y, back), scaled(hit.width, back),
                           scaled(hit.height, back));
        }
    }
}

struct Detector {
    const char* name = "";
    cv::CascadeClassifier* cascade = nullptr;
    bool mirrored = false; ///< Searches the mirror image.
};

std::vector<Detector> selectedDetectors(cv::CascadeClassifier& frontal,
                                        cv::CascadeClassifier* profile, DetectorMode mode) {
    const auto selects = [mode](DetectorMode one) {
        return mode == one || mode == DetectorMode::FrontalOrProfile;
    };
    std::vector<Detector> detectors;
    if (selects(DetectorMode::Frontal))
        detectors.push_back({frontalName, &frontal, false});
    if (profile && selects(DetectorMode::ProfileLeft))
        detectors.push_back({leftName, profile, false});
    if (profile && selects(DetectorMode::ProfileRight))
        detectors.push_back({rightName, profile, true});
    return detectors;
}

/// Halving an even width takes the same pairs of columns from either side; in general the mirror
/// image has to be shrunk on its own. Equalizing does not depend on where a pixel is.
bool halvesEvenly(const cv::Mat& gray, const Options& options) {
    return options.detectScale == 0.5 && gray.cols % 2 == 0;
}

/// How many of the detectors search the same pixels as the first one, or their mirror image.
std::size_t countSharing(std::span<const Detector> detectors, const cv::Mat& gray,
                         const Options& options) {
    // An image that is not shrunk is equalized in place, again for every detector: equalizing a
    // second time changes pixels, so the first result cannot be used instead.
    if (!shrinks(options))
        return 1;
    const auto differing = std::find_if(
        detectors.begin(), detectors.end(), [&, first = detectors.front()](const Detector& next) {
            return next.mirrored != first.mirrored && !halvesEvenly(gray, options);
        });
    return static_cast<std::size_t>(differing - detectors.begin());
}

/// Detectors that share an image.
std::vector<FaceDetection> searchImage(const cv::Mat& gray, std::span<const Detector> detectors,
                                       const Options& options, const std::stop_token& stop) {
    cv::Mat image = gray;
    const bool ownMirror = detectors.front().mirrored && !halvesEvenly(gray, options);
    if (ownMirror) {
        image.release();
        cv::flip(gray, image, 1);
    }
    std::vector<PictureSearch> searches;
    for (const Detector& detector : detectors)
        searches.push_back({detector.cascade, detector.mirrored && !ownMirror});
    searchPrepared(prepared(image, options), searches, options, stop);

    std::vector<FaceDetection> found;
    for (std::size_t i = 0; i < detectors.size(); ++i) {
        for (cv::Rect hit : searches[i].hits) {
            if (detectors[i].mirrored)
                hit.x = gray.cols - hit.x - hit.width;
            found.push_back({hit, detectors[i].name});
        }
    }
    return found;
}

/// Where the head of a body is looked for; empty where the body is not searched.
cv::Rect headCrop(const QRect& body, const cv::Size& image) {
    if (image.empty() || body.isEmpty())
        return {};
    const int left = std::max(body.left(), 0);
    const int top = std::max(body.top(), 0);
    const int right = std::min(body.right(), image.width - 1);
    const int bottom = std::min(body.bottom(), image.height - 1);
    if (left > right || top > bottom)
        return {};
    const int width = right - left + 1;
    const int height = bottom - top + 1;
    if (width < regionMinWidth || height < regionMinHeight)
        return {};
    cv::Rect crop(left + width / 8, top, 3 * width / 4,
                  height < lowBodyHeight ? headLowBodyHeight : height / 2);
    crop.width = std::min(crop.width, image.width - crop.x);
    crop.height = std::min(crop.height, image.height - crop.y);
    return crop.width < headMinSide || crop.height < headMinSide ? cv::Rect() : crop;
}

} // namespace

bool loadCascade(cv::CascadeClassifier& cascade, const std::string& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error))
        return false;
    try {
        if (!cascade.load(path))
            return false;
    } catch (const std::exception&) {
        return false;
    }
    const std::string reason = replaceCascadeSearch(cascade, path);
    if (!reason.empty())
        qInfo() << "Qt face cascade searched by the library:" << path.c_str() << reason.c_str();
    return true;
}

double face::rectIou(const cv::Rect& a, const cv::Rect& b) {
    if (a.width <= 0 || a.height <= 0 || b.width <= 0 || b.height <= 0)
        return 0.0;
    const double width =
        std::min<double>(double(a.x) + a.width, double(b.x) + b.width) - std::max<double>(a.x, b.x);
    const double height = std::min<double>(double(a.y) + a.height, double(b.y) + b.height) -
                          std::max<double>(a.y, b.y);
    if (width <= 0.0 || height <= 0.0)
        return 0.0;
    const double intersection = width * height;
    return intersection / (area(a) + area(b) - intersection);
}

int detectorPriority(const std::string& detector) {
    if (detector == frontalName)
        return 3;
    return detector == leftName || detector == rightName ? 2 : 1;
}

std::vector<cv::Rect> detectFaces(cv::CascadeClassifier& cascade, cv::Mat& gray,
                                  const Options& options) {
    PictureSearch search{&cascade};
    searchPrepared(prepared(gray, options), {&search, 1}, options, {});
    return std::move(search.hits);
}

std::vector<FaceDetection> detectFacesMulti(cv::CascadeClassifier& frontalCascade,
                                            cv::CascadeClassifier* profileCascade, cv::Mat& gray,
                                            const Options& options, const std::stop_token& stop) {
    std::vector<FaceDetection> found;
    if (gray.empty())
        return found;
    const std::vector<Detector> detectors =
        selectedDetectors(frontalCascade, profileCascade, options.detector);
    std::span<const Detector> left(detectors);
    while (!left.empty() && !stop.stop_requested()) {
        const std::size_t count = countSharing(left, gray, options);
        const std::vector<FaceDetection> hits = searchImage(gray, left.first(count), options, stop);
        found.insert(found.end(), hits.begin(), hits.end());
        left = left.subspan(count);
    }
    return dedupeDetections(std::move(found));
}

std::vector<FaceDetection> detectFacesInBodyRegions(cv::CascadeClassifier& frontalCascade,
                                                    cv::CascadeClassifier* profileCascade,
                                                    const cv::Mat& gray, const Options& options,
                                                    const QList<QRect>& bodyRegions,
                                                    const std::stop_token& stop) {
    Options cropOptions = options;
    cropOptions.detectScale = 1.0;
    cropOptions.minFaceSize = regionMinFaceSize;
    cropOptions.minQualityFaceSize = regionMinQualityFaceSize;

    std::vector<FaceDetection> found;
    for (const QRect& body : bodyRegions) {
        const cv::Rect crop = headCrop(body, gray.size());
        if (crop.empty())
            continue;
        if (stop.stop_requested())
            break;
        const double factor = crop.width >= wideCrop ? 1.5 : 2.0;
        cv::Mat enlarged;
        cv::resize(gray(crop), enlarged, cv::Size(), factor, factor, cv::INTER_CUBIC);
        for (const FaceDetection& hit :
             detectFacesMulti(frontalCascade, profileCascade, enlarged, cropOptions, stop)) {
            found.push_back({cv::Rect(static_cast<int>(hit.rect.x / factor) + crop.x,
                                      static_cast<int>(hit.rect.y / factor) + crop.y,
                                      static_cast<int>(hit.rect.width / factor),
                                      static_cast<int>(hit.rect.height / factor)),
                             hit.detector + farCropSuffix});
        }
    }
    return dedupeDetections(std::move(found));
}

std::vector<FaceDetection> dedupeDetections(std::vector<FaceDetection> detections) {
    // The library's threads deliver their hits in any order, so that between equal ones the place
    // decides: the result of a picture is always the same.
    const auto key = [](const FaceDetection& hit) {
        return std::tuple(-area(hit.rect), -detectorPriority(hit.detector), hit.rect.y, hit.rect.x);
    };
    std::stable_sort(
        detections.begin(), detections.end(),
        [&key](const FaceDetection& a, const FaceDetection& b) { return key(a) < key(b); });
    std::vector<FaceDetection> merged;
    for (const FaceDetection& hit : detections) {
        const auto kept =
            std::find_if(merged.begin(), merged.end(), [&hit](const FaceDetection& other) {
                return rectIou(hit.rect, other.rect) >= mergeOverlap;
            });
        if (kept == merged.end())
            merged.push_back(hit);
        else if (detectorPriority(hit.detector) > detectorPriority(kept->detector) ||
                 area(hit.rect) > mergeLargerArea * area(kept->rect))
            *kept = hit;
    }
    return merged;
}
