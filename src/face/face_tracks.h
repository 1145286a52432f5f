#pragma once

#include "app/face_overlay.h"

#include <QColor>
#include <QList>
#include <QString>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

/// One face of one frame, after the quality gate and the recognizer.
struct FaceObservation {
    cv::Rect rect;         ///< Box clipped to the frame, in frame pixels; never empty.
    std::string detector;  ///< Which detector found it, as FaceDetection names it.
    bool owner = false;    ///< The recognizer said that this is the owner.
    double distance = 0.0; ///< Recogniser distance, lower is closer; 0 when it was not asked.
};

namespace face {

/// A face followed over frames. Times are milliseconds of the clock that the caller uses.
struct Track {
    int id = 0;    ///< Running number from 1; chooses the color of an unknown face.
    cv::Rect rect; ///< Box of the last matched face.
    QString label; ///< "Tavin" or "Unknown".
    QColor color{64, 156, 255};
    double confidence = 0.0; ///< Recogniser distance of the last match.
    QString detector;        ///< Detector of the last match, "none" before.
    qint64 lastSeenMs = 0;
    qint64 lastOwnerMs = 0; ///< Last time that the recognizer said it is the owner.
    int ownerHits = 0;      ///< Votes for the owner, 0 to 8.
    int nonOwnerStreak = 0; ///< Predictions in a row that were not the owner, 0 to 8.
    int hits = 0;           ///< Matched faces, 0 to 12.
    qint64 firstSeenMs = 0;
    bool confirmed = false; ///< An unknown face seen long and large enough to be shown.
};

} // namespace face

/// All tracks between two frames.
struct FaceTracks {
    std::vector<face::Track> tracks; ///< In the order in which they were made.
    int nextId = 1;
};

/// Color of the unknown face with this number: four colors in turn, opaque.
QColor unknownColor(int id);

/// Updates the tracks with the faces of one frame. In the order of `faces`, each face is matched to
/// a track that no earlier face of the frame took, or starts one; then the track's votes,
/// confirmation and identity are renewed. At the end tracks that nobody saw for too long are
/// dropped: those that are shown after `lostTimeoutMs`, others after 900 ms.
FaceTracks updateFaceTracks(FaceTracks previous, const std::vector<FaceObservation>& faces,
                            qint64 nowMs, int lostTimeoutMs);

/// Whether the track is the owner's or confirmed, so that it has an overlay.
bool isShown(const face::Track& track);

/// Whether the track, seen last at `nowMs`, is not shown yet but is likely to be after some more
/// passes: its face is large enough to be confirmed and was found in the whole frame. A face of
/// that size that only a body's enlarged crop shows is more often none.
bool isAboutToBeShown(const face::Track& track, qint64 nowMs);

/// One overlay for every track that is the owner's or confirmed, in the order of the tracks.
QList<FaceOverlay> faceOverlays(const FaceTracks& tracks, qint64 nowMs, int lostTimeoutMs);

/// The recurring diagnostic line about the overlays of one frame.
QString faceOverlaysLogLine(const QList<FaceOverlay>& overlays);
