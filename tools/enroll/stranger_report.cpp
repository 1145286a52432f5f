#include "enroll/stranger_report.h"

#include <algorithm>
#include <cmath>

namespace enroll {

using namespace Qt::StringLiterals;

namespace {

/// The sample nearest to a look, one left out; nothing when there is none.
std::optional<std::size_t> nearestSample(const std::vector<double>& look,
                                         std::optional<std::size_t> leftOut = {}) {
    std::optional<std::size_t> nearest;
    for (std::size_t sample = 0; sample < look.size(); ++sample) {
        if (sample != leftOut && (!nearest || look[sample] < look[*nearest]))
            nearest = sample;
    }
    return nearest;
}

int takenLooks(const DistanceTable& looks, double threshold, std::optional<std::size_t> leftOut) {
    return int(std::count_if(looks.begin(), looks.end(), [&](const std::vector<double>& look) {
        const auto nearest = nearestSample(look, leftOut);
        return nearest && look[*nearest] <= threshold;
    }));
}

} // namespace

StrangerReport weighStranger(const DistanceTable& looks, const DistanceTable& table,
                             const QStringList& sittings, double threshold) {
    StrangerReport report;
    report.looks = int(looks.size());
    report.rehearsal = rehearse(table, sittings, threshold);
    std::vector<int> takenBy(table.size(), 0);
    for (const std::vector<double>& look : looks) {
        const auto nearest = nearestSample(look);
        if (!nearest)
            continue;
        const double distance = look[*nearest];
        report.nearest = &look == &looks.front() ? distance : std::min(report.nearest, distance);
        if (distance <= threshold) {
            ++report.taken;
            ++takenBy[*nearest];
        }
    }
    for (std::size_t sample = 0; sample < takenBy.size(); ++sample) {
        if (takenBy[sample] > 0)
            report.culprits.push_back({sample, takenBy[sample],
                                       takenLooks(looks, threshold, sample),
                                       rehearse(table, sittings, threshold, sample)});
    }
    std::stable_sort(report.culprits.begin(), report.culprits.end(),
                     [](const Culprit& a, const Culprit& b) { return a.takenBy > b.takenBy; });
    return report;
}

QStringList strangerLines(const StrangerReport& report, const QStringList& names,
                          double threshold) {
    const QString limit = QString::number(threshold);
    if (report.looks == 0)
        return {u"No face large and sharp enough to be asked about was seen."_s};
    QStringList lines{
        u"Taken for the owner in %1 of %2 looks (%3 %); the nearest was at %4, %5 or less passes."_s
            .arg(QString::number(report.taken), QString::number(report.looks),
                 QString::number(100.0 * report.taken / report.looks, 'f', 1),
                 QString::number(std::lround(report.nearest)), limit)};
    for (const Culprit& culprit : report.culprits) {
        lines.append(
            u"  %1: %2 looks. Without it %3 would pass; the owner's rehearsal: %4 instead of %5."_s
                .arg(names.value(qsizetype(culprit.sample)), QString::number(culprit.takenBy),
                     QString::number(culprit.takenWithout),
                     rehearsalWords(culprit.rehearsalWithout, threshold),
                     rehearsalWords(report.rehearsal, threshold)));
    }
    if (!report.culprits.empty())
        lines.append(u"`lumeno-enroll set-aside FILE` takes a sample out; what it costs is the "
                     "owner's: look at the rehearsal first."_s);
    return lines;
}

} // namespace enroll
