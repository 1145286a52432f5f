#include "face/face_pass.h"

#include "face/face_quality.h"
#include "face/owner_samples.h"

#include <opencv2/imgproc.hpp>

namespace {

/// Asks the recognizer about a face. Samples are used as they are and faces are equalized: the
/// threshold was chosen with that difference.
void recognize(FaceObservation& face, const cv::Mat& crop, cv::face::FaceRecognizer& recognizer,
               const face::Options& options) {
    int label = -1;
    recognizer.predict(recognizerInput(crop), label, face.distance);
    face.owner = label == ownerClass && face.distance <= options.candidateThreshold;
}

} // namespace

cv::Mat grayFrame(const QImage& frame) {
    cv::Mat gray;
    const QImage rgb = frame.convertToFormat(QImage::Format_RGB888);
    if (rgb.isNull())
        return gray;
    const cv::Mat pixels(rgb.height(), rgb.width(), CV_8UC3, const_cast<uchar*>(rgb.constBits()),
                         static_cast<std::size_t>(rgb.bytesPerLine()));
    cv::cvtColor(pixels, gray, cv::COLOR_RGB2GRAY);
    return gray;
}

std::optional<FacePass> findFaces(cv::Mat& gray, FaceTools& tools, const face::Options& options,
                                  const QList<QRect>& bodyRegions, const std::stop_token& stop) {
    cv::CascadeClassifier* profile = tools.profile.empty() ? nullptr : &tools.profile;
    std::vector<FaceDetection> found =
        detectFacesMulti(tools.frontal, profile, gray, options, stop);
    const std::vector<FaceDetection> inRegions =
        detectFacesInBodyRegions(tools.frontal, profile, gray, options, bodyRegions, stop);
    found.insert(found.end(), inRegions.begin(), inRegions.end());

    FacePass pass;
    pass.bodyRegionFaces = static_cast<int>(inRegions.size());
    const cv::Rect frame(0, 0, gray.cols, gray.rows);
    for (const FaceDetection& detection : dedupeDetections(std::move(found))) {
        if (stop.stop_requested())
            return std::nullopt;
        FaceObservation face{detection.rect & frame, detection.detector};
        if (face.rect.empty())
            continue;
        const cv::Mat crop = gray(face.rect);
        if (faceQuality(crop, options) == FaceQuality::Accepted)
            recognize(face, crop, *tools.recognizer, options);
        pass.faces.push_back(std::move(face));
    }
    if (stop.stop_requested())
        return std::nullopt;
    return pass;
}
