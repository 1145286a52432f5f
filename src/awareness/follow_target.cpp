#include "awareness/follow_target.h"

#include "app/identity.h"
#include "awareness/overlay_geometry.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr int unscored = -1;
constexpr int rememberedBonus = 35;
constexpr int staleLoss = 20;
constexpr int mostStreak = 30;
constexpr int establishedStreak = 3;

const QString nobody = u"No follow target"_s;
const QString reacquiring = u"Reacquiring Tavin face"_s;

struct Standing {
    int score = unscored;
    QString followStatus = nobody;
};

Standing standingOf(const FaceOverlay& overlay) {
    if (overlay.label == identity::owner)
        return {300, u"Following Tavin"_s};
    if (overlay.label == identity::possibleOwner)
        return {230, overlay.faceEvidence ? u"Following possible Tavin"_s : reacquiring};
    if (overlay.label == identity::person && overlay.bodyOnly)
        return {130, u"Following person"_s};
    if (overlay.label == identity::unknown && !overlay.depthMissing)
        return {80, u"Following person"_s};
    return {};
}

bool isRemembered(const FaceOverlay& overlay, const QString& followTargetName) {
    if (followTargetName.isEmpty())
        return false;
    // The owner's body keeps the owner's place.
    return overlay.label == followTargetName ||
           (followTargetName == identity::owner && overlay.label == identity::possibleOwner);
}

int scoreOf(const FaceOverlay& overlay, const QString& followTargetName) {
    return standingOf(overlay).score +
           (isRemembered(overlay, followTargetName) ? rememberedBonus : 0) -
           (overlay.stale ? staleLoss : 0);
}

qsizetype bestOverlay(const QList<FaceOverlay>& overlays, const QString& followTargetName) {
    qsizetype best = -1;
    int bestScore = unscored;
    for (qsizetype i = 0; i < overlays.size(); ++i) {
        const int score = scoreOf(overlays[i], followTargetName);
        if (score > bestScore) {
            best = i;
            bestScore = score;
        }
    }
    return best;
}

void remember(FollowTarget& follow, const QString& name) {
    if (name == follow.followTargetName) {
        follow.followTargetStreak = std::min(follow.followTargetStreak + 1, mostStreak);
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
    follow.lastTavinHeadRegion = estimatedHeadRegion(owner, imageSize);
    follow.zoomHoldUntilMs =
        isCloseOwner(owner) ? now : std::max(now + ownerMemoryMs, follow.zoomHoldUntilMs);
}

void followOverlay(FollowTarget& follow, FaceOverlay& target, const QSize& imageSize, qint64 now) {
    follow.selectedFollowTarget = standingOf(target).followStatus;
    remember(follow, target.label);
    follow.followTargetReason = follow.selectedFollowTarget;
    if (target.label == identity::owner) {
        noteOwner(follow, target, imageSize, now);
    } else if (target.bodyOnly && ownerSeenLately(follow, now)) {
        target.label = identity::possibleOwner;
        target.color = identity::ownerColor;
        follow.selectedFollowTarget = reacquiring;
        follow.reacquireMode = true;
    }
}

void followNobody(FollowTarget& follow, qint64 now) {
    follow.followTargetStreak = std::max(follow.followTargetStreak - 1, 0);
    follow.followTargetReason = nobody;
    if (ownerSeenLately(follow, now) && follow.lastTavinHeadRegion.isValid()) {
        follow.reacquireMode = true;
        follow.selectedFollowTarget = reacquiring;
    }
}

} // namespace

bool isCloseOwner(const FaceOverlay& overlay) {
    return overlay.label == identity::owner && overlay.hasDistance &&
           overlay.distanceMeters < closeOwner_m;
}

qsizetype chooseFollowTarget(FollowTarget& follow, QList<FaceOverlay>& overlays,
                             const QSize& imageSize, qint64 now) {
    follow.selectedFollowTarget = nobody;
    follow.followTargetReason = u"none"_s;
    follow.reacquireMode = false;
    const qsizetype best = bestOverlay(overlays, follow.followTargetName);
    if (best >= 0)
        followOverlay(follow, overlays[best], imageSize, now);
    else
        followNobody(follow, now);
    return best;
}
