#include "face/owner_samples.h"

#include <QFile>
#include <QImageReader>
#include <algorithm>
#include <array>
#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <string_view>

namespace fs = std::filesystem;

namespace {

/// Samples are face crops; what is larger than this is a mistake or an attack, and decoding it
/// would hold up a stop for seconds.
constexpr qint64 maxSamplePixels = qint64{1} << 26;

bool hasSampleName(const fs::path& path) {
    static constexpr std::array<std::string_view, 4> extensions{".png", ".jpg", ".jpeg", ".pgm"};
    return path.filename() != "manifest.json" &&
           std::find(extensions.begin(), extensions.end(), path.extension().string()) !=
               extensions.end();
}

/// Whether the file's header, read without decoding it, promises an image small enough to decode.
bool isSmallEnough(const fs::path& path) {
    QFile file(QFile::decodeName(path.c_str()));
    if (!file.open(QIODevice::ReadOnly))
        return false;
    // The reader does not know this kind everywhere, and the kind itself has a bound that is low
    // enough (16383 x 16383).
    const QByteArray start = file.peek(12);
    if (start.startsWith("RIFF") && start.endsWith("WEBP"))
        return true;
    QImageReader reader(&file);
    const QSize size = reader.size();
    return !size.isEmpty() && qint64{size.width()} * size.height() <= maxSamplePixels;
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
        const cv::Mat grey = cv::imread(path, cv::IMREAD_GRAYSCALE);
        const cv::Size side(sampleSidePx, sampleSidePx);
        if (grey.empty() || grey.size() == side)
            return grey;
        cv::Mat sample;
        cv::resize(grey, sample, side, 0.0, 0.0, cv::INTER_AREA);
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
