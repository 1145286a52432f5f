#include "ui/status_texts.h"

using namespace Qt::StringLiterals;

StatusText statusText::atStart(bool mockMode) {
    return {mockMode ? u"Mock mode: Kinect backend disabled. Demo visuals only."_s
                     : u"Kinect stream backend starting. Recognition and depth awareness starting. "
                       "Auralis direction is read-only."_s,
            {},
            {}};
}

StatusText statusText::forView(const QString& buttonText) {
    return {u"Gate 4 live awareness. Current view: "_s + buttonText +
                u". Face overlay, depth distance, and read-only Auralis event status active."_s,
            {},
            {}};
}

StatusText statusText::forStream(const QString& status) {
    return {
        {}, status, u" | Face overlay, depth distance, and read-only Auralis awareness active."_s};
}

StatusText statusText::forStreamError(const QString& message) {
    return {{}, message, u" | Use --mock to review the shell without Kinect."_s};
}

StatusText statusText::forFace(const QString& status) {
    return {{},
            status,
            u" | Skeletal tracking remains disconnected; voice direction is read-only "
            "attention data."_s};
}
