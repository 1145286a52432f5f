#pragma once

#include <QList>

/// The distances that one frame of the depth camera holds, as they are handed from the acquisition
/// worker to whoever looks for bodies and faces in them. A plain value: copies share their list.
struct DepthFrame {
    /// Millimetres, row by row: the pixel in column x of row y is `depth_mm[y * width + x]`.
    /// Exactly as the sensor delivers them: 0 where it has no reading, and nothing is filtered.
    QList<float> depth_mm;
    int width = 0;  ///< In pixels.
    int height = 0; ///< In pixels.

    /// Whether there is at least one pixel and the list holds a value for each of them. Says
    /// nothing about whether any value is a reading.
    bool isValid() const {
        return width > 0 && height > 0 && depth_mm.size() >= qint64(width) * height;
    }
};
