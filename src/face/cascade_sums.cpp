#include "face/cascade_sums.h"

#include <opencv2/imgproc.hpp>

namespace {

constexpr std::size_t rowUnit = 64;
/// The kernels read whole blocks of windows, also behind the last window of the last row.
constexpr std::size_t roomBehind = 256;

template <typename Element>
void makeRoom(std::vector<Element>& memory, std::size_t elements) {
    if (memory.size() < elements)
        memory.resize(elements);
}

} // namespace

std::size_t CascadeSums::strideFor(int width) {
    // An odd number of cache lines, so that the rows of a window do not compete for the same ones.
    const std::size_t units = (static_cast<std::size_t>(width) + 1 + rowUnit - 1) / rowUnit;
    return units * rowUnit + rowUnit / 2;
}

KernelPicture CascadeSums::of(const cv::Mat& picture, cv::Size size, float scale,
                              std::size_t stride, int step) {
    const auto rows = static_cast<std::size_t>(size.height) + 1;
    const std::size_t elements = rows * stride + roomBehind;
    makeRoom(pixels, static_cast<std::size_t>(size.area()));
    makeRoom(sums, elements);
    makeRoom(squares, elements);
    makeRoom(sums16, elements);

    cv::Mat scaled(size, CV_8U, pixels.data());
    cv::resize(picture, scaled, size, 1.0 / static_cast<double>(scale),
               1.0 / static_cast<double>(scale), cv::INTER_LINEAR_EXACT);
    const cv::Size sumSize(size.width + 1, size.height + 1);
    cv::Mat sum(sumSize, CV_32S, sums.data(), stride * sizeof(std::int32_t));
    cv::Mat square(sumSize, CV_32S, squares.data(), stride * sizeof(std::int32_t));
    cv::integral(scaled, sum, square, CV_32S, CV_32S);
    for (std::size_t y = 0; y < rows; ++y) {
        kernels.narrow(sums.data() + y * stride, sums16.data() + y * stride,
                       static_cast<std::size_t>(sumSize.width), stride, step);
    }
    KernelPicture result{};
    result.sums16 = sums16.data();
    result.stride = stride;
    result.sums = sums.data();
    result.squares = squares.data();
    result.sumStride = stride;
    result.step = step;
    return result;
}
