#include "common/command_line.h"
#include "common/console.h"
#include "enroll/commands.h"
#include "enroll/folder_facts.h"
#include "enroll/live_looks.h"
#include "enroll/picture_import.h"
#include "enroll/sitting_place.h"
#include "enroll/stranger_report.h"

namespace enroll {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 usualSeconds = 20;
constexpr qint64 mostSeconds = 3600;

/// Looks at strangers: nothing of them outlives the command but the distances in its report.
class StrangerLooks {
public:
    StrangerLooks(const SampleCollection& samples, const face::Options& settings)
        : index(indexOf(samples)), options(settings) {}

    void add(const FrameLook& look) {
        for (const FaceLook& face : look.faces)
            if (gateFlaw(face.measures, options) == Flaw::None)
                table.push_back(index.distancesTo(face.input));
    }
    const DistanceTable& looks() const { return table; }

private:
    SampleIndex index;
    face::Options options;
    DistanceTable table;
};

/// Looks at each picture; the number of those that cannot be read.
int addPictures(StrangerLooks& looks, const QStringList& pictures, Detectors& detectors,
                tool::Console& console) {
    int unreadable = 0;
    for (qsizetype i = 0; i < pictures.size(); ++i) {
        console.progress(u"Picture %1 of %2"_s.arg(i + 1).arg(pictures.size()));
        std::variant<cv::Mat, QString> read = readPhotograph(pictures.at(i));
        if (const QString* problem = std::get_if<QString>(&read)) {
            console.complain(*problem);
            ++unreadable;
        } else {
            looks.add(lookAtFrame(std::get<cv::Mat>(read), detectors, {}, 0));
        }
    }
    return unreadable;
}

} // namespace

int strangersCommand(const QStringList& arguments, tool::Console& console) {
    tool::CommandLine line(console,
                           u"strangers: says how often somebody else would be taken for the owner. "
                           "Writes nothing."_s);
    line.addNumber(u"seconds"_s, u"N"_s, u"How long to look with the sensor (20)."_s, 1,
                   mostSeconds);
    line.addFurtherArguments(u"PICTURE"_s, u"What to look at, instead of the sensor's picture."_s);
    if (const std::optional<int> status = line.read(arguments))
        return *status;
    const QStringList pictures = line.furtherArguments();
    if (!pictures.isEmpty() && line.number(u"seconds"_s))
        return line.refuse(u"Either pictures or --seconds for the sensor, not both."_s);
    std::optional<Detectors> detectors = detectorsOrComplaint(console);
    if (!detectors)
        return tool::Failed;
    const SampleCollection samples = readWithProgress(samplesFolder(), console);
    if (samples.files.empty()) {
        console.complain(u"There are no samples that a stranger could be taken for: make some with "
                         "`lumeno-enroll take`."_s);
        return tool::Failed;
    }
    StrangerLooks looks(samples, detectors->options);
    int unreadable = 0;
    if (!pictures.isEmpty()) {
        unreadable = addPictures(looks, pictures, *detectors, console);
    } else {
        const int seconds = int(line.number(u"seconds"_s).value_or(usualSeconds));
        const auto status = watchSensor(*detectors, seconds, console, [&](const FrameLook& look) {
            looks.add(look);
            console.progress(u"%1 looks"_s.arg(looks.looks().size()));
            return false;
        });
        if (status)
            return *status;
    }
    const double threshold = detectors->options.candidateThreshold;
    const StrangerReport report = weighStranger(looks.looks(), tableWithProgress(samples, console),
                                                samples.sittings, threshold);
    for (const QString& text : strangerLines(report, samples.names, threshold))
        console.say(text);
    const bool refused = report.looks > 0 && report.taken == 0;
    return refused && unreadable == 0 ? tool::Succeeded : tool::Failed;
}

} // namespace enroll
