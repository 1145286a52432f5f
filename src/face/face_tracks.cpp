#include "face/face_tracks.h"

#include "app/identity.h"
#include "app/overlay_freshness.h"
#include "face/face_detection.h"

#include <QDebug>
#include <QStringList>
#include <algorithm>
#include <array>
#include <cmath>

using namespace Qt::StringLiterals;
using face::rectIou;
using face::Track;

namespace {

// A face belongs to the track that it overlaps by this much.
constexpr double matchOverlap = 0.25;
// A face that moved on between two frames belongs to a track near by, in face sizes, whose area is
// similar.
constexpr double nearX = 0.75;
constexpr double nearY = 0.85;
constexpr double minSizeRatio = 0.45;
constexpr double maxSizeRatio = 2.2;

constexpr int maxHits = 12;
constexpr int maxVotes = 8;

// An unknown face is shown only when it is seen often, long and large enough. Profile cascades and
// enlarged crops give more false hits than the frontal cascade in the frame, so they need more of
// them.
constexpr int frontalHitsToConfirm = 5;
constexpr int otherHitsToConfirm = 8;
constexpr int confirmLargerThanPx = 84;
constexpr qint64 confirmAfterMs = 1200;

// The owner stays the owner through this many predictions in a row that say otherwise.
constexpr int forgivenStreak = 7;

constexpr qint64 unshownKeptMs = 900;
constexpr int nearFaceHeightPx = 90;

double centerDistance(int a, int aLength, int b, int bLength) {
    const double between = std::abs((a + aLength / 2.0) - (b + bLength / 2.0));
    return between / std::max(1.0, (double(aLength) + bLength) / 2.0);
}

/// How far a face is from a track, in face sizes; negative when it cannot be the same face.
double nearness(const cv::Rect& face, const cv::Rect& track) {
    const double dx = centerDistance(face.x, face.width, track.x, track.width);
    const double dy = centerDistance(face.y, face.height, track.y, track.height);
    const double ratio =
        double(face.width) * face.height / std::max(1.0, double(track.width) * track.height);
    const bool same = dx <= nearX && dy <= nearY && ratio >= minSizeRatio && ratio <= maxSizeRatio;
    return same ? dx + dy : -1.0;
}

/// Index of the track that the face belongs to, among those not taken; -1 for none.
int matchingTrack(const std::vector<Track>& tracks, const std::vector<bool>& taken,
                  const cv::Rect& face) {
    int best = -1;
    double bestOverlap = 0.0;
    int nearest = -1;
    double minDistance = 0.0;
    for (int i = 0; i < static_cast<int>(tracks.size()); ++i) {
        const auto at = static_cast<std::size_t>(i);
        if (taken[at])
            continue;
        if (const double overlap = rectIou(face, tracks[at].rect); overlap > bestOverlap) {
            best = i;
            bestOverlap = overlap;
        }
        const double distance = nearness(face, tracks[at].rect);
        if (distance >= 0.0 && (nearest < 0 || distance < minDistance)) {
            nearest = i;
            minDistance = distance;
        }
    }
    return best >= 0 && bestOverlap >= matchOverlap ? best : nearest;
}

Track newTrack(int id, qint64 nowMs) {
    Track track;
    track.id = id;
    track.label = identity::unknown;
    track.detector = u"none"_s;
    track.firstSeenMs = nowMs;
    return track;
}

void countVotes(Track& track, const FaceObservation& face, qint64 nowMs) {
    track.hits = std::min(track.hits + 1, maxHits);
    if (face.owner) {
        track.ownerHits = std::min(track.ownerHits + 1, maxVotes);
        track.nonOwnerStreak = 0;
        track.lastOwnerMs = nowMs;
    } else {
        track.nonOwnerStreak = std::min(track.nonOwnerStreak + 1, maxVotes);
        track.ownerHits = std::max(track.ownerHits - 1, 0);
    }
}

bool isLargeEnough(const cv::Rect& face) {
    return face.width > confirmLargerThanPx && face.height > confirmLargerThanPx;
}

bool confirms(const Track& track, const FaceObservation& face, qint64 nowMs) {
    const int needed = face.detector == "frontal" ? frontalHitsToConfirm : otherHitsToConfirm;
    return !face.owner && track.hits >= needed && isLargeEnough(face.rect) &&
           nowMs - track.firstSeenMs >= confirmAfterMs;
}

QString renewedLabel(const Track& track, const FaceObservation& face, qint64 nowMs,
                     int lostTimeoutMs) {
    const bool stays = track.label == identity::owner &&
                       nowMs - track.lastOwnerMs <= lostTimeoutMs &&
                       track.nonOwnerStreak <= forgivenStreak;
    // One prediction is enough to become the owner, at any distance that the recognizer accepts.
    return stays || face.owner ? identity::owner : identity::unknown;
}

void updateTrack(Track& track, const FaceObservation& face, qint64 nowMs, int lostTimeoutMs) {
    track.rect = face.rect;
    countVotes(track, face, nowMs);
    track.confirmed = track.confirmed || confirms(track, face, nowMs);
    track.label = renewedLabel(track, face, nowMs, lostTimeoutMs);
    track.color = track.label == identity::owner ? identity::ownerColor : unknownColor(track.id);
    track.confidence = face.distance;
    track.detector = QString::fromStdString(face.detector);
    track.lastSeenMs = nowMs;
}

bool isFarCrop(const QString& detector) {
    return detector.contains("+far_crop"_L1);
}

FaceOverlay overlayOf(const Track& track, qint64 nowMs, int lostTimeoutMs) {
    FaceOverlay overlay;
    overlay.rect = QRect(track.rect.x, track.rect.y, track.rect.width, track.rect.height);
    overlay.label = track.label;
    overlay.color = track.label == identity::owner ? identity::ownerColor : track.color;
    overlay.confidence = track.confidence;
    overlay.detector = track.detector;
    if (isFarCrop(track.detector))
        overlay.tier = u"far face"_s;
    else
        overlay.tier = track.rect.height >= nearFaceHeightPx ? u"near face"_s : u"mid face"_s;
    const qint64 age = nowMs - track.lastSeenMs;
    overlay.stale = overlayFreshness::isStale(age);
    overlay.status = u"tracked"_s;
    if (overlay.stale)
        overlay.status = overlayFreshness::lastSeenText(age);
    if (overlay.stale && age > lostTimeoutMs)
        overlay.status = u"lost"_s;
    return overlay;
}

QString overlayLine(const FaceOverlay& overlay) {
    return u"%1 conf=%2 detector=%3 tier=%4 face_px=%5x%6 status=%7"_s.arg(
        overlay.label, QString::number(overlay.confidence, 'f', 1), overlay.detector, overlay.tier,
        QString::number(overlay.rect.width()), QString::number(overlay.rect.height()),
        overlay.status);
}

QString farCropLine(const FaceOverlay& overlay) {
    return u"%1 conf=%2 box=%3,%4 %5x%6"_s.arg(
        overlay.label, QString::number(overlay.confidence, 'f', 1),
        QString::number(overlay.rect.x()), QString::number(overlay.rect.y()),
        QString::number(overlay.rect.width()), QString::number(overlay.rect.height()));
}

} // namespace

