#include "recording_source.h"

#include "recording_index.h"

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <optional>
#include <stdexcept>

namespace virtual_kinect {

namespace {

/// Decoded frames that are kept, so that short recordings need not be decoded again and again while
/// long ones do not fill the memory. About a dozen frames of a sensor's size.
constexpr std::size_t mostKeptBytes = std::size_t{128} << 20;

/// Decodes an image; throws when it is not of the given kind and size.
cv::Mat decode(const std::filesystem::path& file, int flags, int type, cv::Size size) {
    const cv::Mat image = cv::imread(file.string(), flags);
    if (image.empty() || image.type() != type || image.size() != size)
        throw std::runtime_error(file.string() + " cannot be decoded");
    return image;
}

void readFloats(const std::filesystem::path& file, cv::Size size, std::vector<float>& out) {
    const cv::Mat image = decode(file, cv::IMREAD_UNCHANGED, CV_16UC1, size);
    cv::Mat floats(size, CV_32FC1, out.data());
    image.convertTo(floats, CV_32F);
}

class RecordingSource : public FrameSource {
public:
    explicit RecordingSource(RecordingIndex recordingIndex)
        : index(std::move(recordingIndex)), kept(index.moments.size()) {
        FrameSet first;
        render(0, first);
    }

    std::string serialNumber() const override { return "recording-" + index.name; }
    Calibration calibration() const override { return index.calibration; }
    std::uint64_t framesInARound() const override { return index.moments.size(); }

    std::chrono::microseconds timeOf(std::uint64_t number) const override {
        const auto rounds = static_cast<std::int64_t>(number / index.moments.size());
        return rounds * index.period + index.moments[number % index.moments.size()].time;
    }

    void render(std::uint64_t number, FrameSet& out) override {
        const std::size_t at = number % index.moments.size();
        if (kept[at]) {
            out = *kept[at];
            return;
        }
        decodeMoment(index.moments[at], out);
        const std::size_t bytes =
            out.bgrx.size() + (out.infrared.size() + out.depth.size()) * sizeof(float);
        if (keptBytes + bytes <= mostKeptBytes) {
            kept[at] = out;
            keptBytes += bytes;
        }
    }

private:
    void decodeMoment(const RecordedMoment& moment, FrameSet& out) const {
        const cv::Size colorSize(index.colorWidth, index.colorHeight);
        const cv::Size depthSize(index.depthWidth, index.depthHeight);
        out.colorWidth = colorSize.width;
        out.colorHeight = colorSize.height;
        out.depthWidth = depthSize.width;
        out.depthHeight = depthSize.height;
        out.bgrx.resize(static_cast<std::size_t>(colorSize.area()) * 4);
        out.depth.resize(static_cast<std::size_t>(depthSize.area()));
        if (moment.color.empty()) {
            std::fill(out.bgrx.begin(), out.bgrx.end(), std::uint8_t{0});
        } else {
            const cv::Mat color = decode(
                moment.color, cv::IMREAD_COLOR | cv::IMREAD_IGNORE_ORIENTATION, CV_8UC3, colorSize);
            cv::Mat pixels(colorSize, CV_8UC4, out.bgrx.data());
            cv::cvtColor(color, pixels, cv::COLOR_BGR2BGRA);
        }
        readFloats(moment.depth, depthSize, out.depth);
        out.infrared.assign(out.depth.size(), 0.0F);
        if (!moment.infrared.empty())
            readFloats(moment.infrared, depthSize, out.infrared);
    }

    const RecordingIndex index;
    std::vector<std::optional<FrameSet>> kept;
    std::size_t keptBytes = 0;
};

} // namespace

std::unique_ptr<FrameSource> makeRecordingSource(const std::filesystem::path& folder) {
    return std::make_unique<RecordingSource>(readRecordingIndex(folder));
}

} // namespace virtual_kinect
