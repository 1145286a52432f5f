#pragma once

#include "app/face_overlay.h"

#include <QList>
#include <QStringList>

/// Drops faces that look like photographs or belong to the background (no depth behind them, or
/// unknown and too far away), and then whatever stands so close to the owner that it must be the
/// owner once more. Returns one line per dropped overlay, for the log. `imageWidth` is the colour
/// image's.
QStringList rejectOverlays(QList<FaceOverlay>& overlays, int imageWidth);
