#include "face/face_quality.h"

#include <opencv2/imgproc.hpp>

FaceLight faceLight(const cv::Mat& face) {
    cv::Scalar mean;
    cv::Scalar deviation;
    cv::meanStdDev(face, mean, deviation);
    return {mean[0], deviation[0]};
}

double faceSharpness(const cv::Mat& face) {
    cv::Mat edges;
    cv::Laplacian(face, edges, CV_64F);
    cv::Scalar mean;
    cv::Scalar deviation;
    cv::meanStdDev(edges, mean, deviation);
    return deviation[0] * deviation[0];
}

FaceQuality faceQuality(const cv::Mat& face, const face::Options& options) {
    if (face.cols < options.minQualityFaceSize || face.rows < options.minQualityFaceSize)
        return FaceQuality::TooSmall;
    const FaceLight light = faceLight(face);
    if (light.mean < options.minBrightness)
        return FaceQuality::TooDark;
    if (light.mean > options.maxBrightness)
        return FaceQuality::TooBright;
    if (light.deviation < options.minContrast)
        return FaceQuality::LowContrast;
    return faceSharpness(face) >= options.minSharpness ? FaceQuality::Accepted
                                                       : FaceQuality::TooBlurry;
}
