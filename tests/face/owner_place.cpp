#include "owner_place.h"

#include "face/face_detection.h"
#include "synthetic_face.h"

#include <QDir>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

OwnerPlace::OwnerPlace() {
    cv::CascadeClassifier frontal;
    cv::Mat grey = frameWithFace();
    if (!loadCascade(frontal, face::Options().frontalCascadePath))
        qFatal("no frontal cascade");
    const auto found = detectFacesMulti(frontal, nullptr, grey, face::Options());
    if (found.size() != 1 || !QDir().mkpath(QStringLiteral("faces/tavin")))
        qFatal("no sample of the synthetic owner");
    cv::Mat face;
    cv::equalizeHist(grey(found[0].rect), face);
    if (!cv::imwrite("faces/tavin/owner.png", face))
        qFatal("no sample of the synthetic owner written");
}
