#pragma once

#include "enroll/frame_look.h"

#include <QString>
#include <QStringList>
#include <utility>
#include <vector>

namespace enroll {

/// What is known when somebody asks why the owner was not recognised.
struct WhyFacts {
    int samples = 0;              ///< That the Control Center would learn from.
    std::optional<FaceLook> face; ///< The face in question; nothing when none was found.
    int largeFaces = 0;           ///< Faces large enough to be recognised.
    /// Samples' names and their distances from the face, nearest first.
    std::vector<std::pair<QString, double>> nearest;
    int misframed = 0; ///< Samples that are not framed as the program frames.
};

/// Whether the Control Center would name the owner now.
bool isRecognized(const WhyFacts& facts, const face::Options& options);

/// One sentence: the first cause in the order in which recognition meets them, and its cure.
QString whySentence(const WhyFacts& facts, const face::Options& options);

/// The figures behind it, a line each: detector, side, light, sharpness, the three nearest samples.
QStringList whyDetails(const WhyFacts& facts, const face::Options& options);

} // namespace enroll
