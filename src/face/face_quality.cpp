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

std::string_view faceQuality(const cv::Mat& face, const Options& options) {
    if (face.cols < options.minQualityFaceSize || face.rows < options.minQualityFaceSize)
        return "too_small";
    const FaceLight light = faceLight(face);
    if (light.mean < options.minBrightness)
        return "too_dark";
    if (light.mean > options.maxBrightness)
        return "too_bright";
    if (light.deviation < options.minContrast)
        return "low_contrast";
    return faceSharpness(face) >= options.minSharpness ? "accepted" : "too_blurry";
}
