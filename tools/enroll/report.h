#pragma once

#include "enroll/rehearsal.h"
#include "enroll/sitting.h"

#include <QStringList>

namespace enroll {

/// What a sitting came to.
struct SittingResult {
    int kept = 0;
    int framesLookedAt = 0;
    std::array<int, flawCount> tally{}; ///< As Sitting counts them.
    Coverage sitting;                   ///< Of this sitting alone.
    Coverage folder;                    ///< Of all samples that the Control Center will read.
    std::optional<Rehearsal> rehearsal; ///< Over the folder.
    bool walkedAbout = false;           ///< Nobody asked for anything.
};

/// Whether the folder now holds enough samples. A sitting that kept nothing never is enough.
bool isGood(const SittingResult& result);

/// The report, a line each.
QStringList reportLines(const SittingResult& result, const face::Options& options);

/// Why frames were not kept, the most frequent first: "40 moving, 12 too far".
QString refusalWords(const std::array<int, flawCount>& tally);

/// What was in the way most often; None when no frame was refused.
Flaw mostFrequentFlaw(const std::array<int, flawCount>& tally);

/// What is said after new samples were written.
QString restartSentence();

} // namespace enroll
