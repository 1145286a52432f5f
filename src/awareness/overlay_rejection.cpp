#include "awareness/overlay_rejection.h"

#include "app/identity.h"
#include "awareness/overlay_geometry.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <optional>

namespace {

constexpr double farthestLoneFace_m = 2.2; // farther unknown faces need a body
constexpr double duplicateReach = 0.28;    // of the image width between centres
constexpr double duplicateDistance_m = 0.45;

std::optional<RejectionReason> photographReason(const FaceOverlay& overlay) {
    if (overlay.bodyOnly)
        return std::nullopt;
    if (!overlay.hasDistance && overlay.depthMissing && overlay.label != identity::owner)
        return RejectionReason::NoDepth;
    if (overlay.label == identity::unknown && overlay.hasDistance &&
        overlay.distanceMeters > farthestLoneFace_m)
        return RejectionReason::FarWithoutBody;
    return std::nullopt;
}

bool isDuplicateOf(const FaceOverlay& overlay, const FaceOverlay& owner, int imageWidth) {
    const double apart = std::abs(double(overlayGeometry::boxCenter(overlay.rect).x()) -
                                  overlayGeometry::boxCenter(owner.rect).x());
    if (overlay.hasDistance && owner.hasDistance && apart <= duplicateReach * imageWidth &&
        std::abs(overlay.distanceMeters - owner.distanceMeters) <= duplicateDistance_m)
        return true;
    return overlay.rect.intersects(overlayGeometry::enlargedByHalf(owner.rect));
}

/// Drops the overlays for which `reasonOf` has a reason.
template <typename ReasonOf>
void rejectIf(QList<FaceOverlay>& overlays, QList<Rejection>& rejections, ReasonOf reasonOf) {
    overlays.removeIf([&](const FaceOverlay& overlay) {
        const std::optional<RejectionReason> reason = reasonOf(overlay);
        if (reason)
            rejections.append({overlay, *reason});
        return reason.has_value();
    });
}

} // namespace

QList<Rejection> rejectOverlays(QList<FaceOverlay>& overlays, int imageWidth) {
    QList<Rejection> rejections;
    rejectIf(overlays, rejections, photographReason);

    QList<FaceOverlay> owners;
    std::copy_if(overlays.begin(), overlays.end(), std::back_inserter(owners),
                 [](const FaceOverlay& overlay) { return overlay.label == identity::owner; });
    rejectIf(overlays, rejections,
             [&](const FaceOverlay& overlay) -> std::optional<RejectionReason> {
                 const bool duplicate =
                     overlay.label != identity::owner &&
                     std::any_of(owners.begin(), owners.end(), [&](const FaceOverlay& owner) {
                         return isDuplicateOf(overlay, owner, imageWidth);
                     });
                 if (duplicate)
                     return RejectionReason::DuplicateOfOwner;
                 return std::nullopt;
             });
    return rejections;
}
