// Chosen by the build where libfreenect2 is not linked.

#include "export/registration.h"

namespace exporting {

std::unique_ptr<Registration> makeSensorRegistration(const RecordedMoments&) {
    return nullptr;
}

} // namespace exporting
