#include "room_samples.h"

#include "face/face_detection.h"
#include "face/face_quality.h"
#include "face/owner_samples.h"
#include "frame_source.h"
#include "room_optics.h"
#include "room_person.h"
#include "room_story.h"

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <optional>
#include <stdexcept>
#include <vector>

namespace virtual_kinect {
namespace {

using namespace room;

/// Fewer than this would make a poor owner: something is wrong with the detector.
constexpr int minSamples = 20;

/// A stretch of the story and how often to look, in seconds.
struct Session {
    Span span;
    double every;
};

/// Standing, walking up, very close, walking back, standing beside the other one. The step lengths
/// keep clear of the periods in which the owner sways.
constexpr Session sessions[]{{ownerFrontal, 0.63},
                             {{ownerFrontal.to, ownerVeryClose.from}, 0.24},
                             {ownerVeryClose, 0.61},
                             {{ownerVeryClose.to, ownerFrontalAgain.from}, 0.37},
                             {ownerReturned, 1.47}};

std::optional<PersonMoment> ownerAt(double seconds) {
    for (const PersonMoment& moment : peopleAt(seconds))
        if (moment.who == Person::Owner)
            return moment;
    return std::nullopt;
}

/// The part of the picture around the owner's head, which lies in its middle.
cv::Rect aroundHead(const PersonMoment& owner) {
    constexpr double reach_m = 0.28;
    const cv::Point2d middle =
        project({owner.x_m, headHeight_m(owner.who) + owner.lift_m, owner.z_m});
    const int reach = cvRound(reach_m * focalPixels / owner.z_m);
    const cv::Rect area(cvRound(middle.x) - reach, cvRound(middle.y) - reach, 2 * reach, 2 * reach);
    return area & cv::Rect(0, 0, colorWidth, colorHeight);
}

cv::Mat sampleAt(double seconds, FrameSource& source, FrameSet& frames,
                 cv::CascadeClassifier& cascade, const face::Options& options) {
    const std::optional<PersonMoment> owner = ownerAt(seconds);
    if (!owner)
        return {};
    source.render(static_cast<std::uint64_t>(std::lround(seconds * framesPerSecond)), frames);
    const cv::Mat color(colorHeight, colorWidth, CV_8UC4, frames.bgrx.data());
    cv::Mat gray;
    cv::cvtColor(color(aroundHead(*owner)), gray, cv::COLOR_BGRA2GRAY);
    const std::vector<cv::Rect> faces = detectFaces(cascade, gray, options);
    const cv::Point middle(gray.cols / 2, gray.rows / 2);
    const auto box = std::ranges::find_if(
        faces, [&](const cv::Rect& candidate) { return candidate.contains(middle); });
    if (box == faces.end())
        return {};
    const cv::Mat face = gray(*box & cv::Rect({}, gray.size())).clone();
    return faceQuality(face, options) == FaceQuality::Accepted ? recognizerInput(face) : cv::Mat();
}

} // namespace

int writeOwnerSamples(const std::filesystem::path& folder) {
    const face::Options options;
    cv::CascadeClassifier cascade;
    if (!loadCascade(cascade, options.frontalCascadePath))
        throw std::runtime_error("cannot load the face cascade " + options.frontalCascadePath);
    std::filesystem::create_directories(folder);

    const std::unique_ptr<FrameSource> source = makeRoomSource();
    FrameSet frames;
    int written = 0;
    for (const auto& [span, every] : sessions) {
        for (double seconds = span.from + 0.1; seconds < span.to; seconds += every) {
            const cv::Mat sample = sampleAt(seconds, *source, frames, cascade, options);
            if (sample.empty())
                continue;
            char name[32];
            std::snprintf(name, sizeof name, "owner-%02d.png", written);
            if (!cv::imwrite((folder / name).string(), sample))
                throw std::runtime_error("cannot write " + (folder / name).string());
            ++written;
        }
    }
    if (written < minSamples)
        throw std::runtime_error("only " + std::to_string(written) + " faces were found");
    return written;
}

} // namespace virtual_kinect
