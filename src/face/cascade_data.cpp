#include "face/cascade_data.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <opencv2/core/persistence.hpp>

namespace {

constexpr int maxWindowSide = 32;
constexpr int maxWeight = 16;
constexpr std::size_t maxParts = 3;

/// Reads one file; every function says whether the file is of the kind that is understood.
class Reader {
public:
    bool read(const cv::FileNode& root) {
        if (text(root["stageType"]) != "BOOST" || text(root["featureType"]) != "HAAR")
            return false;
        data.window = cv::Size(whole(root["width"]), whole(root["height"]));
        const auto fits = [](int side) { return side > 2 && side <= maxWindowSide; };
        return fits(data.window.width) && fits(data.window.height) &&
               readFeatures(root["features"]) && readStages(root["stages"]);
    }
    CascadeData data;

private:
    static std::string text(const cv::FileNode& node) {
        return node.isString() ? node.string() : std::string();
    }
    /// A whole number of that node, or -1.
    static int whole(const cv::FileNode& node) {
        if (!node.isInt() && !node.isReal())
            return -1;
        const double value = node.real();
        return value == std::trunc(value) && std::abs(value) < 1e6 ? static_cast<int>(value) : -1;
    }

    bool readFeatures(const cv::FileNode& list) {
        for (const cv::FileNode& node : list) {
            // Whatever is there in place of a zero is something else than an upright feature.
            if (const cv::FileNode tilted = node["tilted"]; !tilted.empty() && whole(tilted) != 0)
                return false;
            CascadeData::Feature feature;
            for (const cv::FileNode& part : node["rects"]) {
                if (!readPart(part, feature))
                    return false;
            }
            if (feature.size() < 2 || feature.size() > maxParts)
                return false;
            data.features.push_back(std::move(feature));
        }
        return !data.features.empty();
    }

    bool readPart(const cv::FileNode& node, CascadeData::Feature& feature) const {
        if (!node.isSeq() || node.size() != 5)
            return false;
        for (int i = 0; i < 5; ++i) {
            if (!node[i].isInt() && !node[i].isReal())
                return false;
        }
        const cv::Rect rect(whole(node[0]), whole(node[1]), whole(node[2]), whole(node[3]));
        const double weight = node[4].real();
        if (rect.x < 0 || rect.y < 0 || rect.width < 1 || rect.height < 1 ||
            rect.x + rect.width > data.window.width || rect.y + rect.height > data.window.height ||
            weight != std::trunc(weight) || weight == 0.0 || std::abs(weight) > maxWeight)
            return false;
        feature.push_back({rect, static_cast<int>(weight)});
        return true;
    }

    bool readStages(const cv::FileNode& list) {
        for (const cv::FileNode& node : list) {
            CascadeData::Stage stage;
            stage.firstStump = data.stumps.size();
            if (!number(node["stageThreshold"], stage.threshold))
                return false;
            for (const cv::FileNode& weak : node["weakClassifiers"]) {
                if (!readStump(weak))
                    return false;
            }
            stage.stumpCount = data.stumps.size() - stage.firstStump;
            if (stage.stumpCount == 0 ||
                whole(node["maxWeakCount"]) != static_cast<int>(stage.stumpCount))
                return false;
            data.stages.push_back(stage);
        }
        return !data.stages.empty();
    }

    bool readStump(const cv::FileNode& node) {
        const cv::FileNode test = node["internalNodes"];
        const cv::FileNode leaves = node["leafValues"];
        if (test.size() != 4 || leaves.size() != 2 || whole(test[0]) != 0 || !test[1].isInt() ||
            static_cast<int>(test[1]) != -1)
            return false;
        CascadeData::Stump stump;
        const int feature = whole(test[2]);
        if (feature < 0 || static_cast<std::size_t>(feature) >= data.features.size() ||
            !number(test[3], stump.threshold) || !number(leaves[0], stump.below) ||
            !number(leaves[1], stump.otherwise))
            return false;
        stump.feature = static_cast<std::size_t>(feature);
        data.stumps.push_back(stump);
        return true;
    }

