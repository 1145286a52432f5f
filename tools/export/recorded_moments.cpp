#include "export/recorded_moments.h"

#include <opencv2/imgcodecs.hpp>

#include <QDateTime>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <stdexcept>

namespace exporting {

using namespace Qt::StringLiterals;

namespace {

/// When the first frame came, in seconds since the epoch; 0 when recording.json does not tell.
double wallClockOfFirstFrame(const QString& folder) {
    QFile file(folder + u"/recording.json"_s);
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QJsonObject values = QJsonDocument::fromJson(file.readAll()).object();
    const QDateTime time =
        QDateTime::fromString(values[u"first_frame"_s].toString(), Qt::ISODateWithMs);
    return time.isValid() ? static_cast<double>(time.toMSecsSinceEpoch()) / 1000 : 0;
}

cv::Mat decode(const std::filesystem::path& file, int flags, int type, const cv::Size& size) {
    const cv::Mat image = cv::imread(file.string(), flags);
    if (image.empty() || image.type() != type || image.size() != size)
        throw std::runtime_error(file.string() + " cannot be decoded");
    return image;
}

} // namespace

RecordedMoments::RecordedMoments(const QString& folder) {
    const std::filesystem::path place(QFile::encodeName(folder).toStdString());
    index = virtual_kinect::readRecordingIndex(place);
    if (!std::filesystem::exists(place / "calibration.json"))
        throw std::runtime_error("it has no calibration.json, which says how the cameras see");
    begin_s = wallClockOfFirstFrame(folder);
}

qint64 RecordedMoments::number(std::size_t at) const {
    return QString::fromStdString(index.moments[at].depth.stem().string()).toLongLong();
}

double RecordedMoments::seconds(std::size_t at) const {
    return begin_s + static_cast<double>(index.moments[at].time.count()) / 1e6;
}

RecordedPictures RecordedMoments::pictures(std::size_t at) const {
    const virtual_kinect::RecordedMoment& moment = index.moments[at];
    RecordedPictures pictures;
    pictures.depth = decode(moment.depth, cv::IMREAD_UNCHANGED, CV_16UC1, depthSize());
    if (hasColor())
        pictures.color = decode(moment.color, cv::IMREAD_COLOR | cv::IMREAD_IGNORE_ORIENTATION,
                                CV_8UC3, colorSize());
    return pictures;
}

} // namespace exporting
