#include "cascade_pictures.h"

#include "synthetic_face.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>

cv::Mat noisePicture(cv::Size size, int grain, std::uint64_t seed) {
    cv::Mat coarse(std::max(size.height / grain, 1), std::max(size.width / grain, 1), CV_8U);
    cv::RNG(seed).fill(coarse, cv::RNG::UNIFORM, 0, 256);
    cv::Mat picture;
    cv::resize(coarse, picture, size, 0.0, 0.0, cv::INTER_CUBIC);
    return picture;
}

std::vector<NamedPicture> cascadePictures() {
    std::vector<NamedPicture> pictures;
    const auto add = [&pictures](const std::string& name, const cv::Mat& picture) {
        pictures.push_back(
            {name + " " + std::to_string(picture.cols) + "x" + std::to_string(picture.rows),
             picture});
    };
    std::uint64_t seed = 1;
    for (const cv::Size size : {cv::Size(160, 121), cv::Size(97, 140), cv::Size(211, 66)}) {
        for (const int grain : {1, 4, 9})
            add("noise", noisePicture(size, grain, ++seed));
    }
    // One more or less than a window, a block or a strip has.
    for (const int side : {18, 19, 20, 21, 22, 23, 24, 25, 26, 31, 32, 33})
        add("small", noisePicture({side, side + 3}, 3, ++seed));
    for (const int width : {55, 56, 57, 83, 84, 85, 86, 87, 88, 148, 152})
        add("narrow", noisePicture({width, 47}, 5, ++seed));
    for (const int height : {24, 25, 26, 27, 49, 50, 51, 52, 53})
        add("low", noisePicture({130, height}, 5, ++seed));
    add("one row", noisePicture({200, 1}, 1, ++seed));
    add("one column", noisePicture({1, 200}, 1, ++seed));

    add("flat", cv::Mat(80, 100, CV_8U, cv::Scalar(90)));
    // The first windows of every row are without contrast, so many that a whole word of bits is.
    cv::Mat bare = noisePicture({320, 60}, 4, ++seed);
    bare.colRange(0, 200).setTo(90);
    add("flat on the left", bare);
    cv::Mat gradient(90, 150, CV_8U);
    for (int x = 0; x < gradient.cols; ++x)
        gradient.col(x).setTo(x);
    add("gradient", gradient);
    add("steep gradient", gradient * 1.7);
    // So little contrast that windows are at the edge of being left out.
    cv::Mat faint;
    noisePicture({150, 100}, 4, ++seed).convertTo(faint, CV_8U, 0.16, 100.0);
    add("faint", faint);
    cv::Mat checks(96, 128, CV_8U);
    for (int y = 0; y < checks.rows; ++y) {
        for (int x = 0; x < checks.cols; ++x)
            checks.at<uchar>(y, x) = (x / 6 + y / 6) % 2 == 0 ? 0 : 255;
    }
    add("checks", checks);
    add("face", frameWithFace(1, {360, 260})(cv::Rect(120, 40, 230, 215)).clone());
    // Part of a larger picture, so that rows are longer than the picture is wide.
    add("part", noisePicture({300, 200}, 5, ++seed)(cv::Rect(31, 17, 133, 101)));
    return pictures;
}
