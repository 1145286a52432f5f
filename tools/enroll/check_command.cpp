#include "common/command_line.h"
#include "common/console.h"
#include "enroll/commands.h"
#include "enroll/folder_facts.h"
#include "enroll/report.h"
#include "enroll/sitting_files.h"
#include "enroll/sitting_place.h"

#include <QFileInfo>
#include <algorithm>

namespace enroll {

using namespace Qt::StringLiterals;

namespace {

QString framingWords(Framing framing) {
    switch (framing) {
    case Framing::Own:
        return {};
    case Framing::TooTight:
        return u"not framed as the program frames (too tight)"_s;
    case Framing::TooWide:
        return u"not framed as the program frames (too wide)"_s;
    case Framing::NoFace:
        break;
    }
    return u"not framed as the program frames (no face fills it)"_s;
}

/// What is wrong with one sample; empty when it is good. `row`: its distances to all samples.
QString faultOf(const SampleFile& file, std::size_t number, const std::vector<double>& row,
                const QStringList& names, Detectors& detectors) {
    for (std::size_t other = 0; other < number; ++other)
        if (isCopy(row[other]))
            return u"a copy of %1: remove one"_s.arg(names.value(qsizetype(other)));
    // What the tool cut itself is framed right, also where a second search would miss it.
    if (file.entry)
        return {};
    const QString words = framingWords(framingOf(file.picture, detectors));
    return words.isEmpty() ? words : words + u": take it anew, or import the whole photograph"_s;
}

QString gradeOf(const SampleFile& file) {
    if (!file.entry)
        return u"good"_s;
    const QString grade = file.entry->good ? u"good"_s : u"good enough"_s;
    return u"%1 (%2 px)"_s.arg(grade).arg(file.entry->measures.sidePx);
}

/// A comma in a name would begin a new column.
QString quoted(QString name) {
    return u'"' + name.replace(u'"', u"\"\""_s) + u'"';
}

QString distancesCsv(const QStringList& names, const DistanceTable& table) {
    QStringList heading{u"sample"_s};
    for (const QString& name : names)
        heading.append(quoted(name));
    QString csv = heading.join(u',') + u'\n';
    for (std::size_t row = 0; row < table.size(); ++row) {
        csv += quoted(names.value(qsizetype(row)));
        for (const double distance : table[row])
            csv += u',' + QString::number(distance, 'f', 2);
        csv += u'\n';
    }
    return csv;
}

/// Says what is wrong with each file; returns how many are not good.
int sayGrades(const std::vector<SampleFile>& all, const SampleCollection& samples,
              const DistanceTable& table, Detectors& detectors, tool::Console& console) {
    int bad = 0;
    for (const SampleFile& file : all) {
        if (!file.picture.empty())
            continue;
        console.say(u"%1: no picture that can be read: remove it"_s.arg(file.name));
        ++bad;
    }
    for (std::size_t i = 0; i < samples.files.size(); ++i) {
        const SampleFile& file = samples.files[i];
        const QString fault = faultOf(file, i, table[i], samples.names, detectors);
        bad += !fault.isEmpty();
        console.say(file.name + u": "_s + (fault.isEmpty() ? gradeOf(file) : fault));
    }
    return bad;
}

} // namespace

int checkCommand(const QStringList& arguments, tool::Console& console) {
    tool::CommandLine line(console, u"check: grades samples and says what is missing."_s);
    line.addText(u"csv"_s, u"FILE"_s, u"Writes the distances between all samples there."_s);
    line.addFurtherArguments(u"FOLDER"_s, u"Where the samples lie, instead of faces/tavin."_s);
    if (const std::optional<int> status = line.read(arguments))
        return *status;
    if (line.furtherArguments().size() > 1)
        return line.refuse(u"One folder can be checked at a time."_s);
    const QString folder = line.furtherArguments().value(0, samplesFolder());
    if (!QFileInfo(folder).isDir()) {
        console.complain(u"%1 is no folder: make samples with `lumeno-enroll take`."_s.arg(folder));
        return tool::Failed;
    }
    std::optional<Detectors> detectors = detectorsOrComplaint(console);
    if (!detectors)
        return tool::Failed;

    const std::vector<SampleFile> all = readSamples(folder);
    const SampleCollection samples = readableSamples(all);
    const DistanceTable table = tableWithProgress(samples, console);
    const int bad = sayGrades(all, samples, table, *detectors, console);
    const Coverage coverage = coverageOf(samples);
    const double threshold = detectors->options.candidateThreshold;
    console.say(u"Samples: %1, not good: %2. Rehearsal, each sitting told by the others: %3."_s.arg(
        QString::number(all.size()), QString::number(bad),
        rehearsalWords(rehearse(table, samples.sittings, threshold), threshold)));
    if (const QStringList missing = missingThings(coverage); !missing.isEmpty())
        console.say(u"This is thin. Missing: %1."_s.arg(missing.join(u", "_s)));
    if (const auto csv = line.text(u"csv"_s)) {
        if (const QString problem = writeWhole(*csv, distancesCsv(samples.names, table).toUtf8());
            !problem.isEmpty()) {
            console.complain(problem);
            return tool::Failed;
        }
    }
    return bad == 0 && isEnough(coverage) ? tool::Succeeded : tool::Failed;
}

} // namespace enroll
