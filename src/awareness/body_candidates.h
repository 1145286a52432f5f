#pragma once

#include "frames/depth_frame.h"

#include <QList>
#include <QRect>
#include <QSize>
#include <QString>

/// A person-sized, upright blob of one depth frame.
struct BodyCandidate {
    QRect rect;              ///< Colour-image pixels, with margins for head and feet, clipped.
    double distance_m = 0.0; ///< Median depth of the blob in metres.
    int cells = 0;           ///< Occupied 4x4-pixel cells in the blob.
    QString tier = QStringLiteral("far"); ///< "far body" from 2.2 m on, otherwise "mid body".
};

/// A group of occupied cells that touch each other at their edges. A cell is 4x4 depth pixels, and
/// occupied where at least 4 of them lie in the band.
struct CellBlob {
    QRect cellBox; ///< Its extent, in cells.
    int cells = 0;
};

/// From this distance on a body is a "far body", in metres.
inline constexpr double farBody_m = 2.2;

/// "far body" from 2.2 m on, "mid body" below.
QString bodyTier(double distance_m);

/// Finds standing people in a raw depth frame:
/// 1. a grid of 4x4-pixel cells, occupied where at least 4 pixels lie in 1600 … 3800 mm;
/// 2. its 4-connected components;
/// 3. gates on their size and shape (why each: see the constants in the source);
/// 4. the median depth of their cells' centres;
/// 5. their box scaled to the colour image and widened by a fifth of its width on either side, an
///    eighth of its height above and a tenth below, so that head and feet are inside;
/// 6. a gate on the clipped box: at least 55x120 pixels.
///
/// `colorSize` is the size of the image that the boxes are for. The two frames are mapped onto each
/// other by plain scaling, there is no lens registration. Returns at most four candidates, tallest
/// box first, and of equally tall ones the one first that a scan row by row meets first; none for
/// an invalid frame, one that is smaller than a cell, or an empty image.
QList<BodyCandidate> detectDepthBodyCandidates(const DepthFrame& depth, const QSize& colorSize);

/// What a blob fails on, in the order in which it is looked at.
enum class BodyGate { Passed, Cells, Upright, Fill, Width, Height };

/// The first gate that the shape of a blob fails in a grid of that many cells, at least 1x1. All
/// bounds are inclusive.
BodyGate failedBodyGate(const CellBlob& blob, const QSize& grid);
