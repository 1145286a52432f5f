#pragma once

#include <QString>

/// How long ago a person may have been seen before the overlay says so; ages are in milliseconds.
namespace overlayFreshness {

inline constexpr qint64 freshMs = 500;

inline bool isStale(qint64 ageMs) {
    return ageMs > freshMs;
}

/// What a stale overlay's status says of its age: "last seen 0.7s".
inline QString lastSeenText(qint64 ageMs) {
    return QStringLiteral("last seen %1s").arg(double(ageMs) / 1000.0, 0, 'f', 1);
}

} // namespace overlayFreshness
