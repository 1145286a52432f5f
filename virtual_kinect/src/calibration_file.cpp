#include "calibration_file.h"

#include <opencv2/core.hpp>

#include <cmath>
#include <stdexcept>

namespace virtual_kinect {

namespace {

constexpr std::uintmax_t largestFile = 1 << 20;

std::map<std::string, float> readValues(const cv::FileNode& node, const std::string& camera) {
    std::map<std::string, float> values;
    if (!node.isMap())
        throw std::runtime_error("it has no values of the " + camera + " camera");
    for (const cv::FileNode value : node) {
        if (!value.isInt() && !value.isReal())
            throw std::runtime_error(value.name() + " of the " + camera + " camera is no number");
        values[value.name()] = static_cast<float>(value.real());
    }
    for (const char* focal : {"fx", "fy"})
        if (const auto found = values.find(focal);
            found == values.end() || !std::isfinite(found->second) || found->second <= 0)
            throw std::runtime_error(std::string(focal) + " of the " + camera +
                                     " camera is no focal length");
    return values;
}

} // namespace

Calibration typicalCalibration() {
    Calibration calibration;
    calibration.infrared = {{"fx", 365.5F}, {"fy", 365.5F}, {"cx", 255.5F}, {"cy", 211.5F}};
    calibration.color = {{"fx", 1081.37F}, {"fy", 1081.37F}, {"cx", 959.5F}, {"cy", 539.5F}};
    return calibration;
}

Calibration readCalibration(const std::filesystem::path& file) {
    try {
        if (!std::filesystem::is_regular_file(file) ||
            std::filesystem::file_size(file) > largestFile)
            throw std::runtime_error("it is no file of a usual size");
        const cv::FileStorage storage(file.string(),
                                      cv::FileStorage::READ | cv::FileStorage::FORMAT_JSON);
        if (!storage.isOpened())
            throw std::runtime_error("it does not open");
        Calibration calibration;
        calibration.infrared = readValues(storage["ir"], "infrared");
        calibration.color = readValues(storage["color"], "colour");
        if (const cv::FileNode mirrored = storage["mirrored"]; mirrored.isInt())
            calibration.mirrored = static_cast<int>(mirrored) != 0;
        if (const cv::FileNode serial = storage["serial"]; serial.isString())
            calibration.serial = static_cast<std::string>(serial);
        return calibration;
    } catch (const cv::Exception&) {
        // What it says takes several lines and speaks of OpenCV's source.
        throw std::runtime_error(file.string() + " cannot be read: it is no JSON of that kind");
    } catch (const std::exception& error) {
        throw std::runtime_error(file.string() + " cannot be read: " + error.what());
    }
}

} // namespace virtual_kinect
