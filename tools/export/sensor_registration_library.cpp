// Chosen by the build where libfreenect2 is linked.

#include "camera_fields.h"
#include "export/registration.h"

#include <libfreenect2/libfreenect2.hpp>
#include <libfreenect2/registration.h>

#include <opencv2/imgproc.hpp>

namespace exporting {

using namespace Qt::StringLiterals;

namespace {

using Device = libfreenect2::Freenect2Device;

constexpr std::size_t pixelBytes = 4;

// The only sizes that the library registers.
const cv::Size depthSize(512, 424);
const cv::Size colorSize(1920, 1080);

/// A frame of the library around a picture's memory.
libfreenect2::Frame frameOf(cv::Mat& picture) {
    return {static_cast<std::size_t>(picture.cols), static_cast<std::size_t>(picture.rows),
            pixelBytes, picture.data};
}

class SensorRegistration : public Registration {
public:
    explicit SensorRegistration(const virtual_kinect::Calibration& calibration)
        : registration(
              virtual_kinect::paramsOf<Device::IrCameraParams>(
                  virtual_kinect::irCameraFields<Device::IrCameraParams>(), calibration.infrared),
              virtual_kinect::paramsOf<Device::ColorCameraParams>(
                  virtual_kinect::colorCameraFields<Device::ColorCameraParams>(),
                  calibration.color)) {}

    QString description() const override { return u"by libfreenect2"_s; }

    RegisteredPictures apply(const RecordedPictures& recorded) const override {
        cv::Mat depth;
        recorded.depth.convertTo(depth, CV_32FC1);
        cv::Mat undistorted(depthSize, CV_32FC1);
        libfreenect2::Frame depthFrame = frameOf(depth);
        libfreenect2::Frame undistortedFrame = frameOf(undistorted);
        RegisteredPictures result;
        if (recorded.color.empty()) {
            registration.undistortDepth(&depthFrame, &undistortedFrame);
        } else {
            cv::Mat color;
            cv::cvtColor(recorded.color, color, cv::COLOR_BGR2BGRA);
            cv::Mat registered(depthSize, CV_8UC4);
            libfreenect2::Frame colorFrame = frameOf(color);
            libfreenect2::Frame registeredFrame = frameOf(registered);
            registration.apply(&colorFrame, &depthFrame, &undistortedFrame, &registeredFrame);
            cv::cvtColor(registered, result.color, cv::COLOR_BGRA2BGR);
        }
        undistorted.convertTo(result.depth, CV_16UC1);
        return result;
    }

private:
    libfreenect2::Registration registration;
};

} // namespace

std::unique_ptr<Registration> makeSensorRegistration(const RecordedMoments& recording) {
    if (recording.depthSize() != depthSize ||
        (recording.hasColor() && recording.colorSize() != colorSize))
        return nullptr;
    return std::make_unique<SensorRegistration>(recording.calibration());
}

} // namespace exporting
