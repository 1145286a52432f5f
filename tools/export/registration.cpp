#include "export/registration.h"

#include <opencv2/core.hpp>

namespace exporting {

Camera depthCamera(const RecordedMoments& recording) {
    const auto value = [&](const char* name) {
        const auto& values = recording.calibration().infrared;
        const auto found = values.find(name);
        return found == values.end() ? 0.0 : static_cast<double>(found->second);
    };
    const cv::Size size = recording.depthSize();
    return {size.width, size.height, value("fx"), value("fy"), value("cx"), value("cy")};
}

RegisteredPictures mirrored(const RegisteredPictures& pictures) {
    constexpr int leftToRight = 1;
    RegisteredPictures result;
    cv::flip(pictures.depth, result.depth, leftToRight);
    if (!pictures.color.empty())
        cv::flip(pictures.color, result.color, leftToRight);
    return result;
}

Camera mirrored(Camera camera) {
    camera.cx = camera.width - 1 - camera.cx;
    return camera;
}

} // namespace exporting
