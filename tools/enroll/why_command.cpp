#include "common/command_line.h"
#include "common/console.h"
#include "enroll/commands.h"
#include "enroll/explanation.h"
#include "enroll/folder_facts.h"
#include "enroll/live_looks.h"
#include "enroll/picture_import.h"
#include "enroll/sitting_place.h"

#include <algorithm>

namespace enroll {

using namespace Qt::StringLiterals;

namespace {

constexpr int watchSeconds = 10;

void setFace(WhyFacts& facts, const FrameLook& look, const face::Options& options) {
    if (const FaceLook* face = largestFace(look))
        facts.face = *face;
    facts.largeFaces = int(largeFaces(look, options).size());
}

/// Adds the distances to all samples, nearest first, and counts samples that are cut otherwise.
void compareWithSamples(WhyFacts& facts, const SampleCollection& samples, Detectors& detectors) {
    const std::vector<double> distances = indexOf(samples).distancesTo(facts.face->input);
    for (std::size_t i = 0; i < distances.size(); ++i) {
        facts.nearest.emplace_back(samples.names.at(qsizetype(i)), distances[i]);
        facts.misframed +=
            !samples.files[i].entry && framingOf(samples.pictures[i], detectors) != Framing::Own;
    }
    std::stable_sort(facts.nearest.begin(), facts.nearest.end(),
                     [](const auto& a, const auto& b) { return a.second < b.second; });
}

/// Looks for a while, and takes the look that comes closest to being recognised: the last one with
/// a face that recognition asks about, else the last one with any face.
std::optional<int> lookLive(WhyFacts& facts, const Detectors& detectors, tool::Console& console) {
    constexpr int enoughLooks = 5;
    int accepted = 0;
    return watchSensor(detectors, watchSeconds, console, [&](const FrameLook& look) {
        const FaceLook* face = largestFace(look);
        const bool good = face && gateFlaw(face->measures, detectors.options) == Flaw::None;
        if (good || (face && accepted == 0))
            setFace(facts, look, detectors.options);
        accepted += good;
        console.progress(face ? u"Looking at a face of %1 px"_s.arg(face->measures.sidePx)
                              : u"No face yet"_s);
        return accepted >= enoughLooks;
    });
}

} // namespace

int whyCommand(const QStringList& arguments, tool::Console& console) {
    tool::CommandLine line(console, u"why: says why the owner was not recognised."_s);
    line.addFurtherArguments(u"PICTURE"_s, u"What to look at, instead of the sensor's picture."_s);
    if (const std::optional<int> status = line.read(arguments))
        return *status;
    if (line.furtherArguments().size() > 1)
        return line.refuse(u"One picture can be explained at a time."_s);
    std::optional<Detectors> detectors = detectorsOrComplaint(console);
    if (!detectors)
        return tool::Failed;
    const SampleCollection samples = readWithProgress(samplesFolder(), console);
    WhyFacts facts;
    facts.samples = int(samples.files.size());
    if (!line.furtherArguments().isEmpty()) {
        std::variant<cv::Mat, QString> read = readPhotograph(line.furtherArguments().first());
        if (const QString* problem = std::get_if<QString>(&read)) {
            console.complain(*problem);
            return tool::Failed;
        }
        setFace(facts, lookAtFrame(std::get<cv::Mat>(read), *detectors, {}, 0), detectors->options);
    } else if (const auto status = lookLive(facts, *detectors, console)) {
        return *status;
    }
    if (facts.face)
        compareWithSamples(facts, samples, *detectors);
    console.say(whySentence(facts, detectors->options));
    for (const QString& detail : whyDetails(facts, detectors->options))
        console.say(detail);
    return isRecognized(facts, detectors->options) ? tool::Succeeded : tool::Failed;
}

} // namespace enroll
