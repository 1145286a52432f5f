#include "awareness/body_candidates.h"

#include "awareness/grid_components.h"
#include "awareness/occupancy_grid.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

constexpr int leastCells = 45;           // smaller blobs are noise or a pet
constexpr std::size_t leastSamples = 20; // fewer do not make a distance
constexpr double leastUpright = 1.05;    // taller than wide: standing people are
constexpr double leastFill = 0.1;        // sparser is noise
constexpr double mostFill = 0.92;        // a nearly full rectangle is a wall, a door or a cupboard
constexpr double widestOfGrid = 0.55;    // wider is a wall, or a crowd that cannot be told apart
constexpr double tallestOfGrid = 0.95;   // taller is the room itself
constexpr int leastBoxWidth = 55;        // colour pixels
constexpr int leastBoxHeight = 120;      // colour pixels
constexpr qsizetype mostCandidates = 4;  // the four nearest people matter

/// The component's box in the colour image, see the list in the header; null when it lies outside.
QRect colorBox(const GridComponent& component, int width, int height, const QSize& colorSize) {
    const double fx0 = double(cellPixels) * component.minX / width;
    const double fx1 = (double(cellPixels) * component.maxX + cellPixels) / width;
    const double fy0 = double(cellPixels) * component.minY / height;
    const double fy1 = (double(cellPixels) * component.maxY + cellPixels) / height;
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

/// The element at `index` of the first `count` depth steps in ascending order; the list is used up.
/// Digit by digit from the highest: its cost is the same for every order and spread of the samples,
/// which that of comparing them is not. Digits of six bits keep it low for a few samples too.
std::uint32_t stepAt(std::size_t index, std::vector<std::uint32_t>& steps, std::size_t count) {
    constexpr std::uint32_t lastDigit = 63;
    std::uint32_t found = 0;
    for (const int shift : {18, 12, 6, 0}) {
        std::array<std::uint32_t, lastDigit + 1> frequency{};
        for (std::size_t i = 0; i < count; ++i)
            ++frequency[steps[i] >> shift & lastDigit];
        std::uint32_t digit = 0;
        for (; index >= frequency[digit]; ++digit)
            index -= frequency[digit];
        std::size_t kept = 0;
        for (std::size_t i = 0; i < count; ++i) {
            const std::uint32_t step = steps[i];
            steps[kept] = step;
            kept += (step >> shift & lastDigit) == digit ? 1 : 0;
        }
        count = kept;
        found |= digit << shift;
    }
    return found;
}

/// Median of the valid depths at the centres of the component's cells, in metres: the upper of the
/// two middle ones for an even number. Nothing when there are too few.
std::optional<double> medianDistance(const GridComponent& component,
                                     const std::vector<CellRun>& runs, const float* depth_mm,
                                     int width, std::vector<std::uint32_t>& steps) {
    steps.resize(std::max(steps.size(), static_cast<std::size_t>(component.cells)));
    std::size_t count = 0;
    for (int i = component.firstRun; i >= 0; i = runs[static_cast<std::size_t>(i)].next) {
        const CellRun& run = runs[static_cast<std::size_t>(i)];
        const qsizetype y = qsizetype(cellPixels) * run.y + cellPixels / 2;
        const float* row = depth_mm + y * width;
        for (int x = run.begin; x < run.end; ++x) {
            const std::uint32_t step =
                bodyDepthStep(row[qsizetype(cellPixels) * x + cellPixels / 2]);
            steps[count] = step;
            count += step <= farthestBodyStep ? 1 : 0;
        }
    }
    if (count < leastSamples)
        return std::nullopt;
    return double(bodyDepthAt(stepAt(count / 2, steps, count))) / 1000.0;
}

bool isUsableFrame(const QList<float>& depth_mm, int width, int height, const QSize& colorSize) {
    return width >= cellPixels && height >= cellPixels && colorSize.width() >= 1 &&
           colorSize.height() >= 1 && depth_mm.size() >= qint64(width) * height;
}

} // namespace

QString bodyTier(double distance_m) {
    return distance_m >= farBody_m ? u"far body"_s : u"mid body"_s;
}

BodyGate failedBodyGate(const GridComponent& component, int gridWidth, int gridHeight) {
    const double wCells = component.maxX - component.minX + 1;
    const double hCells = component.maxY - component.minY + 1;
    if (component.cells < leastCells)
        return BodyGate::Cells;
    if (hCells / wCells < leastUpright)
        return BodyGate::Upright;
    const double fill = component.cells / (wCells * hCells);
    if (fill < leastFill || fill > mostFill)
        return BodyGate::Fill;
    if (wCells > widestOfGrid * gridWidth)
        return BodyGate::Width;
    if (hCells > tallestOfGrid * gridHeight)
        return BodyGate::Height;
    return BodyGate::Passed;
}

QList<BodyCandidate> detectDepthBodyCandidates(const QList<float>& depth_mm, int width, int height,
                                               const QSize& colorSize) {
    QList<BodyCandidate> candidates;
    if (!isUsableFrame(depth_mm, width, height, colorSize))
        return candidates;
    const OccupancyGrid grid(depth_mm.constData(), width, height);
    const GridComponents found = gridComponents(grid);
    std::vector<std::uint32_t> steps;
    for (const GridComponent& component : found.components) {
        if (failedBodyGate(component, grid.width(), grid.height()) != BodyGate::Passed)
            continue;
        const QRect box = colorBox(component, width, height, colorSize);
        if (box.width() < leastBoxWidth || box.height() < leastBoxHeight)
            continue;
        const std::optional<double> distance_m =
            medianDistance(component, found.runs, depth_mm.constData(), width, steps);
        if (distance_m)
            candidates.append({box, *distance_m, component.cells, bodyTier(*distance_m)});
    }
    // Stable, so that blobs of equal height come in the same order at every run.
    std::stable_sort(candidates.begin(), candidates.end(),
                     [](const BodyCandidate& a, const BodyCandidate& b) {
                         return a.rect.height() > b.rect.height();
                     });
    if (candidates.size() > mostCandidates)
        candidates.resize(mostCandidates);
    return candidates;
}
