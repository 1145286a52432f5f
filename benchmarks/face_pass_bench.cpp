#include "face/face_pass.h"
#include "face/owner_model.h"
#include "face/scripted_detector.h"
#include "face/synthetic_face.h"
#include "ratio_table.h"

#include <benchmark/benchmark.h>
#include <opencv2/imgproc.hpp>

#include <memory>
#include <stdexcept>

namespace {

const cv::Size frameSize(1920, 1080);
constexpr int lostMs = 5000;

/// A wall with soft texture and three faces.
QImage roomFrame() {
    cv::Mat coarse(27, 48, CV_32F);
    cv::RNG(3).fill(coarse, cv::RNG::NORMAL, 110.0, 25.0);
    cv::Mat wall;
    cv::resize(coarse, wall, frameSize, 0.0, 0.0, cv::INTER_CUBIC);
    cv::Mat grain(frameSize, CV_32F);
    cv::RNG(4).fill(grain, cv::RNG::NORMAL, 0.0, 1.0);
    cv::Mat grey;
    cv::Mat(wall + grain).convertTo(grey, CV_8U);
    for (int person = 0; person < 3; ++person) {
        syntheticFace(180, person == 1 ? 7U : 1U)
            .copyTo(grey(cv::Rect(300 + 500 * person, 200, 180, 180)));
    }
    return colourFrame(grey);
}

QList<QRect> threeBodies() {
    return {QRect(210, 160, 360, 800), QRect(710, 160, 360, 800), QRect(1210, 160, 360, 800)};
}

/// The search without anything around it: the pictures that the detectors of one pass were given.
struct BareSearch {
    struct Call {
        cv::Mat image;
        cv::Size minSize;
        bool frontal = false;
    };
    std::vector<Call> calls;

    BareSearch(const QImage& frame, const QList<QRect>& bodies, const face::Options& options) {
        Scripted frontal;
        Scripted profile;
        cv::Mat grey = greyFrame(frame);
        detectFacesMulti(frontal.cascade, &profile.cascade, grey, options);
        detectFacesInBodyRegions(frontal.cascade, &profile.cascade, grey, options, bodies);
        add(*frontal.seen, true);
        add(*profile.seen, false);
    }
    void add(const ScriptedDetector::Seen& seen, bool frontal) {
        for (std::size_t i = 0; i < seen.images.size(); ++i)
            calls.push_back({seen.images[i], seen.minSizes[i], frontal});
    }
    void run(cv::CascadeClassifier& frontal, cv::CascadeClassifier& profile,
             const face::Options& options) const {
        for (const Call& call : calls) {
            std::vector<cv::Rect> hits;
            (call.frontal ? frontal : profile)
                .detectMultiScale(call.image, hits, options.scaleFactor, options.minNeighbors, 0,
                                  call.minSize, cv::Size());
            benchmark::DoNotOptimize(hits.data());
        }
    }
};

struct State {
    explicit State(QList<QRect> regions)
        : frame(roomFrame()), bodies(std::move(regions)), bare(frame, bodies, options) {
        if (!loadCascade(tools.frontal, options.frontalCascadePath) ||
            !loadCascade(tools.profile, options.profileCascadePath) ||
            !libraryFrontal.load(options.frontalCascadePath) ||
            !libraryProfile.load(options.profileCascadePath))
            throw std::runtime_error("the cascades are not installed");
        std::vector<TrainingSample> samples;
        for (unsigned person = 1; person <= 20; ++person)
            samples.push_back({syntheticFace(sampleSidePx, person), ownerClass});
        tools.recognizer = trainOwnerModel(samples);
    }
    /// From the frame to what is shown.
    void pass() {
        cv::Mat grey = greyFrame(frame);
        const FacePass found = findFaces(grey, tools, options, bodies).value();
        now += 180;
        tracks = updateFaceTracks(std::move(tracks), found.faces, now, lostMs);
        benchmark::DoNotOptimize(faceOverlays(tracks, now, lostMs));
    }

    face::Options options;
    QImage frame;
    QList<QRect> bodies;
    BareSearch bare;
    FaceTools tools;
    cv::CascadeClassifier libraryFrontal; // as the library loads them, with its own search
    cv::CascadeClassifier libraryProfile;
    FaceTracks tracks;
    qint64 now = 0;
};

RatioRow faceRow(std::string what, QList<QRect> bodies) {
    return {
        .what = std::move(what),
        .against = "the library's searches of its images",
        .atMost = {}, // 0.12 is aimed at, and not yet measured on a quiet machine
        .prepare =
            [bodies = std::move(bodies)] {
                const auto state = std::make_shared<State>(bodies);
                return Contest{[state] { state->pass(); },
                               [state] {
                                   state->bare.run(state->libraryFrontal, state->libraryProfile,
                                                   state->options);
                               }};
            },
        .repetitions = 5,
    };
}

const RatioTable::Claim withoutBodies(faceRow("face pass, no bodies", {}));
const RatioTable::Claim withBodies(faceRow("face pass, three bodies", threeBodies()));

} // namespace
