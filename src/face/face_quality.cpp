#include "face/face_quality.h"

#include <opencv2/imgproc.hpp>

std::string_view faceQuality(const cv::Mat& face, const Options& options) {
    if (face.cols < options.minQualityFaceSize || face.rows < options.minQualityFaceSize)
        return "too_small";
    cv::Scalar mean;
    cv::Scalar deviation;
    cv::meanStdDev(face, mean, deviation);
    if (mean[0] < options.minBrightness)
        return "too_dark";
    if (mean[0] > options.maxBrightness)
        return "too_bright";
    if (deviation[0] < options.minContrast)
        return "low_contrast";
    cv::Mat edges;
    cv::Laplacian(face, edges, CV_64F);
    cv::meanStdDev(edges, mean, deviation);
    return deviation[0] * deviation[0] >= options.minSharpness ? "accepted" : "too_blurry";
}
