#include "face/owner_model.h"

#include <QFile>
#include <QSaveFile>
#include <algorithm>
#include <cfloat>
#include <filesystem>
#include <opencv2/core/persistence.hpp>

namespace fs = std::filesystem;

namespace {

/// Samples trained between two looks at the stop: about 20 ms.
constexpr std::size_t trainingSlice = 16;

/// The fields that `writeFields` adds to the model's node, as OpenCV spells them in YAML, without
/// the lines that open the document and the node.
template <typename WriteFields>
std::string fieldsText(const cv::String& node, WriteFields writeFields) {
    cv::FileStorage storage("model.yml", cv::FileStorage::WRITE | cv::FileStorage::MEMORY);
    storage << node << "{";
    writeFields(storage);
    storage << "}";
    const std::string text = storage.releaseAndGetString();
    const std::string opening = node + ":\n";
    return text.substr(text.find(opening) + opening.size());
}

bool append(QIODevice& file, const std::string& text) {
    const auto size = static_cast<qint64>(text.size());
    return file.write(text.data(), size) == size;
}

/// The library writes a model in one call, which takes seconds for a few hundred samples and cannot
/// be stopped, so the same text is made and written sample by sample.
bool writeText(const cv::face::LBPHFaceRecognizer& model, QIODevice& file,
               const std::stop_token& stop) {
    const cv::String node = model.getDefaultName();
    const std::string head = "%YAML:1.0\n---\n" + node + ":\n";
    const std::string parameters = fieldsText(node, [&model](cv::FileStorage& storage) {
        storage << "threshold" << model.getThreshold() << "radius" << model.getRadius()
                << "neighbors" << model.getNeighbors() << "grid_x" << model.getGridX() << "grid_y"
                << model.getGridY();
    });
    if (!append(file, head + parameters + "   histograms:\n"))
        return false;
    for (const cv::Mat& histogram : model.getHistograms()) {
        if (stop.stop_requested())
            return false;
        const std::string entry = fieldsText(node, [&histogram](cv::FileStorage& storage) {
            storage << "histograms"
                    << "[" << histogram << "]";
        });
        if (!append(file, entry.substr(entry.find('\n') + 1)))
            return false;
    }
    return append(file, fieldsText(node, [&model](cv::FileStorage& storage) {
                      storage << "labels" << model.getLabels() << "labelsInfo"
                              << "["
                              << "]";
                  }));
}

bool writeModelFile(const cv::face::LBPHFaceRecognizer& model, const fs::path& path,
                    const std::stop_token& stop) {
    std::error_code error;
    if (path.has_parent_path()) {
        fs::create_directories(path.parent_path(), error);
        if (error)
            return false;
    }
    // Unbuffered, so that a full disk is noticed by the write that meets it.
    QSaveFile file(QFile::decodeName(path.c_str()));
    return file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) &&
           writeText(model, file, stop) && file.commit();
}

} // namespace

cv::Ptr<cv::face::LBPHFaceRecognizer> trainOwnerModel(const std::vector<TrainingSample>& samples,
                                                      const std::stop_token& stop) {
    auto model = cv::face::LBPHFaceRecognizer::create(1, 8, 8, 8, DBL_MAX);
    for (std::size_t first = 0; first < samples.size(); first += trainingSlice) {
        if (stop.stop_requested())
            return nullptr;
        std::vector<cv::Mat> images;
        std::vector<int> labels;
        for (std::size_t i = first; i < std::min(first + trainingSlice, samples.size()); ++i) {
            images.push_back(samples[i].image);
            labels.push_back(samples[i].label);
        }
        // Updating appends, so that slices give the model that one training of all would give.
        if (first == 0)
            model->train(images, labels);
        else
            model->update(images, labels);
    }
    return model;
}

bool writeOwnerModel(const cv::face::LBPHFaceRecognizer& model, const std::string& path,
                     const std::stop_token& stop) {
    try {
        return writeModelFile(model, path, stop);
    } catch (const std::exception&) {
        return false;
    }
}
