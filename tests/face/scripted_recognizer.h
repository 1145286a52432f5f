#pragma once

#include <opencv2/core.hpp>
#include <opencv2/face.hpp>
#include <vector>

/// Stands in for a trained recogniser: records the faces that it is asked about and answers with
/// one label and distance.
class ScriptedRecognizer : public cv::face::FaceRecognizer {
public:
    int label = 1;
    double distance = 0.0;
    mutable std::vector<cv::Mat> asked;

    using FaceRecognizer::predict;
    void predict(cv::InputArray face,
                 cv::Ptr<cv::face::PredictCollector> collector) const override {
        asked.push_back(face.getMat().clone());
        collector->init(1);
        collector->collect(label, distance);
    }
    void train(cv::InputArrayOfArrays, cv::InputArray) override {}
    using FaceRecognizer::read;
    void read(const cv::FileNode&) override {}
    using FaceRecognizer::write;
    void write(cv::FileStorage&) const override {}
    bool empty() const override { return false; }
    double getThreshold() const override { return DBL_MAX; }
    void setThreshold(double) override {}
};
