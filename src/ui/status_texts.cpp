#include "ui/status_texts.h"

using namespace Qt::StringLiterals;

QString statusText::atStart(bool mockMode) {
    return mockMode ? u"Mock mode: Kinect backend disabled. Demo visuals only."_s
                    : u"Kinect stream backend starting. Recognition and depth awareness starting. "
                      "Auralis direction is read-only."_s;
}

QString statusText::forView(const QString& buttonText) {
    return u"Gate 4 live awareness. Current view: "_s + buttonText +
           u". Face overlay, depth distance, and read-only Auralis event status active."_s;
}

QString statusText::forStream(const QString& status) {
    return status + u" | Face overlay, depth distance, and read-only Auralis awareness active."_s;
}

QString statusText::forStreamError(const QString& message) {
    return message + u" | Use --mock to review the shell without Kinect."_s;
}

QString statusText::forFace(const QString& status) {
    return status + u" | Skeletal tracking remains disconnected; voice direction is read-only "
                    "attention data."_s;
}
