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

KernelPicture CascadeSums::of(const cv::Mat& picture, std::size_t stride, int step) {
    const cv::Size size(picture.cols + 1, picture.rows + 1);
    const auto rows = static_cast<std::size_t>(size.height);
    const std::size_t elements = rows * stride + roomBehind;
    makeRoom(sums, elements);
    makeRoom(squares, elements);
    makeRoom(sums16, elements);

    cv::Mat sum(size, CV_32S, sums.data(), stride * sizeof(std::int32_t));
    cv::integral(picture, sum, CV_32S);
    for (std::size_t y = 0; y < rows; ++y) {
        kernels.narrow(sums.data() + y * stride, sums16.data() + y * stride,
                       static_cast<std::size_t>(size.width), stride, step);
        // The library sums up squares one pixel after the other. Only differences between rows
        // below the first count, so that the first one may hold whatever it held before.
        if (y > 0) {
            std::int32_t* row = squares.data() + y * stride;
            kernels.addSquares(picture.ptr(static_cast<int>(y - 1)), row - stride, row,
                               static_cast<std::size_t>(picture.cols));
        }
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
