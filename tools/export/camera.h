#pragma once

namespace exporting {

/// A camera without distortion: the pixel with whole numbers (column, row) shows the point
/// (x, y, z) when column = cx + fx * x / z and row = cy + fy * y / z.
struct Camera {
    int width = 0;
    int height = 0;
    double fx = 0;
    double fy = 0;
    double cx = 0;
    double cy = 0;
};

} // namespace exporting
