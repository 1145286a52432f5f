#include "enroll/frame_look.h"

#include "awareness/face_distance.h"
#include "face/face_detection.h"
#include "face/owner_samples.h"

#include <algorithm>

namespace enroll {

std::optional<Detectors> loadDetectors(face::Options options) {
    Detectors detectors;
    if (!loadCascade(detectors.frontal, options.frontalCascadePath))
        return std::nullopt;
    if (!loadCascade(detectors.profile, options.profileCascadePath)) {
        detectors.profile = cv::CascadeClassifier();
        options.detector = face::DetectorMode::Frontal;
    }
    detectors.options = std::move(options);
    return detectors;
}

QString cascadeSentence() {
    return QStringLiteral("The face cascade %1 cannot be loaded: install the package opencv-data.")
        .arg(QString::fromStdString(face::Options().frontalCascadePath));
}

FrameLook lookAtFrame(cv::Mat& gray, Detectors& detectors, const QList<QRect>& bodyRegions,
                      qint64 timeMs, const std::stop_token& stop) {
    cv::CascadeClassifier* profile = detectors.profile.empty() ? nullptr : &detectors.profile;
    std::vector<FaceDetection> found =
        detectFacesMulti(detectors.frontal, profile, gray, detectors.options, stop);
    const std::vector<FaceDetection> inRegions = detectFacesInBodyRegions(
        detectors.frontal, profile, gray, detectors.options, bodyRegions, stop);
    found.insert(found.end(), inRegions.begin(), inRegions.end());

    FrameLook look;
    look.timeMs = timeMs;
    const cv::Rect frame(0, 0, gray.cols, gray.rows);
    for (const FaceDetection& detection : dedupeDetections(std::move(found))) {
        const cv::Rect box = detection.rect & frame;
        if (box.empty())
            continue;
        const cv::Mat crop = gray(box);
        look.faces.push_back(
            {box, detection.detector, measureFace(crop), recognizerInput(crop), std::nullopt});
    }
    return look;
}

void measureDistances(FrameLook& look, const DepthFrame& depth, const QSize& frameSize) {
    if (!depth.isValid())
        return;
    QList<FaceOverlay> overlays;
    for (const FaceLook& face : look.faces) {
        FaceOverlay overlay;
        overlay.rect = QRect(face.box.x, face.box.y, face.box.width, face.box.height);
        overlays.append(overlay);
    }
    measureFaceDistances(overlays, depth, frameSize);
    for (std::size_t i = 0; i < look.faces.size(); ++i) {
        const FaceOverlay& overlay = overlays.at(qsizetype(i));
        if (overlay.hasDistance)
            look.faces[i].meters = overlay.distanceMeters;
    }
}

std::vector<const FaceLook*> largeFaces(const FrameLook& look, const face::Options& options) {
    std::vector<const FaceLook*> large;
    for (const FaceLook& face : look.faces)
        if (face.measures.sidePx >= options.minQualityFaceSize)
            large.push_back(&face);
    return large;
}

const FaceLook* largestFace(const FrameLook& look) {
    const auto largest =
        std::max_element(look.faces.begin(), look.faces.end(), [](const auto& a, const auto& b) {
            return a.measures.sidePx < b.measures.sidePx;
        });
    return largest == look.faces.end() ? nullptr : &*largest;
}

} // namespace enroll
