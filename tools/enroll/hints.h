#pragma once

#include "enroll/frame_look.h"
#include "enroll/stations.h"

#include <QString>

namespace enroll {

/// One sentence with the figure that is wrong, its limit and what to do about it, for the flaws of
/// a face from TooSmall to Clipped. Empty for others.
QString cureFor(Flaw flaw, const FaceLook& face, const face::Options& options);

/// One sentence for somebody who stands before the sensor: what to do so that the next frame is
/// kept. `face` is the largest face, null when there is none; `asked` the station that is asked
/// for, null when whatever comes is taken.
QString hintFor(Flaw flaw, const FaceLook* face, const Station* asked,
                const face::Options& options);

/// How close a face of that side has to come to be large enough: metres, rounded down to one
/// decimal. `meters` is where it is now, if that is known.
double metersToComeWithin(int sidePx, std::optional<double> meters, const face::Options& options);

} // namespace enroll