    static bool number(const cv::FileNode& node, float& value) {
        if (!node.isInt() && !node.isReal())
            return false;
        value = static_cast<float>(node.real());
        return std::isfinite(value);
    }
};

void writeFeature(cv::FileStorage& storage, const CascadeData::Feature& feature) {
    storage << "{"
            << "rects"
            << "[";
    for (const CascadeData::Part& part : feature) {
        storage << "[" << part.rect.x << part.rect.y << part.rect.width << part.rect.height
                << part.weight << "]";
    }
    storage << "]"
            << "tilted" << 0 << "}";
}

void writeStage(cv::FileStorage& storage, const CascadeData& cascade,
                const CascadeData::Stage& stage) {
    storage << "{"
            << "maxWeakCount" << static_cast<int>(stage.stumpCount) << "stageThreshold"
            << stage.threshold << "weakClassifiers"
            << "[";
    for (std::size_t i = 0; i < stage.stumpCount; ++i) {
        const CascadeData::Stump& stump = cascade.stumps[stage.firstStump + i];
        storage << "{"
                << "internalNodes"
                << "[" << 0 << -1 << static_cast<int>(stump.feature) << stump.threshold << "]"
                << "leafValues"
                << "[" << stump.below << stump.otherwise << "]"
                << "}";
    }
    storage << "]"
            << "}";
}

std::optional<CascadeData> readFrom(const cv::FileStorage& storage) {
    Reader reader;
    if (!storage.isOpened() || !reader.read(storage.getFirstTopLevelNode()))
        return std::nullopt;
    return std::move(reader.data);
}

} // namespace

std::optional<CascadeData> readCascade(const std::string& path) {
    return readFrom(cv::FileStorage(path, cv::FileStorage::READ));
}

std::optional<CascadeData> parseCascade(const std::string& text) {
    return readFrom(cv::FileStorage(text, cv::FileStorage::READ | cv::FileStorage::MEMORY));
}

CascadeData withStages(const CascadeData& cascade, const std::vector<std::size_t>& stages) {
    CascadeData result;
    result.window = cascade.window;
    for (const std::size_t number : stages) {
        const CascadeData::Stage& stage = cascade.stages[number];
        result.stages.push_back({result.stumps.size(), stage.stumpCount, stage.threshold});
        for (std::size_t i = stage.firstStump; i < stage.firstStump + stage.stumpCount; ++i) {
            CascadeData::Stump& stump = result.stumps.emplace_back(cascade.stumps[i]);
            result.features.push_back(cascade.features[stump.feature]);
            stump.feature = result.features.size() - 1;
        }
    }
    return result;
}

CascadeData cutCascade(const CascadeData& cascade, std::size_t stageCount) {
    std::vector<std::size_t> first(std::min(stageCount, cascade.stages.size()));
    std::iota(first.begin(), first.end(), std::size_t{0});
    return withStages(cascade, first);
}

std::string cascadeText(const CascadeData& cascade) {
    cv::FileStorage storage("cascade.yml", cv::FileStorage::WRITE | cv::FileStorage::MEMORY);
    storage << "cascade"
            << "{"
            << "stageType"
            << "BOOST"
            << "featureType"
            << "HAAR"
            << "height" << cascade.window.height << "width" << cascade.window.width << "stageParams"
            << "{"
            << "boostType"
            << "GAB"
            << "}"
            << "featureParams"
            << "{"
            << "maxCatCount" << 0 << "}"
            << "stageNum" << static_cast<int>(cascade.stages.size()) << "stages"
            << "[";
    for (const CascadeData::Stage& stage : cascade.stages)
        writeStage(storage, cascade, stage);
    storage << "]"
            << "features"
            << "[";
    for (const CascadeData::Feature& feature : cascade.features)
        writeFeature(storage, feature);
    storage << "]"
            << "}";
    return storage.releaseAndGetString();
}
