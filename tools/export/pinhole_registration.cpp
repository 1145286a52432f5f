#include "export/registration.h"

#include <opencv2/imgproc.hpp>

#include <set>
#include <string>

namespace exporting {

using namespace Qt::StringLiterals;

namespace {

using Values = std::map<std::string, float>;

// libfreenect2's registration scales the terms of the colour camera by these.
constexpr float depthScale = 0.01F;
constexpr float colorScale = 0.002199F;

float valueOf(const Values& values, const char* name) {
    const auto found = values.find(name);
    return found == values.end() ? 0 : found->second;
}

/// Whether all values but those with these names are 0.
bool onlyHas(const Values& values, const std::set<std::string>& names) {
    for (const auto& [name, value] : values)
        if (value != 0 && !names.contains(name))
            return false;
    return true;
}

class PinholeRegistration : public Registration {
public:
    explicit PinholeRegistration(const RecordedMoments& recording)
        : columns(recording.depthSize(), CV_32FC1), rows(recording.depthSize(), CV_32FC1) {
        const Values& depth = recording.calibration().infrared;
        const Values& color = recording.calibration().color;
        const float perColumn = depthScale / colorScale * valueOf(color, "mx_x1y0");
        const float perRow = depthScale / colorScale * valueOf(color, "my_x0y1");
        for (int row = 0; row < rows.rows; ++row)
            for (int column = 0; column < rows.cols; ++column) {
                const float x = static_cast<float>(column) - valueOf(depth, "cx");
                const float y = static_cast<float>(row) - valueOf(depth, "cy");
                columns.at<float>(row, column) = valueOf(color, "cx") + perColumn * x;
                rows.at<float>(row, column) = valueOf(color, "cy") + perRow * y;
            }
    }

    QString description() const override {
        return u"by its own pinhole, since its cameras have no distortion"_s;
    }

    RegisteredPictures apply(const RecordedPictures& recorded) const override {
        RegisteredPictures result;
        result.depth = recorded.depth;
        if (!recorded.color.empty())
            cv::remap(recorded.color, result.color, columns, rows, cv::INTER_NEAREST);
        return result;
    }

private:
    cv::Mat columns; ///< of the colour picture, for each depth pixel
    cv::Mat rows;
};

} // namespace

std::unique_ptr<Registration> makePinholeRegistration(const RecordedMoments& recording) {
    const virtual_kinect::Calibration& calibration = recording.calibration();
    // Where the colour camera's place is another, its pixel depends on the distance.
    if (!onlyHas(calibration.infrared, {"fx", "fy", "cx", "cy"}) ||
        !onlyHas(calibration.color, {"fx", "fy", "cx", "cy", "shift_d", "mx_x1y0", "my_x0y1"}) ||
        valueOf(calibration.color, "mx_x1y0") == 0 || valueOf(calibration.color, "my_x0y1") == 0)
        return nullptr;
    return std::make_unique<PinholeRegistration>(recording);
}

} // namespace exporting
