#include "awareness/face_distance.h"

#include "frames/sensor_facts.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

constexpr double pointAcrossFace = 0.5;
constexpr double pointDownFace = 0.58; // on the cheeks: eyes and glasses return little depth
constexpr int windowReach = 4;         // 9x9 pixels
constexpr int minSamples = 5;

/// A point of the colour image, along one axis, as a pixel of the depth frame.
int depthPixel(double colorPosition, int colorExtent, int depthExtent) {
    const double position = colorPosition * depthExtent / std::max(colorExtent, 1);
    return int(std::clamp(std::trunc(position), 0.0, double(depthExtent - 1)));
}

struct Samples {
    std::array<float, (2 * windowReach + 1) * (2 * windowReach + 1)> values;
    int count = 0;
};

/// The trusted depths of the window around pixel (x, y) of a valid frame.
Samples samplesAround(const DepthFrame& depth, int x, int y) {
    Samples samples;
    // The ends are found without adding past the frame, which could overflow in the largest one.
    const int lastRow = y + std::min(windowReach, depth.height - 1 - y);
    const int lastColumn = x + std::min(windowReach, depth.width - 1 - x);
    for (int row = y - std::min(y, windowReach); row <= lastRow; ++row) {
        const float* line = depth.depth_mm.constData() + qsizetype(row) * depth.width;
        for (int column = x - std::min(x, windowReach); column <= lastColumn; ++column) {
            const float sample = line[column];
            // NaN fails both comparisons, infinity the second.
            if (sample >= sensor::nearestDepth_mm && sample <= sensor::farthestDepth_mm)
                samples.values[size_t(samples.count++)] = sample;
        }
    }
    return samples;
}

} // namespace

void measureFaceDistances(QList<FaceOverlay>& overlays, const DepthFrame& depth,
                          const QSize& colorSize) {
    for (FaceOverlay& overlay : overlays) {
        if (!overlay.rect.isValid())
            continue;
        const QRect& face = overlay.rect;
        const double faceWidth = double(face.right()) - face.left() + 1;
        const double faceHeight = double(face.bottom()) - face.top() + 1;
        const int x =
            depthPixel(face.left() + pointAcrossFace * faceWidth, colorSize.width(), depth.width);
        const int y =
            depthPixel(face.top() + pointDownFace * faceHeight, colorSize.height(), depth.height);
        Samples samples = depth.isValid() ? samplesAround(depth, x, y) : Samples();
        overlay.hasDistance = samples.count >= minSamples;
        overlay.depthMissing = !overlay.hasDistance;
        if (!overlay.hasDistance)
            continue;
        const auto first = samples.values.begin();
        std::nth_element(first, first + samples.count / 2, first + samples.count);
        overlay.distanceMeters = double(samples.values[size_t(samples.count / 2)]) / 1000.0;
    }
}
