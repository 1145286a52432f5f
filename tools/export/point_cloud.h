#pragma once

#include "export/registration.h"

#include <QByteArray>

namespace exporting {

/// The points of a moment as a binary PLY file: metres, x to the right of the sensor, y down, z
/// away from it, and colours if there are any. Pixels without a reading have no point.
QByteArray pointCloud(const RegisteredPictures& pictures, const Camera& camera);

} // namespace exporting
