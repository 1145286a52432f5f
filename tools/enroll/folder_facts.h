#pragma once

#include "enroll/sample_folder.h"

namespace tool {
class Console;
}

namespace enroll {

/// The readable samples of a folder, with a progress line while they are read.
SampleCollection readWithProgress(const QString& folder, tool::Console& console);

/// Distances between all samples, with a progress line.
DistanceTable tableWithProgress(const SampleCollection& samples, tool::Console& console);

/// The detectors, or a complaint that says which cascade is missing.
std::optional<Detectors> detectorsOrComplaint(tool::Console& console);

/// The samples' index, in their order.
SampleIndex indexOf(const SampleCollection& samples);

} // namespace enroll
