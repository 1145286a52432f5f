#include "enroll/hints.h"

#include <cmath>

namespace enroll {

using namespace Qt::StringLiterals;

namespace {

QString whole(double value) {
    return QString::number(std::lround(value));
}

QString tooSmall(const FaceLook& face, const face::Options& options) {
    const double within = metersToComeWithin(face.measures.sidePx, face.meters, options);
    return u"The face is %1 px wide and needs %2: come within about %3 m."_s.arg(
        QString::number(face.measures.sidePx), QString::number(options.minQualityFaceSize),
        QString::number(within, 'f', 1));
}

QString comeCloser() {
    return u"Come closer."_s;
}

QString wrongDistance(const FaceLook& face, const Station* asked) {
    const int side = face.measures.sidePx;
    if (asked)
        return side < sidesOf(asked->distance).least ? comeCloser() : u"Step back."_s;
    return side > sidesOf(Distance::Near).most ? u"Step back a little."_s
                                               : u"Take half a step forwards or back."_s;
}

} // namespace

double metersToComeWithin(int sidePx, std::optional<double> meters, const face::Options& options) {
    const double within = meters ? *meters * sidePx / options.minQualityFaceSize
                                 : metersForSide(options.minQualityFaceSize);
    return std::floor(within * 10.0) / 10.0;
}

QString cureFor(Flaw flaw, const FaceLook& face, const face::Options& options) {
    const FaceMeasures& measures = face.measures;
    switch (flaw) {
    case Flaw::TooSmall:
        return tooSmall(face, options);
    case Flaw::TooDark:
        return u"The face is too dark (brightness %1, needs %2): switch on a light in front of you."_s
            .arg(whole(measures.mean), whole(options.minBrightness));
    case Flaw::TooBright:
        return u"The face is too bright (brightness %1, at most %2): move out of the light."_s.arg(
            whole(measures.mean), whole(options.maxBrightness));
    case Flaw::LowContrast:
        return u"The face shows too little contrast (%1, needs %2): let light fall from one side."_s
            .arg(whole(measures.deviation), whole(options.minContrast));
    case Flaw::TooBlurry:
        return u"The face is blurred (sharpness %1, needs %2): hold still and give it more light."_s
            .arg(whole(measures.sharpness), whole(options.minSharpness));
    case Flaw::Clipped:
        return u"%1 % of the face is black or white, at most %2 % may be: soften the light."_s.arg(
            whole(measures.clippedShare * 100.0), whole(mostClipped * 100.0));
    default:
        return {};
    }
}

QString hintFor(Flaw flaw, const FaceLook* face, const Station* asked,
                const face::Options& options) {
    // A station has its own distance, which is nearer than what recognition needs.
    if (flaw == Flaw::TooSmall && asked)
        return comeCloser();
    if (face && flaw >= Flaw::TooSmall && flaw <= Flaw::Clipped)
        return cureFor(flaw, *face, options);
    switch (flaw) {
    case Flaw::NoFace:
        return u"Nobody is to be seen: look at the sensor."_s;
    case Flaw::SeveralFaces:
        return u"Two people are in the picture: only the owner may be."_s;
    case Flaw::WrongDistance:
        return face ? wrongDistance(*face, asked) : QString();
    case Flaw::WrongPose:
        return asked ? stationPrompt(*asked) : u"Look at the sensor."_s;
    case Flaw::SameLight:
        return u"The light is still the same: switch a lamp on or off."_s;
    case Flaw::SomebodyElse:
        return u"This may be somebody else: let the owner look at the sensor for a moment."_s;
    case Flaw::BelowWish:
        return u"More and softer light would help: stay where you are."_s;
    case Flaw::Copy:
        return u"This picture is kept already: move a little."_s;
    case Flaw::Enough:
        return u"There are enough of these: change your distance or turn your head."_s;
    case Flaw::None:
        return u"Kept."_s;
    default:
        return u"Hold still."_s;
    }
}

} // namespace enroll
