#include "enroll/picture_import.h"

#include "enroll/hints.h"
#include "face/face_pass.h"
#include "frames/sensor_facts.h"

#include <QFileInfo>
#include <QImageReader>

namespace enroll {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 mostPixels = qint64{1} << 26;
constexpr QSize largestFrame(sensor::colorWidth, sensor::colorHeight);

Pose poseOf(const std::string& detector) {
    if (poseMatches(Pose::ProfileLeft, detector))
        return Pose::ProfileLeft;
    return poseMatches(Pose::ProfileRight, detector) ? Pose::ProfileRight : Pose::Front;
}

QString severalFaces(const QString& path, std::size_t count) {
    return u"%1 shows %2 faces: cut the picture so that only the owner is left, with room around "
           "the face."_s.arg(path, QString::number(count));
}

} // namespace

std::variant<cv::Mat, QString> readPhotograph(const QString& path) {
    const QFileInfo info(path);
    if (!info.exists())
        return u"%1 does not exist: check its name."_s.arg(path);
    if (!info.isFile())
        return u"%1 is no file: name the pictures themselves."_s.arg(path);
    QImageReader reader(path);
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    if (qint64{size.width()} * size.height() > mostPixels)
        return u"%1 is too large (%2 x %3): shrink it to 64 megapixels at most."_s.arg(
            path, QString::number(size.width()), QString::number(size.height()));
    QImage image = reader.read();
    if (image.isNull())
        return u"%1 is not a picture that can be read (%2): save it anew as PNG or JPEG."_s.arg(
            path, reader.errorString());
    if (image.width() > largestFrame.width() || image.height() > largestFrame.height())
        image = image.scaled(largestFrame, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    return grayFrame(image);
}

std::variant<KeptSample, QString> sampleFromPicture(const QString& path, Detectors& detectors,
                                                    qint64 timeMs) {
    std::variant<cv::Mat, QString> read = readPhotograph(path);
    if (const QString* problem = std::get_if<QString>(&read))
        return *problem;
    cv::Mat& gray = std::get<cv::Mat>(read);
    const FrameLook look = lookAtFrame(gray, detectors, {}, timeMs);
    const auto large = largeFaces(look, detectors.options);
    if (large.size() > 1)
        return severalFaces(path, large.size());
    const FaceLook* face = large.empty() ? largestFace(look) : large.front();
    if (!face)
        return u"%1 shows no face that the program finds: take a picture from the front, with the "
               "whole head and room around it."_s.arg(path);
    if (large.empty())
        return u"%1: the face is %2 px wide and needs %3: take a larger picture."_s.arg(
            path, QString::number(face->measures.sidePx),
            QString::number(detectors.options.minQualityFaceSize));
    if (const Flaw flaw = flawOf(face->measures, detectors.options); flaw != Flaw::None)
        return path + u": "_s + cureFor(flaw, *face, detectors.options);
    return KeptSample{*face, nearestDistance(face->measures.sidePx), poseOf(face->detector), 1, 0,
                      timeMs};
}

} // namespace enroll
