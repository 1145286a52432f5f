#include "enroll/rehearsal.h"

#include "enroll/sample_index.h"

#include <algorithm>
#include <cmath>

namespace enroll {

using namespace Qt::StringLiterals;

namespace {

/// Distance from a sample to the nearest one of another sitting; nothing when there is none.
std::optional<double> nearestOfOthers(const std::vector<double>& row, std::size_t sample,
                                      const QStringList& sittings,
                                      std::optional<std::size_t> leftOut) {
    std::optional<double> nearest;
    for (std::size_t other = 0; other < row.size(); ++other) {
        if (other == leftOut || sittings.at(qsizetype(other)) == sittings.at(qsizetype(sample)))
            continue;
        nearest = std::min(nearest.value_or(row[other]), row[other]);
    }
    return nearest;
}

int distancesCovered(const Coverage& coverage) {
    return int(coverage.near > 0) + int(coverage.middle > 0) + int(coverage.far > 0);
}

} // namespace

DistanceTable distanceTable(const std::vector<cv::Mat>& pictures) {
    SampleIndex index;
    for (const cv::Mat& picture : pictures)
        index.add(picture);
    DistanceTable table;
    for (const cv::Mat& picture : pictures)
        table.push_back(index.distancesTo(picture));
    return table;
}

std::optional<Rehearsal> rehearse(const DistanceTable& table, const QStringList& sittings,
                                  double threshold, std::optional<std::size_t> leftOut) {
    std::vector<double> distances;
    for (std::size_t sample = 0; sample < table.size(); ++sample) {
        if (sample == leftOut)
            continue;
        if (const auto nearest = nearestOfOthers(table[sample], sample, sittings, leftOut))
            distances.push_back(*nearest);
    }
    if (distances.empty())
        return std::nullopt;
    Rehearsal rehearsal;
    rehearsal.asked = int(distances.size());
    rehearsal.told = int(std::count_if(distances.begin(), distances.end(),
                                       [threshold](double d) { return d <= threshold; }));
    const auto middle = distances.begin() + std::ptrdiff_t(distances.size() / 2);
    std::nth_element(distances.begin(), middle, distances.end());
    rehearsal.median = *middle;
    return rehearsal;
}

QString rehearsalWords(const std::optional<Rehearsal>& rehearsal, double threshold) {
    if (!rehearsal)
        return u"needs a second sitting, best in another light"_s;
    return u"%1 of %2 at %3 or less, median %4"_s.arg(
        QString::number(rehearsal->told), QString::number(rehearsal->asked),
        QString::number(threshold), QString::number(std::lround(rehearsal->median)));
}

void addSample(Coverage& coverage, std::optional<Distance> distance) {
    ++coverage.samples;
    coverage.near += distance == Distance::Near;
    coverage.middle += distance == Distance::Middle;
    coverage.far += distance == Distance::Far;
}

bool isEnough(const Coverage& coverage) {
    return missingThings(coverage).isEmpty();
}

bool isEnoughForWalkingAbout(const Coverage& coverage) {
    return coverage.samples >= enoughSamples && distancesCovered(coverage) >= 2;
}

QStringList missingThings(const Coverage& coverage) {
    QStringList missing;
    if (const int more = enoughSamples - coverage.samples; more > 0)
        missing.append(more == 1 ? u"1 more sample"_s : u"%1 more samples"_s.arg(more));
    if (coverage.near == 0)
        missing.append(u"samples at about 1 m"_s);
    if (coverage.middle == 0)
        missing.append(u"samples at about 1.4 m"_s);
    if (coverage.far == 0)
        missing.append(u"samples at about 2 m"_s);
    if (coverage.sittings < 2)
        missing.append(u"a second light"_s);
    return missing;
}

} // namespace enroll
