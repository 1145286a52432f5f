#pragma once

#include "face/face_options.h"

#include <QString>
#include <opencv2/core.hpp>

namespace enroll {

/// Everything that is measured of one face's box. Grey levels run from 0 to 255.
struct FaceMeasures {
    int sidePx = 0;            ///< The shorter side of the box.
    double mean = 0.0;         ///< Mean grey level.
    double deviation = 0.0;    ///< Standard deviation of the grey levels.
    double sharpness = 0.0;    ///< Variance of the Laplacian, grey levels squared.
    double clippedShare = 0.0; ///< Share of pixels that are nearly black or nearly white, 0 to 1.
    double halvesDiffer = 0.0; ///< Difference of the two halves' means, as a share of the mean.
};

/// `crop` is an 8-bit grey view of the detector's box in its frame; not empty.
FaceMeasures measureFace(const cv::Mat& crop);

/// Why a frame gives no sample, in the order in which they are looked for.
enum class Flaw {
    None,
    NoFace,
    SeveralFaces,
    TooSmall,
    TooDark,
    TooBright,
    LowContrast,
    TooBlurry,
    Clipped,       ///< Too much of the face is black or white.
    BelowWish,     ///< Good enough in need, but better may still come.
    Unsteady,      ///< The box has not been in its place for long enough.
    WrongDistance, ///< Between two distances, or not at the one that is asked for.
    WrongPose,     ///< Not the pose that is asked for.
    SameLight,     ///< A second light is asked for and this is the first.
    SomebodyElse,  ///< Another person may have taken the owner's place.
    Copy,          ///< All but the same picture as one that is kept.
    Enough,        ///< No more samples of this kind are wanted.
};

inline constexpr int flawCount = int(Flaw::Enough) + 1;

// What has no setting in the recogniser's options. Measured figures stand in the enrolment's notes:
// the recogniser moves by 16 when a picture is moved by 2 pixels.
inline constexpr double mostClipped = 0.25;
inline constexpr int darkestLevel = 6;     ///< Pixels below are clipped.
inline constexpr int brightestLevel = 249; ///< Pixels above are clipped.
inline constexpr double copyDistance = 15.0;

/// What a good sample meets beyond what it must.
namespace wish {
inline constexpr int sidePx = 88;
inline constexpr double darkestMean = 60.0;
inline constexpr double brightestMean = 190.0;
inline constexpr double deviation = 35.0;
inline constexpr double sharpness = 120.0;
inline constexpr double mostClipped = 0.05;
inline constexpr double mostHalvesDiffer = 0.35;
} // namespace wish

/// The first thing for which recognition itself turns a face away, from TooSmall to TooBlurry; None
/// when it asks the recogniser. The limits are its own options.
Flaw gateFlaw(const FaceMeasures& measures, const face::Options& options);

/// The first thing that a sample must have and has not, from TooSmall to Clipped; None when it has
/// everything.
Flaw flawOf(const FaceMeasures& measures, const face::Options& options);

/// Whether a face without a flaw is as good as one could wish.
bool meetsWishes(const FaceMeasures& measures);

/// Whether a picture at this recogniser distance from another is a copy of it.
bool isCopy(double distance);

/// How long a box has stayed in its place.
struct Steadiness {
    cv::Rect box;
    int frames = 0; ///< Frames in a row, the newest included.
};

/// Moves on by one frame; an empty box means that no single face was there.
Steadiness nextSteadiness(const Steadiness& before, const cv::Rect& box);
bool isSteady(const Steadiness& steadiness);

/// A few words for a list, for example "too dark".
QString flawWords(Flaw flaw);

} // namespace enroll
