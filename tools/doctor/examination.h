#pragma once

#include "doctor/finding.h"
#include "doctor/places.h"

namespace doctor {

/// A finding as one line: the verdict, what was looked at and found, and the cure.
QString lineOf(const Finding& finding);

/// 0 when there is no fault, else 1.
int statusOf(const Findings& findings);

/// A text for a bug report: what the machine is, what belongs to the sensor on the USB bus, the
/// settings of the sensor library, and the findings. The home folder is written as "~".
QString reportOf(const Findings& findings, const Places& places, const QString& versions);

} // namespace doctor
