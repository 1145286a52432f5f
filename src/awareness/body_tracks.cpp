#include "awareness/body_tracks.h"

#include "awareness/overlay_geometry.h"

#include <algorithm>
#include <cstdlib>

namespace {

constexpr double enoughOverlap = 0.08;    // above it the overlap itself is the score
constexpr double besideScore = 0.09;      // of a candidate right where a track was
constexpr double besideLoss = 0.2;        // per image width of distance
constexpr double besideReach = 0.18;      // of the image width, exclusive
constexpr double ownerFaceOverlap = 0.02; // of the owner's expected body with the track
constexpr int maxHits = 20;
constexpr int stableHits = 3;
constexpr qint64 stableAgeMs = 600;
constexpr qint64 unconfirmedLostMs = 1200;

double matchScore(const QRect& candidate, const QRect& track, int imageWidth) {
    const double overlap = overlayGeometry::rectIou(candidate, track);
    if (overlap > enoughOverlap)
        return overlap;
    const double dx = std::abs(double(overlayGeometry::boxCenter(candidate).x()) -
                               overlayGeometry::boxCenter(track).x()) /
                      std::max(imageWidth, 1);
    return dx < besideReach ? besideScore - besideLoss * dx : 0.0;
}

/// Index of the best track that is not `matched`, -1 for none; the earlier one wins ties.
qsizetype bestTrack(const QList<BodyTrack>& bodyTracks, const QList<bool>& matched,
                    const QRect& candidate, int imageWidth) {
    qsizetype best = -1;
    double bestScore = 0.0;
    for (qsizetype i = 0; i < bodyTracks.size(); ++i) {
        const double score =
            matched[i] ? 0.0 : matchScore(candidate, bodyTracks[i].rect, imageWidth);
        if (score > bestScore) {
            best = i;
            bestScore = score;
        }
    }
    return best;
}

void linkOwner(BodyTrack& track, const QList<FaceOverlay>& faces, qint64 now, int personLostMs) {
    for (const FaceOverlay& face : faces) {
        if (face.label != identity::owner ||
            overlayGeometry::rectIou(overlayGeometry::expectedBodyBox(face.rect), track.rect) <=
                ownerFaceOverlap)
            continue;
        track.tavin = true;
        track.last_tavin_seen_ms = now;
    }
    if (now - track.last_tavin_seen_ms <= personLostMs)
        track.tavin = true;
}

} // namespace

void matchBodyTracks(QList<BodyTrack>& bodyTracks, int& nextBodyTrackId,
                     const QList<BodyCandidate>& candidates, const QList<FaceOverlay>& faces,
                     int imageWidth, qint64 now, int personLostMs) {
    QList<bool> matched(bodyTracks.size(), false);
    for (const BodyCandidate& candidate : candidates) {
        qsizetype index = bestTrack(bodyTracks, matched, candidate.rect, imageWidth);
        if (index < 0) {
            index = bodyTracks.size();
            BodyTrack fresh;
            fresh.id = nextBodyTrackId++;
            fresh.first_seen_ms = now;
            bodyTracks.append(fresh);
            matched.append(false);
        }
        BodyTrack& track = bodyTracks[index];
        track.rect = candidate.rect;
        track.distance_m = candidate.distance_m;
        track.hits = std::min(track.hits + 1, maxHits);
        track.last_seen_ms = now;
        if (track.hits >= stableHits && now - track.first_seen_ms >= stableAgeMs)
            track.stable = true;
        linkOwner(track, faces, now, personLostMs);
        matched[index] = true;
    }
}

void expireBodyTracks(QList<BodyTrack>& bodyTracks, qint64 now, int personLostMs) {
    bodyTracks.removeIf([now, personLostMs](const BodyTrack& track) {
        const qint64 lostMs = track.stable ? personLostMs : unconfirmedLostMs;
        return now - track.last_seen_ms > lostMs;
    });
}
