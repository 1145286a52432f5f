#pragma once

#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <vector>

/// A cascade of upright Haar features with one threshold each, as its file describes it.
struct CascadeData {
    /// A rectangle of the window whose pixels count with this weight.
    struct Part {
        cv::Rect rect;
        int weight = 0;
    };
    /// The sum of two or three parts.
    using Feature = std::vector<Part>;
    /// Adds `below` to its stage's sum where the feature, divided by the window's contrast, is
    /// below the threshold, and `otherwise` where not.
    struct Stump {
        std::size_t feature = 0; ///< Index into `features`.
        float threshold = 0.0F;
        float below = 0.0F;
        float otherwise = 0.0F;
    };
    struct Stage {
        std::size_t firstStump = 0;
        std::size_t stumpCount = 0;
        float threshold = 0.0F; ///< As the file has it.
    };

    cv::Size window; ///< In pixels; a hit of scale 1 has this size.
    std::vector<Feature> features;
    std::vector<Stump> stumps; ///< Stage by stage.
    std::vector<Stage> stages; ///< At least one.
};

/// Reads a cascade file. Nothing when it holds anything else than stages of stumps on upright
/// features inside a window of at most 32 x 32 pixels, with whole weights and finite numbers.
/// Throws cv::Exception where the file cannot be parsed.
std::optional<CascadeData> readCascade(const std::string& path);
/// The same from the file's text.
std::optional<CascadeData> parseCascade(const std::string& text);

/// The cascade with these stages only, numbers of its own ones in the order wanted, and the
/// features that they use.
CascadeData withStages(const CascadeData& cascade, const std::vector<std::size_t>& stages);

/// The cascade with its first `stageCount` stages only.
CascadeData cutCascade(const CascadeData& cascade, std::size_t stageCount);

/// The text of a cascade file, as cv::FileStorage reads it.
std::string cascadeText(const CascadeData& cascade);
