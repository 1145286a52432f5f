#include "face/cascade_features.h"

#include <algorithm>
#include <limits>
#include <map>
#include <set>
#include <utility>

namespace {

constexpr int maxPixel = 255;
constexpr int maxShift = 4;

/// How often the sum at each place counts; places that cancel out are missing.
using CornerCounts = std::map<std::pair<int, int>, int>;

void count(CornerCounts& counts, cv::Point corner, int times) {
    const auto place = std::pair(corner.x, corner.y);
    if ((counts[place] += times) == 0)
        counts.erase(place);
}

CornerCounts cornerCounts(const CascadeData::Feature& feature) {
    CornerCounts counts;
    for (const auto& [rect, weight] : feature) {
        count(counts, rect.tl(), weight);
        count(counts, rect.br(), weight);
        count(counts, {rect.x + rect.width, rect.y}, -weight);
        count(counts, {rect.x, rect.y + rect.height}, -weight);
    }
    return counts;
}

CornerCounts negative(CornerCounts counts) {
    for (auto& [place, times] : counts)
        times = -times;
    return counts;
}

/// Neighbouring stripes of equal length: cut three times for an edge, four times for a line.
struct Stripes {
    bool alongX = true;    ///< The cuts follow each other in this direction.
    std::vector<int> cuts; ///< Ascending.
    int from = 0;          ///< Where the stripes begin and end in the other direction.
    int to = 0;
    int multiplier = 2;
    bool flipped = false; ///< Gives the negative.

    /// The two corners at each cut.
    std::vector<cv::Point> corners() const {
        std::vector<cv::Point> points;
        for (const int cut : cuts) {
            for (const int end : {flipped ? to : from, flipped ? from : to})
                points.push_back(alongX ? cv::Point(cut, end) : cv::Point(end, cut));
        }
        return points;
    }
    CornerCounts counts() const {
        const std::vector<int> factors =
            cuts.size() == 3 ? std::vector{-1, 2, -1} : std::vector{1, -multiplier, multiplier, -1};
        const std::vector<cv::Point> points = corners();
        CornerCounts result;
        for (std::size_t i = 0; i < factors.size(); ++i) {
            count(result, points[2 * i], -factors[i]);
            count(result, points[2 * i + 1], factors[i]);
        }
        return result;
    }
    /// The largest value of either sign, for stripes of length one.
    int rangePerLength() const {
        if (cuts.size() == 3)
            return maxPixel * std::max(cuts[1] - cuts[0], cuts[2] - cuts[1]);
        const int inside = (multiplier - 1) * (cuts[2] - cuts[1]);
        return maxPixel * std::max(inside, cuts[1] - cuts[0] + cuts[3] - cuts[2]);
    }
    int range() const { return rangePerLength() * (to - from); }
    FeaturePlan plan() const {
        FeaturePlan result;
        result.shape = cuts.size() == 3
                           ? FeatureShape::edge
                           : (multiplier == 2 ? FeatureShape::line : FeatureShape::wideLine);
        result.corners = corners();
        result.range = range();
        return result;
    }
    /// Appends shorter stripes that each fit 16 bits and come to the same.
    void slice(std::vector<FeatureLine>& lines) const {
        Stripes line = *this;
        if (cuts.size() == 3)
            line.cuts = {cuts[0], cuts[0], cuts[1], cuts[2]};
        const int length = std::max(1, std::numeric_limits<std::int16_t>::max() / rangePerLength());
        for (line.from = from; line.from < to; line.from = line.to) {
            line.to = std::min(line.from + length, to);
            const std::vector<cv::Point> points = line.corners();
            FeatureLine& part = lines.emplace_back();
            std::copy(points.begin(), points.end(), part.corners.begin());
            part.multiplier = line.multiplier;
        }
    }
};

std::optional<FeaturePlan> compositeOf(const std::vector<Stripes>& pieces, int minShift) {
    FeaturePlan plan;
    plan.shape = FeatureShape::composite;
    for (const Stripes& piece : pieces)
        piece.slice(plan.lines);
    // Shifted so far that the sum of the lines fits again.
    plan.shift = minShift;
    while ((std::size_t{1} << plan.shift) < plan.lines.size())
        ++plan.shift;
    if (plan.shift > maxShift)
        return std::nullopt;
    return plan;
}

std::optional<FeaturePlan> planStripes(const CornerCounts& wanted, bool alongX,
                                       const std::vector<int>& cuts, const std::vector<int>& ends,
                                       int minShift) {
    for (const int multiplier : {2, 3}) {
        for (const bool flipped : {false, true}) {
            const Stripes stripes{alongX, cuts, ends[0], ends[1], multiplier, flipped};
            if (stripes.counts() != wanted)
                continue;
            if (minShift > 0 || stripes.range() > std::numeric_limits<std::int16_t>::max())
                return compositeOf({stripes}, minShift);
            return stripes.plan();
        }
    }
    return std::nullopt;
}

/// A checkerboard of two by two fields.
std::optional<FeaturePlan> planQuarters(const CornerCounts& wanted, const std::vector<int>& xs,
                                        const std::vector<int>& ys, int minShift) {
    static constexpr std::array<int, 9> factors{1, -2, 1, -2, 4, -2, 1, -2, 1};
    FeaturePlan plan;
    plan.shape = FeatureShape::quarters;
    CornerCounts counts;
    for (std::size_t i = 0; i < factors.size(); ++i) {
        plan.corners.emplace_back(xs[i % 3], ys[i / 3]);
        count(counts, plan.corners.back(), factors[i]);
    }
    if (counts != wanted && negative(counts) != wanted)
        return std::nullopt;
    plan.negated = counts != wanted;
    const auto field = [&](std::size_t x, std::size_t y) {
        return (xs[x + 1] - xs[x]) * (ys[y + 1] - ys[y]);
    };
    plan.range = maxPixel * std::max(field(0, 0) + field(1, 1), field(0, 1) + field(1, 0));
    if (minShift == 0 && plan.range <= std::numeric_limits<std::int16_t>::max())
        return plan;
    return compositeOf(
        {{true, xs, ys[0], ys[1], 2, plan.negated}, {true, xs, ys[1], ys[2], 2, !plan.negated}},
        minShift);
}

} // namespace

std::optional<FeaturePlan> planFeature(const CascadeData::Feature& feature, int minShift) {
    if (minShift > maxShift)
        return std::nullopt;
    const CornerCounts wanted = cornerCounts(feature);
    std::set<int> columns;
    std::set<int> rows;
    for (const auto& [place, times] : wanted) {
        columns.insert(place.first);
        rows.insert(place.second);
    }
    const std::vector<int> xs(columns.begin(), columns.end());
    const std::vector<int> ys(rows.begin(), rows.end());
    const auto areCuts = [](const std::vector<int>& places) {
        return places.size() == 3 || places.size() == 4;
    };
    if (ys.size() == 2 && areCuts(xs))
        return planStripes(wanted, true, xs, ys, minShift);
    if (xs.size() == 2 && areCuts(ys))
        return planStripes(wanted, false, ys, xs, minShift);
    if (xs.size() == 3 && ys.size() == 3)
        return planQuarters(wanted, xs, ys, minShift);
    return std::nullopt;
}
