#pragma once

#include "app/face_overlay.h"
#include "app/identity.h"
#include "awareness/body_candidates.h"

#include <QColor>
#include <QList>
#include <QRect>

/// One body, followed from frame to frame. All times are milliseconds since the epoch.
struct BodyTrack {
    int id = 0;                    ///< Running number, never reused.
    QRect rect;                    ///< Last matched candidate's box, colour-image pixels.
    double distance_m = 0.0;       ///< Last matched candidate's distance.
    int hits = 0;                  ///< Matched frames, at most 20.
    qint64 first_seen_ms = 0;      ///< When the track was made.
    qint64 last_seen_ms = 0;       ///< Last match.
    qint64 last_tavin_seen_ms = 0; ///< Last time an owner's face was found on it; 0: never.
    bool stable = false;           ///< Confirmed; never cleared.
    bool tavin = false;            ///< Has carried the owner's face; never cleared.
    QColor color = identity::bodyColor;
};

/// Joins the candidates of one frame, tallest first, with the tracks. Each candidate takes the
/// unmatched track that it overlaps most (or, hardly overlapping any, the one beside which it
/// stands), else starts a track numbered `nextBodyTrackId`. A track that was matched three times
/// over at least 600 ms becomes stable; one on which an owner's face of `faces` sits becomes the
/// owner's and stays it. `imageWidth` is the colour image's, `personLostMs` at least 0.
void matchBodyTracks(QList<BodyTrack>& bodyTracks, int& nextBodyTrackId,
                     const QList<BodyCandidate>& candidates, const QList<FaceOverlay>& faces,
                     int imageWidth, qint64 now, int personLostMs);

/// Drops the tracks that were not matched for too long, 1200 ms for an unconfirmed one and
/// `personLostMs` for a stable one, and keeps the order of the rest.
void expireBodyTracks(QList<BodyTrack>& bodyTracks, qint64 now, int personLostMs);
