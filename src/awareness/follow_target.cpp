#include "awareness/follow_target.h"

#include "app/identity.h"
#include "awareness/overlay_geometry.h"

#include <algorithm>

namespace {

constexpr int unscored = -1;
constexpr int rememberedBonus = 35;
constexpr int staleLoss = 20;
constexpr int maxStreak = 30;
constexpr int establishedStreak = 3;

struct Standing {
    int score = unscored;
    FollowStatus followStatus = FollowStatus::NoTarget;
};

Standing standingOf(const FaceOverlay& overlay) {
    if (overlay.label == identity::owner)
        return {300, FollowStatus::Owner};
    if (overlay.label == identity::possibleOwner)
        return {230,
                overlay.faceEvidence ? FollowStatus::PossibleOwner : FollowStatus::Reacquiring};
    if (overlay.label == identity::person && overlay.bodyOnly)
        return {130, FollowStatus::Person};
    if (overlay.label == identity::unknown && !overlay.depthMissing)
        return {80, FollowStatus::Person};
    return {};
}

bool isRemembered(const FaceOverlay& overlay, const QString& followTargetName) {
    if (followTargetName.isEmpty())
        return false;
    // The owner's body keeps the owner's place.
    return overlay.label == followTargetName ||
           (followTargetName == identity::owner && overlay.label == identity::possibleOwner);
}

qsizetype bestOverlay(const QList<FaceOverlay>& overlays, const QString& followTargetName) {
    qsizetype best = -1;
    int bestScore = unscored;
    for (qsizetype i = 0; i < overlays.size(); ++i) {
        const int score = followScore(overlays[i], followTargetName);
        if (score > bestScore) {
            best = i;
            bestScore = score;
        }
    }
    return best;
}

void remember(FollowTarget& follow, const QString& name) {
    if (name == follow.followTargetName) {
        follow.followTargetStreak = std::min(follow.followTargetStreak + 1, maxStreak);
    } else if (follow.followTargetName.isEmpty() || name == identity::owner ||
               follow.followTargetStreak >= establishedStreak) {
        follow.followTargetName = name;
        follow.followTargetStreak = 1;
    }
}

bool ownerSeenLately(const FollowTarget& follow, qint64 now) {
    return follow.lastTavinSeenMs != 0 && now - follow.lastTavinSeenMs <= ownerMemoryMs;
}

void noteOwner(FollowTarget& follow, const FaceOverlay& owner, const QSize& imageSize, qint64 now) {
    follow.lastTavinSeenMs = now;
    follow.lastTavinHeadRegion = overlayGeometry::estimatedHeadRegion(owner, imageSize);
    follow.zoomHoldUntilMs =
        isCloseOwner(owner) ? now : std::max(now + ownerMemoryMs, follow.zoomHoldUntilMs);
}

FollowChoice followOverlay(FollowTarget& follow, FaceOverlay& target, const QSize& imageSize,
                           qint64 now) {
    FollowChoice choice;
    choice.selectedFollowTarget = standingOf(target).followStatus;
    choice.followTargetReason = choice.selectedFollowTarget;
    remember(follow, target.label);
    if (target.label == identity::owner) {
        noteOwner(follow, target, imageSize, now);
    } else if (target.bodyOnly && ownerSeenLately(follow, now)) {
        target.label = identity::possibleOwner;
        target.color = identity::ownerColor;
        choice.selectedFollowTarget = FollowStatus::Reacquiring;
        choice.reacquireMode = true;
    }
    return choice;
}

FollowChoice followNobody(FollowTarget& follow, qint64 now) {
    FollowChoice choice;
    choice.followTargetReason = FollowStatus::NoTarget;
    follow.followTargetStreak = std::max(follow.followTargetStreak - 1, 0);
    if (ownerSeenLately(follow, now) && follow.lastTavinHeadRegion.isValid()) {
        choice.reacquireMode = true;
        choice.selectedFollowTarget = FollowStatus::Reacquiring;
    }
    return choice;
}

} // namespace

bool isCloseOwner(const FaceOverlay& overlay) {
    return overlay.label == identity::owner && overlay.hasDistance &&
           overlay.distanceMeters < closeOwner_m;
}

int followScore(const FaceOverlay& overlay, const QString& followTargetName) {
    return standingOf(overlay).score +
           (isRemembered(overlay, followTargetName) ? rememberedBonus : 0) -
           (overlay.stale ? staleLoss : 0);
}

FollowChoice chooseFollowTarget(FollowTarget& follow, QList<FaceOverlay>& overlays,
                                const QSize& imageSize, qint64 now) {
    const qsizetype best = bestOverlay(overlays, follow.followTargetName);
    if (best < 0)
        return followNobody(follow, now);
    FollowChoice choice = followOverlay(follow, overlays[best], imageSize, now);
    choice.overlay = best;
    return choice;
}
