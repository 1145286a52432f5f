#pragma once

#include "app/face_overlay.h"

#include <QList>
#include <QSize>

/// Gives every face overlay with a valid box its distance: the median depth around a point on the
/// cheeks, a little below the face's centre. Sets `hasDistance`, `distanceMeters` and
/// `depthMissing`; a face with fewer than five usable samples has no distance and misses depth.
/// `depth_mm` holds width x height millimetre values, row by row, width and height at least 1 (a
/// shorter list has no sample for anybody); `colorSize` is the size of the image that the boxes are
/// for.
void measureFaceDistances(QList<FaceOverlay>& overlays, const QList<float>& depth_mm, int width,
                          int height, const QSize& colorSize);
