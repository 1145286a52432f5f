#pragma once

#include "enroll/rehearsal.h"

namespace enroll {

/// What leaving one sample out would change.
struct Culprit {
    std::size_t sample = 0; ///< Number in the table.
    int takenBy = 0;        ///< Looks at which this sample is the nearest of those that pass.
    int takenWithout = 0;   ///< Looks that would still pass without it.
    std::optional<Rehearsal> rehearsalWithout;
};

/// How often a stranger would be taken for the owner.
struct StrangerReport {
    int looks = 0;
    int taken = 0;        ///< Looks within the threshold of any sample.
    double nearest = 0.0; ///< Least distance of all looks; 0 without looks or samples.
    std::optional<Rehearsal> rehearsal; ///< With all samples.
    std::vector<Culprit> culprits;      ///< Samples that let somebody pass, the most guilty first.
};

/// `looks` holds for each look at the stranger the distance to each sample of `table`.
StrangerReport weighStranger(const DistanceTable& looks, const DistanceTable& table,
                             const QStringList& sittings, double threshold);

/// The report as lines; `names` are the samples' names.
QStringList strangerLines(const StrangerReport& report, const QStringList& names, double threshold);

} // namespace enroll
