#include "face/cascade_data.h"
#include "face/cascade_order.h"
#include "face/cascade_search.h"
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

enum class Searched { everything, bodiesOnly };

/// The search without anything around it: the pictures that the detectors of one pass were given.
struct BareSearch {
    struct Call {
        cv::Mat image;
        cv::Size minSize;
        bool frontal = false;
    };
    std::vector<Call> calls;

    BareSearch(const QImage& frame, const QList<QRect>& bodies, const face::Options& options,
               Searched searched = Searched::everything) {
        Scripted frontal;
        Scripted profile;
        cv::Mat grey = grayFrame(frame);
        if (searched == Searched::everything)
            detectFacesMulti(frontal.cascade, &profile.cascade, grey, options);
        detectFacesInBodyRegions(frontal.cascade, &profile.cascade, grey, options, bodies);
        add(*frontal.seen, true);
        add(*profile.seen, false);
    }
    void add(const ScriptedDetector::Seen& seen, bool frontal) {
        for (std::size_t i = 0; i < seen.images.size(); ++i)
            calls.push_back({seen.images[i], seen.minSizes[i], frontal});
    }
};

constexpr double groupTolerance = 0.2; // the library's own

/// The library's two cascades, as it loads them.
class LibrarySearch {
public:
    explicit LibrarySearch(const face::Options& settings) : options(settings) {
        if (!frontal.load(options.frontalCascadePath) || !profile.load(options.profileCascadePath))
            throw std::runtime_error("the cascades are not installed");
    }
    void run(const BareSearch& bare) {
        for (const BareSearch::Call& call : bare.calls) {
            std::vector<cv::Rect> hits;
            (call.frontal ? frontal : profile)
                .detectMultiScale(call.image, hits, options.scaleFactor, options.minNeighbors, 0,
                                  call.minSize, cv::Size());
            benchmark::DoNotOptimize(hits.data());
        }
    }

private:
    const face::Options options;
    cv::CascadeClassifier frontal;
    cv::CascadeClassifier profile;
};

/// The same with ours, for one instruction set.
class OurSearch {
public:
    OurSearch(const face::Options& settings, const CascadeKernels& kernels)
        : options(settings), frontal(search(options.frontalCascadePath, kernels)),
          profile(search(options.profileCascadePath, kernels)) {}

    void run(const BareSearch& bare) {
        for (const BareSearch::Call& call : bare.calls) {
            std::vector<cv::Rect> hits =
                (call.frontal ? frontal : profile)
                    ->candidates(call.image, options.scaleFactor, call.minSize);
            cv::groupRectangles(hits, options.minNeighbors, groupTolerance);
            benchmark::DoNotOptimize(hits.data());
        }
    }

private:
    static std::unique_ptr<CascadeSearch> search(const std::string& path,
                                                 const CascadeKernels& kernels) {
        const auto cascade = readCascade(path);
        auto made = cascade ? CascadeSearch::make(quicklyOrdered(*cascade, trialPictures().front()),
                                                  kernels)
                            : nullptr;
        if (!made)
            throw std::runtime_error("the cascades are not installed");
        return made;
    }

    const face::Options options;
    std::unique_ptr<CascadeSearch> frontal;
    std::unique_ptr<CascadeSearch> profile;
};

struct State {
    explicit State(QList<QRect> regions)
        : frame(roomFrame()), bodies(std::move(regions)), bare(frame, bodies, options) {
        if (!loadCascade(tools.frontal, options.frontalCascadePath) ||
            !loadCascade(tools.profile, options.profileCascadePath))
            throw std::runtime_error("the cascades are not installed");
        std::vector<TrainingSample> samples;
        for (unsigned person = 1; person <= 20; ++person)
            samples.push_back({syntheticFace(sampleSidePx, person), ownerClass});
        tools.recognizer = trainOwnerModel(samples);
    }
    /// From the frame to what is shown.
    void pass() {
        cv::Mat grey = grayFrame(frame);
        const FacePass found = findFaces(grey, tools, options, bodies).value();
        now += 180;
        tracks = updateFaceTracks(std::move(tracks), found.faces, now, lostMs);
        benchmark::DoNotOptimize(faceOverlays(tracks, now, lostMs));
    }

    face::Options options;
    QImage frame;
    QList<QRect> bodies;
    BareSearch bare;
    LibrarySearch library{options};
    FaceTools tools;
    FaceTracks tracks;
    qint64 now = 0;
};

constexpr int repetitions = 5; // of rows whose rival takes seconds

RatioRow passRow(std::string what, QList<QRect> bodies) {
    return {
        .what = std::move(what),
        .against = "the library's searches of its images",
        .atMost = 0.12,
        .prepare =
            [bodies = std::move(bodies)] {
                const auto state = std::make_shared<State>(bodies);
                return Contest{[state] { state->pass(); },
                               [state] { state->library.run(state->bare); }};
            },
        .repetitions = repetitions,
    };
}

RatioRow searchRow(std::string what, double atMost, QList<QRect> bodies, Searched searched,
                   const CascadeKernels& kernels) {
    return {
        .what = std::move(what) + ", " + kernels.name,
        .against = "the library's searches",
        .atMost = atMost,
        .prepare =
            [bodies = std::move(bodies), searched, &kernels] {
                const face::Options options;
                const auto bare =
                    std::make_shared<BareSearch>(roomFrame(), bodies, options, searched);
                const auto ours = std::make_shared<OurSearch>(options, kernels);
                const auto library = std::make_shared<LibrarySearch>(options);
                return Contest{[=] { ours->run(*bare); }, [=] { library->run(*bare); }};
            },
        .repetitions = repetitions,
    };
}

const RatioTable::Claim passWithoutBodies(passRow("face pass, no bodies", {}));
const RatioTable::Claim passWithBodies(passRow("face pass, three bodies", threeBodies()));
const RatioTable::Claim threeSearches(searchRow("face search, three of 960x540", 0.10, {},
                                                Searched::everything,
                                                supportedCascadeKernels().front()));
const RatioTable::Claim searchOfBodies(searchRow("face search, crops of three bodies", 0.10,
                                                 threeBodies(), Searched::bodiesOnly,
                                                 supportedCascadeKernels().front()));
const RatioTable::Claim plainPath(searchRow("face search, three of 960x540", 0.16, {},
                                            Searched::everything,
                                            supportedCascadeKernels().back()));

} // namespace
