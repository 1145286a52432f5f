#include "enroll/frame_grade.h"

#include "face/face_detection.h"
#include "face/face_quality.h"

#include <algorithm>
#include <cmath>

namespace enroll {

using namespace Qt::StringLiterals;

namespace {

constexpr double steadyOverlap = 0.85;
constexpr int steadyFrames = 3;

double clippedShare(const cv::Mat& crop) {
    const auto clipped = std::count_if(crop.begin<uchar>(), crop.end<uchar>(), [](uchar level) {
        return level < darkestLevel || level > brightestLevel;
    });
    return double(clipped) / double(crop.total());
}

/// How differently the two halves of a face are lit.
double halvesDiffer(const cv::Mat& crop, double mean) {
    const int half = crop.cols / 2;
    if (half == 0 || mean <= 0.0)
        return 0.0;
    const double left = faceLight(crop.colRange(0, half)).mean;
    const double right = faceLight(crop.colRange(crop.cols - half, crop.cols)).mean;
    return std::abs(left - right) / mean;
}

} // namespace

FaceMeasures measureFace(const cv::Mat& crop) {
    const FaceLight light = faceLight(crop);
    return {std::min(crop.cols, crop.rows),
            light.mean,
            light.deviation,
            faceSharpness(crop),
            clippedShare(crop),
            halvesDiffer(crop, light.mean)};
}

Flaw gateFlaw(const FaceMeasures& measures, const face::Options& options) {
    if (measures.sidePx < options.minQualityFaceSize)
        return Flaw::TooSmall;
    if (measures.mean < options.minBrightness)
        return Flaw::TooDark;
    if (measures.mean > options.maxBrightness)
        return Flaw::TooBright;
    if (measures.deviation < options.minContrast)
        return Flaw::LowContrast;
    return measures.sharpness < options.minSharpness ? Flaw::TooBlurry : Flaw::None;
}

Flaw flawOf(const FaceMeasures& measures, const face::Options& options) {
    const Flaw flaw = gateFlaw(measures, options);
    return flaw == Flaw::None && measures.clippedShare > mostClipped ? Flaw::Clipped : flaw;
}

bool meetsWishes(const FaceMeasures& measures) {
    return measures.sidePx >= wish::sidePx && measures.mean >= wish::darkestMean &&
           measures.mean <= wish::brightestMean && measures.deviation >= wish::deviation &&
           measures.sharpness >= wish::sharpness && measures.clippedShare <= wish::mostClipped &&
           measures.halvesDiffer <= wish::mostHalvesDiffer;
}

bool isCopy(double distance) {
    return distance < copyDistance;
}

Steadiness nextSteadiness(const Steadiness& before, const cv::Rect& box) {
    if (box.empty())
        return {};
    const bool stayed = before.frames > 0 && face::rectIou(before.box, box) >= steadyOverlap;
    return {box, stayed ? before.frames + 1 : 1};
}

bool isSteady(const Steadiness& steadiness) {
    return steadiness.frames >= steadyFrames;
}

QString flawWords(Flaw flaw) {
    switch (flaw) {
    case Flaw::None:
        return u"good"_s;
    case Flaw::NoFace:
        return u"no face"_s;
    case Flaw::SeveralFaces:
        return u"several faces"_s;
    case Flaw::TooSmall:
        return u"too far"_s;
    case Flaw::TooDark:
        return u"too dark"_s;
    case Flaw::TooBright:
        return u"too bright"_s;
    case Flaw::LowContrast:
        return u"too little contrast"_s;
    case Flaw::TooBlurry:
        return u"blurred"_s;
    case Flaw::Clipped:
        return u"black or white in large parts"_s;
    case Flaw::BelowWish:
        return u"less than good"_s;
    case Flaw::Unsteady:
        return u"moving"_s;
    case Flaw::WrongDistance:
        return u"at another distance"_s;
    case Flaw::WrongPose:
        return u"in another pose"_s;
    case Flaw::SameLight:
        return u"in the same light"_s;
    case Flaw::SomebodyElse:
        return u"perhaps somebody else"_s;
    case Flaw::Copy:
        return u"a copy"_s;
    case Flaw::Enough:
        break;
    }
    return u"enough of these"_s;
}

} // namespace enroll
