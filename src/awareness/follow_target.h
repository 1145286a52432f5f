#pragma once

#include "app/face_overlay.h"

#include <QList>
#include <QRect>
#include <QSize>
#include <QString>

/// Whom the Follow view follows, and what is remembered of the owner. Times are milliseconds since
/// the epoch.
struct FollowTarget {
    QString followTargetName;   ///< The remembered target; empty for none.
    int followTargetStreak = 0; ///< How established it is, 0 … 30.
    QString selectedFollowTarget = QStringLiteral("No follow target"); ///< Status text.
    QString followTargetReason = QStringLiteral("none"); ///< Status right after the choice.
    bool reacquireMode = false; ///< The owner was here a moment ago and is looked for.
    qint64 lastTavinSeenMs = 0; ///< Last time the owner was the target; 0: never.
    QRect lastTavinHeadRegion;  ///< The owner's head at that time, colour-image pixels.
    qint64 zoomHoldUntilMs = 0; ///< Until when a strong zoom is held for the owner.
};

/// For how long a lost owner is looked for, and the zoom held.
inline constexpr qint64 ownerMemoryMs = 5000;

/// Nearer than this there is no zoom and no hold, in metres.
inline constexpr double closeOwner_m = 1.0;

/// Whether the overlay is the recognised owner at a known distance of less than 1 m.
bool isCloseOwner(const FaceOverlay& overlay);

/// Chooses the overlay to follow and updates the memory of the target and the owner:
/// 1. every overlay is scored by who it is, more if it is the remembered target, less if it is
///    stale; the highest score wins, the first one on ties;
/// 2. the owner is remembered at once, anybody else only in place of an established target;
/// 3. the owner's head and the end of the zoom hold are noted;
/// 4. a body followed shortly after the owner was seen is taken for the owner: in `overlays` too it
///    becomes "Possible Tavin";
/// 5. with nobody to follow, an owner seen shortly before is waited for.
/// Returns the chosen overlay's index, -1 for none. `imageSize` is the colour image's.
qsizetype chooseFollowTarget(FollowTarget& follow, QList<FaceOverlay>& overlays,
                             const QSize& imageSize, qint64 now);
