#include "face/owner_samples.h"

#include "face/picture_header.h"

#include <QFile>
#include <algorithm>
#include <array>
#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <string_view>

namespace fs = std::filesystem;

namespace {

/// Samples are face crops. A larger picture is a mistake, and decoding it would hold up a stop for
/// seconds.
constexpr qint64 maxSamplePixels = qint64{1} << 26;
/// The same for a file whose header does not tell its size.
constexpr qint64 maxSampleBytes = qint64{1} << 24;

bool hasSampleName(const fs::path& path) {
    static constexpr std::array<std::string_view, 4> extensions{".png", ".jpg", ".jpeg", ".pgm"};
    return path.filename() != "manifest.json" &&
           std::find(extensions.begin(), extensions.end(), path.extension().string()) !=
               extensions.end();
}

bool isSmallEnough(const fs::path& path) {
    QFile file(QFile::decodeName(path.c_str()));
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QSize size = promisedSize(file);
    return size.isEmpty() ? file.size() <= maxSampleBytes
                          : qint64{size.width()} * size.height() <= maxSamplePixels;
}

} // namespace

cv::Mat recognizerInput(const cv::Mat& crop) {
    cv::Mat equalized;
    cv::equalizeHist(crop, equalized);
    cv::Mat input;
    cv::resize(equalized, input, cv::Size(sampleSidePx, sampleSidePx), 0.0, 0.0, cv::INTER_AREA);
    return input;
}

std::vector<std::string> ownerSamplePaths(const std::string& directory,
                                          const std::stop_token& stop) {
    std::vector<fs::path> paths;
    std::error_code error;
    fs::recursive_directory_iterator entry(directory, error);
    for (; entry != fs::recursive_directory_iterator() && !stop.stop_requested();
         entry.increment(error)) {
        std::error_code unknown;
        if (entry->is_regular_file(unknown) && hasSampleName(entry->path()))
            paths.push_back(entry->path());
    }
    std::sort(paths.begin(), paths.end());
    return {paths.begin(), paths.end()};
}

cv::Mat readOwnerSample(const std::string& path) {
    try {
        if (!isSmallEnough(path))
            return {};
        const cv::Mat gray = cv::imread(path, cv::IMREAD_GRAYSCALE);
        if (gray.type() != CV_8UC1)
            return {}; // Some decoders do not give the gray levels that they are asked for.
        const cv::Size side(sampleSidePx, sampleSidePx);
        if (gray.empty() || gray.size() == side)
            return gray;
        cv::Mat sample;
        cv::resize(gray, sample, side, 0.0, 0.0, cv::INTER_AREA);
        return sample;
    } catch (const std::exception&) {
        return {}; // Decoders throw for some damaged files and return nothing for others.
    }
}

bool loadTavinSamples(const std::string& directory, std::vector<TrainingSample>& samples,
                      const std::stop_token& stop) {
    std::error_code error;
    if (!fs::exists(fs::status(directory, error)))
        return false;
    for (const std::string& path : ownerSamplePaths(directory, stop)) {
        if (stop.stop_requested())
            break;
        if (cv::Mat image = readOwnerSample(path); !image.empty())
            samples.push_back({std::move(image), ownerClass});
    }
    return !samples.empty();
}
