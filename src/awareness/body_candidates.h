#pragma once

#include <QList>
#include <QRect>
#include <QSize>
#include <QString>

#include <optional>

/// A person-sized, upright blob of one depth frame.
struct BodyCandidate {
    QRect rect;              ///< Colour-image pixels, with margins for head and feet, clipped.
    double distance_m = 0.0; ///< Median depth of the blob in metres.
    int cells = 0;           ///< Occupied 4x4-pixel cells in the blob.
    QString tier = QStringLiteral("far"); ///< "far body" from 2.2 m on, otherwise "mid body".
};

struct GridComponent;

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
/// `depth_mm` holds width x height millimetre values, row by row; `colorSize` is the size of the
/// image that the boxes are for. The two frames are mapped onto each other by plain scaling, there
/// is no lens registration. Returns at most four candidates, tallest box first; none when a size is
/// not positive, the frame is smaller than a cell or the list is shorter than width x height.
QList<BodyCandidate> detectDepthBodyCandidates(const QList<float>& depth_mm, int width, int height,
                                               const QSize& colorSize);

/// What a component of the occupancy grid fails on, in the order in which it is looked at.
enum class BodyGate { Passed, Cells, Upright, Fill, Width, Height };

/// The first gate that the shape of a component fails; `gridWidth` and `gridHeight` are in cells,
/// at least 1. All bounds are inclusive.
BodyGate failedBodyGate(const GridComponent& component, int gridWidth, int gridHeight);
