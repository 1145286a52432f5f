#pragma once

#include "app/face_overlay.h"

#include <QList>
#include <QRect>
#include <QSize>
#include <QString>

/// What the Follow view is doing about its target. The words are in follow_texts.h.
enum class FollowStatus {
    NotChosenYet, ///< No pass has looked for a target.
    NoTarget,
    Owner,
    PossibleOwner,
    Person,
    Reacquiring, ///< The owner was here a moment ago and is looked for.
    OwnerLost,   ///< The owner's face has not been seen for a while; the view stays on it.
};

/// What is remembered of the follow target and of the owner from pass to pass. Times are
/// milliseconds since the epoch.
struct FollowTarget {
    QString followTargetName;   ///< The remembered target's label; empty for none.
    int followTargetStreak = 0; ///< How established it is, 0 … 30.
    qint64 lastTavinSeenMs = 0; ///< Last time the owner was the target; 0: never.
    QRect lastTavinHeadRegion;  ///< The owner's head at that time, colour-image pixels.
    qint64 zoomHoldUntilMs = 0; ///< Until when a strong zoom is held for the owner.
};

/// Whom one pass follows.
struct FollowChoice {
    qsizetype overlay = -1; ///< Index of the chosen overlay, -1 for none.
    FollowStatus selectedFollowTarget = FollowStatus::NoTarget;
    /// The status right after the choice, before the memory of the owner changed it.
    FollowStatus followTargetReason = FollowStatus::NotChosenYet;
    bool reacquireMode = false; ///< The owner was here a moment ago and is looked for.
};

/// For how long a lost owner is looked for, and the zoom held.
inline constexpr qint64 ownerMemoryMs = 5000;

/// Nearer than this there is no zoom and no hold, in metres.
inline constexpr double closeOwner_m = 1.0;

/// Whether the overlay is the recognised owner at a known distance of less than 1 m.
bool isCloseOwner(const FaceOverlay& overlay);

/// How much speaks for following an overlay: a base score by its label, 35 points more if it is the
/// remembered target, 20 less if it is stale. The owner's body counts as the remembered owner. -1
/// for what nobody would follow, apart from these 35 and 20.
int followScore(const FaceOverlay& overlay, const QString& followTargetName);

/// Chooses the overlay to follow and updates the memory of the target and the owner:
/// 1. every overlay is scored by who it is, more if it is the remembered target, less if it is
///    stale; the highest score wins, the first one on ties;
/// 2. the owner is remembered at once, anybody else only in place of an established target;
/// 3. the owner's head and the end of the zoom hold are noted;
/// 4. a body followed shortly after the owner was seen is taken for the owner: in `overlays` too it
///    becomes "Possible Tavin";
/// 5. with nobody to follow, an owner seen shortly before is waited for.
/// `imageSize` is the colour image's.
FollowChoice chooseFollowTarget(FollowTarget& follow, QList<FaceOverlay>& overlays,
                                const QSize& imageSize, qint64 now);
