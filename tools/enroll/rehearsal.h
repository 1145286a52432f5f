#pragma once

#include "enroll/distances.h"

#include <QString>
#include <QStringList>
#include <opencv2/core.hpp>
#include <optional>
#include <vector>

namespace enroll {

/// Recogniser distances between samples: row i holds those from sample i to each, 0 to itself.
using DistanceTable = std::vector<std::vector<double>>;

/// `pictures` as recognizerInput() makes them.
DistanceTable distanceTable(const std::vector<cv::Mat>& pictures);

/// How well each sitting is told by the others: the light and the day that one sitting shares make
/// its own samples too easy.
struct Rehearsal {
    int asked = 0;       ///< Samples that have another sitting to be told by.
    int told = 0;        ///< Those of them within the threshold.
    double median = 0.0; ///< Of the distances to the nearest sample of another sitting.
};

/// `sittings` names the sitting of each sample. Nothing when there are not two sittings. A sample
/// that is left out neither asks nor answers.
std::optional<Rehearsal> rehearse(const DistanceTable& table, const QStringList& sittings,
                                  double threshold, std::optional<std::size_t> leftOut = {});

/// "23 of 26 at 60 or less, median 38", or what a rehearsal needs.
QString rehearsalWords(const std::optional<Rehearsal>& rehearsal, double threshold);

/// What the samples of a folder cover.
struct Coverage {
    int samples = 0;
    int near = 0;
    int middle = 0;
    int far = 0;
    int sittings = 0; ///< A second light is a sitting of its own.
};

/// Counts one sample at `distance`, if that is known.
void addSample(Coverage& coverage, std::optional<Distance> distance);

/// Fewer than this are thin.
inline constexpr int enoughSamples = 20;

/// Enough to be told from strangers: 20 samples, at all distances, in two lights.
bool isEnough(const Coverage& coverage);

/// What walking about can bring: 20 samples at two distances, in whatever light there is.
bool isEnoughForWalkingAbout(const Coverage& coverage);

/// What would make the samples better, a few words each; empty when nothing is missing.
QStringList missingThings(const Coverage& coverage);

} // namespace enroll
