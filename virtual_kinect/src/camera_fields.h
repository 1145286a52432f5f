#pragma once

#include <array>
#include <map>
#include <string>

namespace virtual_kinect {

/// One value of a camera's parameters and its name in calibration.json, which is the member's.
template <typename Params>
struct CameraField {
    const char* name;
    float Params::*value;
};

/// The infrared and depth camera's: libfreenect2::Freenect2Device::IrCameraParams, of whichever
/// library the caller includes.
template <typename Params>
constexpr std::array<CameraField<Params>, 9> irCameraFields() {
    return {{{"fx", &Params::fx},
             {"fy", &Params::fy},
             {"cx", &Params::cx},
             {"cy", &Params::cy},
             {"k1", &Params::k1},
             {"k2", &Params::k2},
             {"k3", &Params::k3},
             {"p1", &Params::p1},
             {"p2", &Params::p2}}};
}

/// The colour camera's: libfreenect2::Freenect2Device::ColorCameraParams.
template <typename Params>
constexpr std::array<CameraField<Params>, 26> colorCameraFields() {
    return {{{"fx", &Params::fx},           {"fy", &Params::fy},
             {"cx", &Params::cx},           {"cy", &Params::cy},
             {"shift_d", &Params::shift_d}, {"shift_m", &Params::shift_m},
             {"mx_x3y0", &Params::mx_x3y0}, {"mx_x0y3", &Params::mx_x0y3},
             {"mx_x2y1", &Params::mx_x2y1}, {"mx_x1y2", &Params::mx_x1y2},
             {"mx_x2y0", &Params::mx_x2y0}, {"mx_x0y2", &Params::mx_x0y2},
             {"mx_x1y1", &Params::mx_x1y1}, {"mx_x1y0", &Params::mx_x1y0},
             {"mx_x0y1", &Params::mx_x0y1}, {"mx_x0y0", &Params::mx_x0y0},
             {"my_x3y0", &Params::my_x3y0}, {"my_x0y3", &Params::my_x0y3},
             {"my_x2y1", &Params::my_x2y1}, {"my_x1y2", &Params::my_x1y2},
             {"my_x2y0", &Params::my_x2y0}, {"my_x0y2", &Params::my_x0y2},
             {"my_x1y1", &Params::my_x1y1}, {"my_x1y0", &Params::my_x1y0},
             {"my_x0y1", &Params::my_x0y1}, {"my_x0y0", &Params::my_x0y0}}};
}

/// The parameters that have these values under the fields' names; 0 where there is none.
template <typename Params, typename Fields>
Params paramsOf(const Fields& fields, const std::map<std::string, float>& values) {
    Params params{};
    for (const auto& field : fields)
        if (const auto found = values.find(field.name); found != values.end())
            params.*field.value = found->second;
    return params;
}

} // namespace virtual_kinect
