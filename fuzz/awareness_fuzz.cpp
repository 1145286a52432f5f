// Several awareness passes in a row over hostile depth, faces, sizes, readings and times.

#include "awareness/awareness_pass.h"
#include "awareness/awareness_report.h"
#include "awareness/follow_texts.h"
#include "awareness/stream_display.h"
#include "fuzz_overlays.h"

#include <cmath>

using namespace Qt::StringLiterals;

namespace {

constexpr int maxPasses = 6;

float depthValue(FuzzInput& input) {
    switch (input.byte() % 4) {
    case 0:
        return static_cast<float>(input.between(1550, 3850)); // around a body's band
    case 1:
        return input.number<float>();
    case 2:
        return static_cast<float>(input.real());
    default:
        return 0.0F;
    }
}

/// A depth frame of a few rectangles on a ground: bodies, walls, holes, nonsense.
QList<float> depthFrame(FuzzInput& input, int width, int height) {
    QList<float> depth_mm(qsizetype(width) * height, depthValue(input));
    for (int count = input.byte() % 8; count > 0; --count) {
        const int left = input.between(0, width);
        const int top = input.between(0, height);
        const int right = input.between(left, width);
        const int bottom = input.between(top, height);
        const float value = depthValue(input);
        for (int y = top; y < bottom; ++y)
            std::fill_n(depth_mm.begin() + qsizetype(y) * width + left, right - left, value);
    }
    return depth_mm;
}

void readDepth(FuzzInput& input, AwarenessInput& newest) {
    DepthFrame& depth = newest.depth;
    depth.width = input.between(0, 160);
    depth.height = input.between(0, 128);
    depth.depth_mm = depthFrame(input, depth.width, depth.height);
    switch (input.byte() % 8) {
    case 0: // sizes that have nothing to do with the list
        depth.width = input.number<int>();
        depth.height = input.number<int>();
        break;
    case 1:
        depth.depth_mm.resize(input.between(0, static_cast<int>(depth.depth_mm.size())));
        break;
    default:
        break;
    }
}

void checkResult(const AwarenessState& state, const AwarenessInput& newest,
                 const AwarenessResult& result) {
    const QRect image(QPoint(0, 0), newest.imageSize);
    require(result.bodyCandidates.size() <= 4, "at most four bodies");
    for (const BodyCandidate& candidate : result.bodyCandidates) {
        require(candidate.rect.isValid() && image.contains(candidate.rect),
                "a body is inside the image");
        require(candidate.distance_m >= 1.6 && candidate.distance_m <= 3.8,
                "a body is inside the band");
    }
    const FollowView& view = state.followView;
    require(view.followZoom >= 1.0 && view.followZoom <= 8.0, "the zoom is from 1 to 8");
    // A crop that is kept for a lost owner may be older than the image's size: what is shown
    // counts.
    const QString status =
        followTexts::selectedFollowTarget(result.follow, view, state.followTarget);
    const FollowDisplay display =
        followDisplay(newest.imageSize, view.followCrop, result.faceOverlays, u"follow"_s, status);
    require(!display.cropApplied || image.contains(display.crop), "the crop is inside the image");
    require(display.statusText.contains(status), "the follow status stands in the text as it is");
    require(std::isfinite(view.smoothedCropCenter.x()) &&
                std::isfinite(view.smoothedCropCenter.y()),
            "the crop's centre is a place");
    for (const FaceOverlay& overlay : result.faceOverlays)
        require(!overlay.hasDistance || !overlay.bodyOnly || std::isfinite(overlay.distanceMeters),
                "a body's distance is a number");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    AwarenessState state;
    AwarenessInput newest;
    newest.layoutDebug = input.flag();
    newest.invertAudioDirection = input.flag();
    newest.personLostMs = input.between(0, std::numeric_limits<int>::max());
    qint64 now = input.number<std::uint32_t>();
    for (int pass = 0; pass < maxPasses && input.bytesLeft() > 0; ++pass) {
        if (pass == 0 || input.byte() % 4 == 0) // the sensor may change its mode
            newest.imageSize = QSize(input.between(0, 2000), input.between(0, 1200));
        newest.voiceStatus = voiceFrom(input);
        newest.faceOverlays = overlaysFrom(input, 5);
        readDepth(input, newest);
        AwarenessResult result;
        for (int repeats = input.byte() % 8; repeats >= 0; --repeats) {
            result = runAwarenessPass(state, newest, [now] { return now; });
            checkResult(state, newest, result);
            newest.faceOverlays = result.faceOverlays;
            now += input.between(0, 800);
        }
        QString line;
        writeAwarenessReport(QDebug(&line), state, result);
        require(!line.contains(u'\n'), "a log line is one line");
    }
    return 0;
}