QColor unknownColor(int id) {
    static constexpr std::array<QColor, 4> palette{QColor(255, 159, 67), QColor(80, 170, 255),
                                                   QColor(169, 112, 255), QColor(255, 99, 132)};
    return palette[static_cast<std::size_t>(std::max(id, 1) - 1) % palette.size()];
}

FaceTracks updateFaceTracks(FaceTracks previous, const std::vector<FaceObservation>& faces,
                            qint64 nowMs, int lostTimeoutMs) {
    FaceTracks now = std::move(previous);
    std::vector<bool> taken(now.tracks.size(), false);
    for (const FaceObservation& face : faces) {
        int match = matchingTrack(now.tracks, taken, face.rect);
        if (match < 0) {
            match = static_cast<int>(now.tracks.size());
            now.tracks.push_back(newTrack(now.nextId++, nowMs));
            taken.push_back(false);
        }
        taken[static_cast<std::size_t>(match)] = true;
        updateTrack(now.tracks[static_cast<std::size_t>(match)], face, nowMs, lostTimeoutMs);
    }
    std::erase_if(now.tracks, [nowMs, lostTimeoutMs](const Track& track) {
        return nowMs - track.lastSeenMs > (isShown(track) ? lostTimeoutMs : unshownKeptMs);
    });
    return now;
}

bool isShown(const Track& track) {
    return track.label == identity::owner || track.confirmed;
}

bool isAboutToBeShown(const Track& track, qint64 nowMs) {
    return !isShown(track) && track.lastSeenMs == nowMs && isLargeEnough(track.rect) &&
           !isFarCrop(track.detector);
}

QList<FaceOverlay> faceOverlays(const FaceTracks& tracks, qint64 nowMs, int lostTimeoutMs) {
    QList<FaceOverlay> overlays;
    for (const Track& track : tracks.tracks) {
        if (isShown(track))
            overlays.append(overlayOf(track, nowMs, lostTimeoutMs));
    }
    return overlays;
}

QString faceOverlaysLogLine(const QList<FaceOverlay>& overlays) {
    QStringList lines;
    QStringList farCropLines;
    for (const FaceOverlay& overlay : overlays) {
        lines.append(overlayLine(overlay));
        if (overlay.detector.contains("far_crop"_L1))
            farCropLines.append(farCropLine(overlay));
    }
    QString text;
    QDebug(&text) << "Qt face overlays: count=" << overlays.size() << lines.join(" | "_L1)
                  << "follow_assist_identity_result=" << farCropLines.join(" | "_L1);
    return text.trimmed();
}
