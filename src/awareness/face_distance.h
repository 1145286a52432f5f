#pragma once

#include "app/face_overlay.h"
#include "frames/depth_frame.h"

#include <QList>
#include <QSize>

/// Gives every face overlay with a valid box its distance: the median depth around a point on the
/// cheeks, a little below the face's centre. Sets `hasDistance`, `distanceMeters` and
/// `depthMissing`; a face with fewer than five usable samples has no distance and misses depth.
/// An invalid frame has no sample for anybody; `colorSize` is the size of the image that the boxes
/// are for.
void measureFaceDistances(QList<FaceOverlay>& overlays, const DepthFrame& depth,
                          const QSize& colorSize);
