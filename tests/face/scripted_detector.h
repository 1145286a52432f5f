#pragma once

#include <functional>
#include <memory>
#include <opencv2/objdetect.hpp>
#include <utility>
#include <vector>

/// Stands in for a cascade: records what it is asked to search and how, and answers with one box,
/// with none, or with what its script says.
class ScriptedDetector : public cv::BaseCascadeClassifier {
public:
    struct Seen {
        std::vector<cv::Mat> images;
        std::vector<cv::Size> minSizes;
        std::vector<cv::Size> maxSizes;
        std::vector<double> scaleFactors;
        std::vector<int> minNeighbors;
        std::vector<int> flags;
        std::function<void()> whenAsked; ///< Called for each search, if set.
        /// Gives the hits in the picture that is searched, if set.
        std::function<std::vector<cv::Rect>(const cv::Mat&)> script;
    };
    ScriptedDetector(std::shared_ptr<Seen> record, cv::Rect answer)
        : seen(std::move(record)), hit(answer) {}

    bool empty() const override { return false; }
    bool load(const cv::String&) override { return true; }
    void detectMultiScale(cv::InputArray image, std::vector<cv::Rect>& hits, double scaleFactor,
                          int minNeighbors, int flags, cv::Size minSize,
                          cv::Size maxSize) override {
        seen->images.push_back(image.getMat().clone());
        seen->minSizes.push_back(minSize);
        seen->maxSizes.push_back(maxSize);
        seen->scaleFactors.push_back(scaleFactor);
        seen->minNeighbors.push_back(minNeighbors);
        seen->flags.push_back(flags);
        if (seen->whenAsked)
            seen->whenAsked();
        hits.clear();
        if (seen->script)
            hits = seen->script(image.getMat());
        else if (!hit.empty())
            hits.push_back(hit);
    }
    void detectMultiScale(cv::InputArray, std::vector<cv::Rect>&, std::vector<int>&, double, int,
                          int, cv::Size, cv::Size) override {}
    void detectMultiScale(cv::InputArray, std::vector<cv::Rect>&, std::vector<int>&,
                          std::vector<double>&, double, int, int, cv::Size, cv::Size,
                          bool) override {}
    bool isOldFormatCascade() const override { return false; }
    cv::Size getOriginalWindowSize() const override { return {20, 20}; }
    int getFeatureType() const override { return 0; }
    void* getOldCascade() override { return nullptr; }
    void setMaskGenerator(const cv::Ptr<MaskGenerator>&) override {}
    cv::Ptr<MaskGenerator> getMaskGenerator() override { return nullptr; }

private:
    std::shared_ptr<Seen> seen;
    cv::Rect hit;
};

/// A cascade classifier around one.
struct Scripted {
    std::shared_ptr<ScriptedDetector::Seen> seen = std::make_shared<ScriptedDetector::Seen>();
    cv::CascadeClassifier cascade;
    explicit Scripted(cv::Rect hit = {}) { cascade.cc = cv::makePtr<ScriptedDetector>(seen, hit); }
};
