#include "common/command_line.h"
#include "common/console.h"
#include "enroll/commands.h"
#include "enroll/folder_facts.h"
#include "enroll/picture_import.h"
#include "enroll/report.h"
#include "enroll/sitting_files.h"
#include "enroll/sitting_place.h"

#include <QDateTime>

namespace enroll {

using namespace Qt::StringLiterals;

namespace {

/// Imports one picture after the other, and says of each what became of it.
class ImportRun {
public:
    ImportRun(const SittingPlace& place, Detectors tools, tool::Console& output)
        : folder(place.folder), detectors(std::move(tools)), console(output),
          writer(place.folder, place.sitting), known(readWithProgress(folder, output)),
          index(indexOf(known)) {}

    int run(const QStringList& pictures) {
        int refused = 0;
        for (qsizetype i = 0; i < pictures.size(); ++i) {
            console.progress(u"Picture %1 of %2"_s.arg(i + 1).arg(pictures.size()));
            if (const QString problem = take(pictures.at(i)); !problem.isEmpty()) {
                console.complain(problem);
                ++refused;
            }
        }
        const QStringList missing = missingThings(coverageOf(readWithProgress(folder, console)));
        if (!missing.isEmpty())
            console.say(u"Still missing: %1."_s.arg(missing.join(u", "_s)));
        if (!writer.files().isEmpty())
            console.say(restartSentence());
        return refused == 0 ? tool::Succeeded : tool::Failed;
    }

private:
    /// One sentence when the picture gave no sample.
    QString take(const QString& picture) {
        const auto result =
            sampleFromPicture(picture, detectors, QDateTime::currentMSecsSinceEpoch());
        if (const QString* problem = std::get_if<QString>(&result))
            return *problem;
        const KeptSample& sample = std::get<KeptSample>(result);
        const std::vector<double> distances = index.distancesTo(sample.face.input);
        for (std::size_t i = 0; i < distances.size(); ++i)
            if (isCopy(distances[i]))
                return u"%1 gives the same sample as %2: take another picture."_s.arg(
                    picture, known.names.value(qsizetype(i)));
        if (const QString problem = writer.write(sample, picture.section(u'/', -1));
            !problem.isEmpty())
            return problem;
        index.add(sample.face.input);
        known.names.append(writer.files().last());
        console.say(u"%1: kept as %2"_s.arg(picture, writer.files().last()));
        return {};
    }

    const QString folder;
    Detectors detectors;
    tool::Console& console;
    SittingWriter writer;
    SampleCollection known;
    SampleIndex index;
};

} // namespace

int importCommand(const QStringList& arguments, tool::Console& console) {
    tool::CommandLine line(console, u"import: cuts samples out of photographs of the owner."_s);
    addSittingOptions(line);
    line.addArgument(u"PICTURE"_s, u"A photograph with exactly one face."_s);
    line.addFurtherArguments(u"PICTURE"_s, u"More of them."_s);
    if (const std::optional<int> status = line.read(arguments))
        return *status;
    const std::variant<SittingPlace, int> place = sittingPlace(line, console);
    if (const int* status = std::get_if<int>(&place))
        return *status;
    std::optional<Detectors> detectors = detectorsOrComplaint(console);
    if (!detectors)
        return tool::Failed;
    return ImportRun(std::get<SittingPlace>(place), std::move(*detectors), console)
        .run(QStringList{line.argument(u"PICTURE"_s)} + line.furtherArguments());
}

} // namespace enroll
