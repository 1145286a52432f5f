#include "enroll/folder_facts.h"

#include "common/console.h"

namespace enroll {

using namespace Qt::StringLiterals;

SampleCollection readWithProgress(const QString& folder, tool::Console& console) {
    return readableSamples(readSamples(folder, [&console](int number, int count) {
        console.progress(u"Reading sample %1 of %2"_s.arg(number).arg(count));
    }));
}

DistanceTable tableWithProgress(const SampleCollection& samples, tool::Console& console) {
    const SampleIndex index = indexOf(samples);
    DistanceTable table;
    for (const cv::Mat& picture : samples.pictures) {
        console.progress(
            u"Comparing sample %1 of %2"_s.arg(table.size() + 1).arg(samples.pictures.size()));
        table.push_back(index.distancesTo(picture));
    }
    return table;
}

std::optional<Detectors> detectorsOrComplaint(tool::Console& console) {
    std::optional<Detectors> detectors = loadDetectors(face::Options());
    if (!detectors)
        console.complain(cascadeSentence());
    return detectors;
}

SampleIndex indexOf(const SampleCollection& samples) {
    SampleIndex index;
    for (const cv::Mat& picture : samples.pictures)
        index.add(picture);
    return index;
}

} // namespace enroll
