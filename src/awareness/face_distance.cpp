#include "awareness/face_distance.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

constexpr double pointAcrossFace = 0.5;
constexpr double pointDownFace = 0.58; // on the cheeks: eyes and glasses return little depth
constexpr int windowReach = 4;         // 9x9 pixels
constexpr int leastSamples = 5;
constexpr float nearestFace_mm = 250.0F; // what the sensor is trusted with
constexpr float farthestFace_mm = 8000.0F;

/// A point of the colour image, along one axis, as a pixel of the depth frame.
int depthPixel(double colorPosition, int colorExtent, int depthExtent) {
    const double position = colorPosition * depthExtent / std::max(colorExtent, 1);
    return int(std::clamp(std::trunc(position), 0.0, double(depthExtent - 1)));
}

struct Samples {
    std::array<float, (2 * windowReach + 1) * (2 * windowReach + 1)> values;
    int count = 0;
};

Samples samplesAround(const QList<float>& depth_mm, int width, int height, int x, int y) {
    Samples samples;
    if (depth_mm.size() < qint64(width) * height)
        return samples;
    // Written so that a centre at the end of the largest frames cannot overflow.
    for (int row = y - std::min(y, windowReach); row - y <= windowReach && row < height; ++row) {
        const float* line = depth_mm.constData() + qsizetype(row) * width;
        for (int column = x - std::min(x, windowReach); column - x <= windowReach && column < width;
             ++column) {
            const float depth = line[column];
            // NaN fails both comparisons, infinity the second.
            if (depth >= nearestFace_mm && depth <= farthestFace_mm)
                samples.values[size_t(samples.count++)] = depth;
        }
    }
    return samples;
}

} // namespace

void measureFaceDistances(QList<FaceOverlay>& overlays, const QList<float>& depth_mm, int width,
                          int height, const QSize& colorSize) {
    for (FaceOverlay& overlay : overlays) {
        if (!overlay.rect.isValid())
            continue;
        const QRect& face = overlay.rect;
        const double faceWidth = double(face.right()) - face.left() + 1;
        const double faceHeight = double(face.bottom()) - face.top() + 1;
        const int x =
            depthPixel(face.left() + pointAcrossFace * faceWidth, colorSize.width(), width);
        const int y =
            depthPixel(face.top() + pointDownFace * faceHeight, colorSize.height(), height);
        Samples samples = samplesAround(depth_mm, width, height, x, y);
        overlay.hasDistance = samples.count >= leastSamples;
        overlay.depthMissing = !overlay.hasDistance;
        if (!overlay.hasDistance)
            continue;
        const auto first = samples.values.begin();
        std::nth_element(first, first + samples.count / 2, first + samples.count);
        overlay.distanceMeters = double(samples.values[size_t(samples.count / 2)]) / 1000.0;
    }
}
