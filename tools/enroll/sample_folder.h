#pragma once

#include "enroll/manifest.h"
#include "enroll/rehearsal.h"

#include <QStringList>
#include <functional>
#include <vector>

namespace enroll {

/// How the face lies in a sample.
enum class Framing {
    Own,      ///< As the detector's own box cuts it.
    TooTight, ///< Parts of the face are cut off.
    TooWide,  ///< There is more around the face.
    NoFace,   ///< None is found that fills it.
};

/// Searches a sample, 160 x 160 and grey, for the face that should fill it.
Framing framingOf(const cv::Mat& picture, Detectors& detectors);

/// One file that the scan of samples reads.
struct SampleFile {
    QString path;
    QString name;    ///< Relative to the folder.
    QString sitting; ///< The folder that it lies in, relative too; "" for the folder itself.
    cv::Mat picture; ///< As it is trained; empty when the file cannot be read.
    /// What the manifest says, if it is about this very file and not about another of its name.
    std::optional<SampleEntry> entry;
};

/// Reads every sample as the Control Center does, in its order. `progress` is called before each
/// file with its number from 1 and how many there are.
std::vector<SampleFile> readSamples(const QString& folder,
                                    const std::function<void(int, int)>& progress = {});

/// The samples of a folder that can be read, ready to be asked about faces.
struct SampleCollection {
    std::vector<SampleFile> files;
    QStringList names;
    QStringList sittings;
    std::vector<cv::Mat> pictures;
};

SampleCollection readableSamples(std::vector<SampleFile> files);

/// How many different sittings the names are of.
int countSittings(const QStringList& sittings);

/// What they cover. Distances are those of the manifests.
Coverage coverageOf(const SampleCollection& samples);

} // namespace enroll
