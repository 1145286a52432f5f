#include "enroll/report.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace enroll {

using namespace Qt::StringLiterals;

namespace {

/// Flaws that refused a frame and how many each, the most frequent first.
std::vector<std::pair<int, Flaw>> refusals(const std::array<int, flawCount>& tally) {
    std::vector<std::pair<int, Flaw>> list;
    for (int flaw = int(Flaw::None) + 1; flaw < flawCount; ++flaw)
        if (tally[std::size_t(flaw)] > 0)
            list.emplace_back(tally[std::size_t(flaw)], Flaw(flaw));
    std::stable_sort(list.begin(), list.end(),
                     [](const auto& a, const auto& b) { return a.first > b.first; });
    return list;
}

QString missingLine(const SittingResult& result) {
    const QStringList missing = missingThings(result.folder);
    if (missing.isEmpty())
        return u"Nothing is missing."_s;
    return (isGood(result) ? u"What would still help: "_s : u"This is thin. Missing: "_s) +
           missing.join(u", "_s) + u'.';
}

} // namespace

bool isGood(const SittingResult& result) {
    if (result.kept == 0)
        return false;
    return result.walkedAbout ? isEnoughForWalkingAbout(result.folder) : isEnough(result.folder);
}

QStringList reportLines(const SittingResult& result, const face::Options& options) {
    QStringList lines{u"Kept %1 of %2 frames: %3 near, %4 middle, %5 far."_s.arg(result.kept)
                          .arg(result.framesLookedAt)
                          .arg(result.sitting.near)
                          .arg(result.sitting.middle)
                          .arg(result.sitting.far)};
    if (const QString words = refusalWords(result.tally); !words.isEmpty())
        lines.append(u"Not kept: %1."_s.arg(words));
    lines.append(u"Rehearsal, each sitting told by the others: %1."_s.arg(
        rehearsalWords(result.rehearsal, options.candidateThreshold)));
    lines.append(missingLine(result));
    if (result.kept > 0)
        lines.append(restartSentence());
    return lines;
}

QString refusalWords(const std::array<int, flawCount>& tally) {
    QStringList words;
    for (const auto& [count, flaw] : refusals(tally))
        words.append(QString::number(count) + u' ' + flawWords(flaw));
    return words.join(u", "_s);
}

Flaw mostFrequentFlaw(const std::array<int, flawCount>& tally) {
    const auto list = refusals(tally);
    return list.empty() ? Flaw::None : list.front().second;
}

QString restartSentence() {
    return u"Restart the Control Center: it learns at its start."_s;
}

} // namespace enroll
