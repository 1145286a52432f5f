#include "awareness/body_overlays.h"

#include "app/overlay_freshness.h"
#include "awareness/overlay_geometry.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr double coveringOverlap = 0.04; // of the owner's expected body with the track

bool isCoveredByOwnerFace(const BodyTrack& track, const QList<FaceOverlay>& faces) {
    return std::any_of(faces.begin(), faces.end(), [&track](const FaceOverlay& face) {
        return face.label == identity::owner &&
               overlayGeometry::rectIou(overlayGeometry::expectedBodyBox(face.rect), track.rect) >
                   coveringOverlap;
    });
}

FaceOverlay bodyOverlay(const BodyTrack& track, qint64 now) {
    const qint64 ageMs = now - track.last_seen_ms;
    FaceOverlay overlay;
    overlay.rect = track.rect;
    overlay.label = track.tavin ? identity::possibleOwner : identity::person;
    overlay.color = track.tavin ? identity::ownerColor : track.color;
    overlay.detector = u"depth_body"_s;
    overlay.stale = overlayFreshness::isStale(ageMs);
    overlay.status =
        overlay.stale ? u"body "_s + overlayFreshness::lastSeenText(ageMs) : u"body tracked"_s;
    overlay.hasDistance = true;
    overlay.distanceMeters = track.distance_m;
    overlay.bodyOnly = true;
    overlay.faceEvidence = false;
    overlay.tier = bodyTier(track.distance_m);
    overlay.reason =
        track.tavin ? u"Tavin face lost, holding body track"_s : u"accepted body/person evidence"_s;
    return overlay;
}

} // namespace

void appendBodyOverlays(QList<FaceOverlay>& overlays, const QList<BodyTrack>& bodyTracks,
                        qint64 now) {
    const QList<FaceOverlay> faces = overlays;
    for (const BodyTrack& track : bodyTracks) {
        if (track.stable && !isCoveredByOwnerFace(track, faces))
            overlays.append(bodyOverlay(track, now));
    }
}

void keepFacesOnly(QList<FaceOverlay>& overlays) {
    overlays.removeIf([](const FaceOverlay& overlay) { return overlay.bodyOnly; });
    for (FaceOverlay& overlay : overlays)
        overlay.speakerNote.clear();
}
