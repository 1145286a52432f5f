#include "awareness/body_candidates.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <optional>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

// The room's working distance for somebody who stands; both ends count.
constexpr float minBody_mm = 1600.0F;
constexpr float maxBody_mm = 3800.0F;

constexpr int cellPixels = 4;
constexpr int minCells = 45;           // smaller blobs are noise or a pet
constexpr std::size_t minSamples = 20; // fewer do not make a distance
constexpr double minUpright = 1.05;    // taller than wide: standing people are
constexpr double minFill = 0.1;        // sparser is noise
constexpr double maxFill = 0.92;       // a nearly full rectangle is a wall, a door or a cupboard
constexpr double maxGridWidth = 0.55;  // wider is a wall, or a crowd that cannot be told apart
constexpr double maxGridHeight = 0.95; // taller is the room itself
constexpr int minBoxWidth = 55;        // colour pixels
constexpr int minBoxHeight = 120;      // colour pixels
constexpr qsizetype maxCandidates = 4; // the four nearest people matter

/// The frame as OpenCV sees it; nothing is copied, and nothing may be written.
cv::Mat readOnlyImage(const DepthFrame& depth) {
    return cv::Mat(depth.height, depth.width, CV_32F,
                   const_cast<float*>(depth.depth_mm.constData()));
}

/// 255 for every occupied cell, otherwise 0. Trailing columns and rows of the frame that do not
/// fill a cell are ignored.
cv::Mat occupiedCells(const cv::Mat& depth_mm) {
    const cv::Size grid(depth_mm.cols / cellPixels, depth_mm.rows / cellPixels);
    cv::Mat inBand;
    cv::inRange(depth_mm(cv::Rect(cv::Point(), grid * cellPixels)), minBody_mm, maxBody_mm, inBand);
    // The mean of a cell is 64 when 4 of its 16 pixels are 255 and 48 when 3 are. Halving twice is
    // faster than going to a quarter at once, and its rounding is off by 1 at most.
    constexpr double betweenThreeAndFour = 56.0;
    cv::Mat halves;
    cv::Mat cells;
    cv::resize(inBand, halves, grid * 2, 0.0, 0.0, cv::INTER_AREA);
    cv::resize(halves, cells, grid, 0.0, 0.0, cv::INTER_AREA);
    return cells > betweenThreeAndFour;
}

/// A blob that is shaped like somebody who stands.
struct UprightBlob : CellBlob {
    int label = 0;       ///< Its number in `LabelledCells::labels`.
    int firstColumn = 0; ///< Of its topmost row.
};

struct LabelledCells {
    cv::Mat labels;                 ///< For every cell the number of its blob, 32-bit integers.
    std::vector<UprightBlob> blobs; ///< In the order in which a scan row by row meets them.
};

LabelledCells uprightBlobs(const cv::Mat& cells) {
    LabelledCells found;
    cv::Mat stats;
    cv::Mat centroids;
    const int labels =
        cv::connectedComponentsWithStats(cells, found.labels, stats, centroids, 4, CV_32S);
    for (int label = 1; label < labels; ++label) { // 0 is the background
        const int* values = stats.ptr<int>(label);
        UprightBlob blob;
        blob.cells = values[cv::CC_STAT_AREA];
        blob.cellBox = QRect(values[cv::CC_STAT_LEFT], values[cv::CC_STAT_TOP],
                             values[cv::CC_STAT_WIDTH], values[cv::CC_STAT_HEIGHT]);
        if (failedBodyGate(blob, QSize(cells.cols, cells.rows)) != BodyGate::Passed)
            continue;
        const int* topRow = found.labels.ptr<int>(blob.cellBox.top());
        blob.label = label;
        blob.firstColumn = int(std::find(topRow, topRow + cells.cols, label) - topRow);
        found.blobs.push_back(blob);
    }
    // OpenCV does not promise an order of its labels.
    std::sort(found.blobs.begin(), found.blobs.end(),
              [](const UprightBlob& a, const UprightBlob& b) {
                  return std::pair(a.cellBox.top(), a.firstColumn) <
                         std::pair(b.cellBox.top(), b.firstColumn);
              });
    return found;
}

