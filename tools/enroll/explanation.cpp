#include "enroll/explanation.h"

#include "enroll/hints.h"

#include <algorithm>
#include <cmath>

namespace enroll {

using namespace Qt::StringLiterals;

namespace {

constexpr std::size_t shownSamples = 3;

QString whole(double value) {
    return QString::number(std::lround(value));
}

QString unlikeSamples(const WhyFacts& facts, const face::Options& options) {
    const QString limit = QString::number(options.candidateThreshold);
    const QString distance = whole(facts.nearest.front().second);
    if (2 * facts.misframed > facts.samples)
        return u"Most samples are not framed as the program frames a face (distance %1, at most %2): make new ones with `lumeno-enroll take`."_s
            .arg(distance, limit);
    if (facts.face->detector != "frontal")
        return u"The face is seen from the side and is unlike the samples (distance %1, at most %2): look at the sensor."_s
            .arg(distance, limit);
    return u"The face is unlike the samples (distance %1, at most %2): take another sitting here, in this light, with `lumeno-enroll take`."_s
        .arg(distance, limit);
}

} // namespace

bool isRecognized(const WhyFacts& facts, const face::Options& options) {
    return facts.face && !facts.nearest.empty() &&
           gateFlaw(facts.face->measures, options) == Flaw::None &&
           facts.nearest.front().second <= options.candidateThreshold;
}

QString whySentence(const WhyFacts& facts, const face::Options& options) {
    if (facts.samples == 0)
        return u"There are no samples: make some with `lumeno-enroll take`, then restart the Control Center."_s;
    if (!facts.face)
        return u"No face was found: look straight at the sensor, from %1 m or nearer, with light on your face."_s
            .arg(QString::number(metersForSide(options.minQualityFaceSize), 'f', 1));
    if (const Flaw flaw = gateFlaw(facts.face->measures, options); flaw != Flaw::None)
        return cureFor(flaw, *facts.face, options);
    if (!isRecognized(facts, options))
        return unlikeSamples(facts, options);
    return u"This face is recognised (distance %1, at most %2): if the Control Center says otherwise, restart it, since it learns at its start."_s
        .arg(whole(facts.nearest.front().second), QString::number(options.candidateThreshold));
}

QStringList whyDetails(const WhyFacts& facts, const face::Options& options) {
    QStringList lines;
    if (!facts.face)
        return {u"Found by: no detector"_s};
    const FaceMeasures& measures = facts.face->measures;
    lines.append(u"Found by: %1"_s.arg(QString::fromStdString(facts.face->detector)));
    if (facts.largeFaces > 1)
        lines.append(
            u"Faces that are large enough: %1; this is the largest"_s.arg(facts.largeFaces));
    QString side = u"Side: %1 px, needs %2"_s.arg(QString::number(measures.sidePx),
                                                  QString::number(options.minQualityFaceSize));
    if (facts.face->meters)
        side += u", at %1 m"_s.arg(QString::number(*facts.face->meters, 'f', 1));
    lines.append(side);
    lines.append(u"Brightness: %1, from %2 to %3"_s.arg(
        whole(measures.mean), whole(options.minBrightness), whole(options.maxBrightness)));
    lines.append(
        u"Contrast: %1, needs %2"_s.arg(whole(measures.deviation), whole(options.minContrast)));
    lines.append(
        u"Sharpness: %1, needs %2"_s.arg(whole(measures.sharpness), whole(options.minSharpness)));
    for (std::size_t i = 0; i < std::min(shownSamples, facts.nearest.size()); ++i)
        lines.append(u"Nearest sample: %1 at %2, at most %3"_s.arg(
            facts.nearest[i].first, QString::number(facts.nearest[i].second, 'f', 1),
            QString::number(options.candidateThreshold)));
    return lines;
}

} // namespace enroll
