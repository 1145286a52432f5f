#include "enroll/sample_index.h"

#include "face/owner_model.h"

#include <algorithm>
#include <cfloat>

namespace enroll {

namespace {

cv::Ptr<cv::face::LBPHFaceRecognizer> modelOf(const std::vector<cv::Mat>& pictures) {
    std::vector<TrainingSample> samples;
    for (const cv::Mat& picture : pictures)
        samples.push_back({picture, int(samples.size())});
    return samples.empty() ? nullptr : trainOwnerModel(samples);
}

} // namespace

void SampleIndex::add(const cv::Mat& picture) {
    pictures.push_back(picture);
    if (model)
        model->update(std::vector{picture}, std::vector{int(pictures.size()) - 1});
    else
        model = modelOf(pictures);
}

void SampleIndex::remove(std::size_t number) {
    pictures.erase(pictures.begin() + std::ptrdiff_t(number));
    model = modelOf(pictures);
}

std::vector<double> SampleIndex::distancesTo(const cv::Mat& picture) const {
    std::vector<double> distances(pictures.size(), DBL_MAX);
    if (!model)
        return distances;
    const auto collector = cv::face::StandardCollector::create();
    model->predict(picture, collector);
    for (const auto& [label, distance] : collector->getResults())
        distances[std::size_t(label)] = distance;
    return distances;
}

std::optional<double> SampleIndex::nearestTo(const cv::Mat& picture) const {
    if (pictures.empty())
        return std::nullopt;
    const std::vector<double> distances = distancesTo(picture);
    return *std::min_element(distances.begin(), distances.end());
}

} // namespace enroll