/// The blob's box in the colour image, see the list in the header; null when it lies outside.
QRect colorBox(const QRect& cellBox, const DepthFrame& depth, const QSize& colorSize) {
    const double fx0 = double(cellPixels) * cellBox.left() / depth.width;
    const double fx1 = (double(cellPixels) * cellBox.right() + cellPixels) / depth.width;
    const double fy0 = double(cellPixels) * cellBox.top() / depth.height;
    const double fy1 = (double(cellPixels) * cellBox.bottom() + cellPixels) / depth.height;
    // In 64 bits: an image as wide as an int can say must not overflow with its margins.
    const qint64 left = static_cast<int>(colorSize.width() * fx0);
    const qint64 top = static_cast<int>(colorSize.height() * fy0);
    const qint64 bw = static_cast<int>((fx1 - fx0) * colorSize.width());
    const qint64 bh = static_cast<int>((fy1 - fy0) * colorSize.height());
    const qint64 x1 = std::max<qint64>(left - bw / 5, 0);
    const qint64 y1 = std::max<qint64>(top - bh / 8, 0);
    const qint64 x2 = std::min<qint64>(left + bw - 1 + bw / 5, colorSize.width() - 1);
    const qint64 y2 = std::min<qint64>(top + bh - 1 + bh / 10, colorSize.height() - 1);
    return QRect(QPoint(int(x1), int(y1)), QPoint(int(x2), int(y2)));
}

/// Median of the valid depths at the centres of the blob's cells, in metres: the upper of the two
/// middle ones for an even number. Nothing when there are too few.
std::optional<double> medianDistance(const UprightBlob& blob, const cv::Mat& labels,
                                     const cv::Mat& depth_mm) {
    std::vector<float> samples;
    samples.reserve(static_cast<std::size_t>(blob.cells));
    for (int y = blob.cellBox.top(); y <= blob.cellBox.bottom(); ++y) {
        const int* labelRow = labels.ptr<int>(y);
        const float* depthRow = depth_mm.ptr<float>(cellPixels * y + cellPixels / 2);
        for (int x = blob.cellBox.left(); x <= blob.cellBox.right(); ++x) {
            const float sample = depthRow[cellPixels * x + cellPixels / 2];
            if (labelRow[x] == blob.label && sample >= minBody_mm && sample <= maxBody_mm)
                samples.push_back(sample);
        }
    }
    if (samples.size() < minSamples)
        return std::nullopt;
    const auto middle = samples.begin() + std::ptrdiff_t(samples.size() / 2);
    std::nth_element(samples.begin(), middle, samples.end());
    return double(*middle) / 1000.0;
}

} // namespace

QString bodyTier(double distance_m) {
    return distance_m >= farBody_m ? u"far body"_s : u"mid body"_s;
}

BodyGate failedBodyGate(const CellBlob& blob, const QSize& grid) {
    const double wCells = blob.cellBox.width();
    const double hCells = blob.cellBox.height();
    if (blob.cells < minCells)
        return BodyGate::Cells;
    if (hCells / wCells < minUpright)
        return BodyGate::Upright;
    const double fill = blob.cells / (wCells * hCells);
    if (fill < minFill || fill > maxFill)
        return BodyGate::Fill;
    if (wCells > maxGridWidth * grid.width())
        return BodyGate::Width;
    if (hCells > maxGridHeight * grid.height())
        return BodyGate::Height;
    return BodyGate::Passed;
}

QList<BodyCandidate> detectDepthBodyCandidates(const DepthFrame& depth, const QSize& colorSize) {
    QList<BodyCandidate> candidates;
    if (!depth.isValid() || depth.width < cellPixels || depth.height < cellPixels ||
        colorSize.isEmpty())
        return candidates;
    const cv::Mat depth_mm = readOnlyImage(depth);
    const LabelledCells found = uprightBlobs(occupiedCells(depth_mm));
    for (const UprightBlob& blob : found.blobs) {
        const QRect box = colorBox(blob.cellBox, depth, colorSize);
        if (box.width() < minBoxWidth || box.height() < minBoxHeight)
            continue;
        const std::optional<double> distance_m = medianDistance(blob, found.labels, depth_mm);
        if (distance_m)
            candidates.append({box, *distance_m, blob.cells, bodyTier(*distance_m)});
    }
    std::stable_sort(candidates.begin(), candidates.end(),
                     [](const BodyCandidate& a, const BodyCandidate& b) {
                         return a.rect.height() > b.rect.height();
                     });
    if (candidates.size() > maxCandidates)
        candidates.resize(maxCandidates);
    return candidates;
}
