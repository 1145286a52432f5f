#pragma once

#include "doctor/finding.h"
#include "doctor/places.h"

namespace doctor {

/// Whether the sensor can be opened: it is on the bus, at full speed, behind which controller, the
/// udev rule, the rights, and who else has it open.
Findings checkSensor(const Places& places);

} // namespace doctor
