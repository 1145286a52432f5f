#pragma once

#include "doctor/finding.h"
#include "doctor/places.h"
#include "doctor/sensor_build.h"

#include <functional>

namespace doctor {

/// Whether a packet pipeline of the sensor library can be used.
using PipelineTrial = std::function<bool(const QString& name)>;

/// The sensor library of this build and the packet pipeline that it would take, of which
/// LIBFREENECT2_PIPELINE's value may ask for another.
Findings checkSensorLibrary(const SensorBuild& build, const QString& wantedPipeline,
                            const PipelineTrial& works);

/// The files that the program reads and writes: face cascades, the owner's samples, the folder it
/// is started in, and what the voice service leaves.
Findings checkFiles(const Places& places);

} // namespace doctor
