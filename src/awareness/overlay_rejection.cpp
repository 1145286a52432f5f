#include "awareness/overlay_rejection.h"

#include "app/identity.h"
#include "awareness/overlay_geometry.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

using namespace Qt::StringLiterals;

namespace {

constexpr double farthestLoneFace_m = 2.2; // farther unknown faces need a body
constexpr double duplicateReach = 0.28;    // of the image width between centres
constexpr double duplicateDistance_m = 0.45;

/// Why a face is no person in the room; empty when it may be one.
QString photographReason(const FaceOverlay& overlay) {
    if (overlay.bodyOnly)
        return {};
    if (!overlay.hasDistance && overlay.depthMissing && overlay.label != identity::owner)
        return u"no valid depth/photo-like"_s;
    if (overlay.label == identity::unknown && overlay.hasDistance &&
        overlay.distanceMeters > farthestLoneFace_m)
        return u"far face without body evidence"_s;
    return {};
}

QString photographLine(const FaceOverlay& overlay, const QString& reason) {
    const QString distance =
        overlay.hasDistance ? QString::number(overlay.distanceMeters, 'f', 2) + u'm' : u"none"_s;
    return u"reject %1 box=%2 distance=%3 reason=%4"_s.arg(overlay.label, boxText(overlay.rect),
                                                           distance, reason);
}

bool isDuplicateOf(const FaceOverlay& overlay, const FaceOverlay& owner, int imageWidth) {
    const double apart = std::abs(double(boxCenter(overlay.rect).x()) - boxCenter(owner.rect).x());
    if (overlay.hasDistance && owner.hasDistance && apart <= duplicateReach * imageWidth &&
        std::abs(overlay.distanceMeters - owner.distanceMeters) <= duplicateDistance_m)
        return true;
    return overlay.rect.intersects(enlargedByHalf(owner.rect));
}

void rejectPhotographs(QList<FaceOverlay>& overlays, QStringList& lines) {
    overlays.removeIf([&lines](const FaceOverlay& overlay) {
        const QString reason = photographReason(overlay);
        if (!reason.isEmpty())
            lines.append(photographLine(overlay, reason));
        return !reason.isEmpty();
    });
}

void rejectDuplicates(QList<FaceOverlay>& overlays, int imageWidth, QStringList& lines) {
    QList<FaceOverlay> owners;
    std::copy_if(overlays.begin(), overlays.end(), std::back_inserter(owners),
                 [](const FaceOverlay& overlay) { return overlay.label == identity::owner; });
    overlays.removeIf([&](const FaceOverlay& overlay) {
        const bool duplicate =
            overlay.label != identity::owner &&
            std::any_of(owners.begin(), owners.end(), [&](const FaceOverlay& owner) {
                return isDuplicateOf(overlay, owner, imageWidth);
            });
        if (duplicate)
            lines.append(u"reject %1 box=%2 reason=duplicate near Tavin"_s.arg(
                overlay.label, boxText(overlay.rect)));
        return duplicate;
    });
}

} // namespace

QStringList rejectOverlays(QList<FaceOverlay>& overlays, int imageWidth) {
    QStringList lines;
    rejectPhotographs(overlays, lines);
    rejectDuplicates(overlays, imageWidth, lines);
    return lines;
}
