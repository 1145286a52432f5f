#include "enroll/sample_folder.h"

#include "face/face_detection.h"
#include "face/owner_samples.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSet>
#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

namespace enroll {

namespace {

// Measured on real and rendered faces, with the edge repeated around the picture: searched again,
// the detector's own box gives a box of 0.88 to 0.97 of its side, a crop that is 10 % tighter on
// every side 1.00 and more, one that is 10 % wider 0.82 and less.
constexpr double leastOwnShare = 0.845;
constexpr double mostOwnShare = 0.99;
constexpr double middleWithin = 0.2; ///< Of the side, from the picture's middle.
constexpr int leastFace = 40;        ///< Smaller ones do not fill a sample.

/// The share of the picture's side that the most central face takes; nothing without one.
std::optional<double> shareOfFace(const cv::Mat& picture, Detectors& detectors) {
    const int border = picture.cols / 2;
    cv::Mat padded;
    cv::copyMakeBorder(picture, padded, border, border, border, border, cv::BORDER_REPLICATE);
    // Finer than in a live frame: there is one face, and its size is the question.
    face::Options options = detectors.options;
    options.detectScale = 1.0;
    options.scaleFactor = 1.05;
    options.minNeighbors = 2;
    options.minFaceSize = leastFace;
    cv::CascadeClassifier* profile = detectors.profile.empty() ? nullptr : &detectors.profile;
    const double middle = border + picture.cols / 2.0;
    std::optional<double> share;
    double leastOff = middleWithin * picture.cols;
    for (const FaceDetection& hit : detectFacesMulti(detectors.frontal, profile, padded, options)) {
        const double off = std::max(std::abs(hit.rect.x + hit.rect.width / 2.0 - middle),
                                    std::abs(hit.rect.y + hit.rect.height / 2.0 - middle));
        if (off <= leastOff) {
            leastOff = off;
            share = double(hit.rect.width) / picture.cols;
        }
    }
    return share;
}

/// The manifests of the folders, read once each.
class Manifests {
public:
    const Manifest& of(const QString& folder) {
        const auto known = manifests.constFind(folder);
        if (known != manifests.constEnd())
            return *known;
        QFile file(QDir(folder).filePath(manifestName));
        const auto manifest =
            file.open(QIODevice::ReadOnly) ? manifestFrom(file.readAll()) : std::nullopt;
        return *manifests.insert(folder, manifest.value_or(Manifest()));
    }

private:
    QHash<QString, Manifest> manifests;
};

std::optional<SampleEntry> entryOf(const QString& path, const Manifest& manifest) {
    const QString name = QFileInfo(path).fileName();
    for (const SampleEntry& entry : manifest.samples) {
        QFile file(path);
        if (entry.file == name && file.open(QIODevice::ReadOnly) &&
            contentHash(file.readAll()) == entry.sha256)
            return entry;
    }
    return std::nullopt;
}

} // namespace

Framing framingOf(const cv::Mat& picture, Detectors& detectors) {
    const std::optional<double> share = shareOfFace(picture, detectors);
    if (!share)
        return Framing::NoFace;
    if (*share > mostOwnShare)
        return Framing::TooTight;
    return *share < leastOwnShare ? Framing::TooWide : Framing::Own;
}

std::vector<SampleFile> readSamples(const QString& folder,
                                    const std::function<void(int, int)>& progress) {
    const auto paths = ownerSamplePaths(QFile::encodeName(folder).toStdString());
    const QDir root(QFileInfo(folder).absoluteFilePath());
    Manifests manifests;
    std::vector<SampleFile> files;
    for (const std::string& bytes : paths) {
        if (progress)
            progress(int(files.size()) + 1, int(paths.size()));
        SampleFile file;
        file.path = QFile::decodeName(bytes.c_str());
        file.name = root.relativeFilePath(QFileInfo(file.path).absoluteFilePath());
        file.sitting = file.name.contains(u'/') ? file.name.section(u'/', 0, -2) : QString();
        file.picture = readOwnerSample(bytes);
        file.entry = entryOf(file.path, manifests.of(QFileInfo(file.path).path()));
        files.push_back(std::move(file));
    }
    return files;
}

SampleCollection readableSamples(std::vector<SampleFile> files) {
    SampleCollection samples;
    for (SampleFile& file : files) {
        if (file.picture.empty())
            continue;
        samples.names.append(file.name);
        samples.sittings.append(file.sitting);
        samples.pictures.push_back(file.picture);
        samples.files.push_back(std::move(file));
    }
    return samples;
}

int countSittings(const QStringList& sittings) {
    return int(QSet<QString>(sittings.begin(), sittings.end()).size());
}

Coverage coverageOf(const SampleCollection& samples) {
    Coverage coverage;
    for (const SampleFile& file : samples.files)
        addSample(coverage, file.entry ? std::optional(file.entry->distance) : std::nullopt);
    coverage.sittings = countSittings(samples.sittings);
    return coverage;
}

} // namespace enroll
