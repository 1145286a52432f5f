#pragma once

#include "app/face_overlay.h"
#include "app/identity.h"

/// Overlays as the face worker and the body tracks make them, for tests.
namespace overlays {

inline FaceOverlay face(const QString& label, const QRect& rect) {
    FaceOverlay overlay;
    overlay.label = label;
    overlay.rect = rect;
    overlay.detector = QStringLiteral("frontal");
    return overlay;
}

inline FaceOverlay faceAt(const QString& label, const QRect& rect, double distance_m) {
    FaceOverlay overlay = face(label, rect);
    overlay.hasDistance = true;
    overlay.distanceMeters = distance_m;
    return overlay;
}

inline FaceOverlay body(const QString& label, const QRect& rect, double distance_m) {
    FaceOverlay overlay = faceAt(label, rect, distance_m);
    overlay.detector = QStringLiteral("depth_body");
    overlay.bodyOnly = true;
    overlay.faceEvidence = false;
    return overlay;
}

} // namespace overlays
