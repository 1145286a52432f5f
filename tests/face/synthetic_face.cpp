#include "synthetic_face.h"

#include <cmath>
#include <opencv2/imgproc.hpp>

namespace {

constexpr double background = 70.0;

double blob(double x, double y, double radiusX, double radiusY) {
    return std::exp(-(x * x / (radiusX * radiusX) + y * y / (radiusY * radiusY)));
}

/// A sphere seen in soft light, with dark eyes, brows, nostrils and mouth; x and y from -1 to 1.
double headLevel(double x, double y) {
    const double ex = x / 0.72;
    const double ey = y / 0.95;
    const double radius = ex * ex + ey * ey;
    if (radius >= 1.0)
        return background;
    double level = 90.0 + 110.0 * std::sqrt(1.0 - radius);
    for (const double side : {-0.3, 0.3}) {
        level -= 95.0 * blob(x - side, y + 0.18, 0.17, 0.10);
        level -= 60.0 * blob(x - side, y + 0.38, 0.20, 0.05);
    }
    level += 25.0 * blob(x, y, 0.08, 0.35);
    level -= 45.0 * blob(x, y - 0.22, 0.16, 0.05);
    level -= 80.0 * blob(x, y - 0.48, 0.28, 0.07);
    return level;
}

cv::Mat skinTexture(int sidePx, unsigned person) {
    cv::RNG random(person);
    cv::Mat texture(sidePx, sidePx, CV_32F, cv::Scalar(0));
    for (const int cells : {40, 20, 10}) {
        cv::Mat noise(cells, cells, CV_32F);
        random.fill(noise, cv::RNG::NORMAL, 0, 8);
        cv::Mat spread;
        cv::resize(noise, spread, texture.size(), 0.0, 0.0, cv::INTER_CUBIC);
        texture += spread;
    }
    return texture;
}

} // namespace

cv::Mat syntheticFace(int sidePx, unsigned person) {
    const cv::Mat texture = skinTexture(sidePx, person);
    cv::Mat face(sidePx, sidePx, CV_8U);
    for (int row = 0; row < sidePx; ++row) {
        for (int column = 0; column < sidePx; ++column) {
            const double x = (2.0 * column + 1.0) / sidePx - 1.0;
            const double y = (2.0 * row + 1.0) / sidePx - 1.0;
            double level = headLevel(x, y);
            if (level != background)
                level += texture.at<float>(row, column);
            face.at<uchar>(row, column) = cv::saturate_cast<uchar>(level);
        }
    }
    return face;
}

cv::Mat frameWithFace(unsigned person, cv::Size size) {
    cv::Mat frame(size, CV_8U, cv::Scalar(background));
    syntheticFace(180, person).copyTo(frame(cv::Rect(150, 60, 180, 180)));
    return frame;
}

QImage colourFrame(const cv::Mat& grey) {
    const QImage image(grey.data, grey.cols, grey.rows, static_cast<qsizetype>(grey.step),
                       QImage::Format_Grayscale8);
    return image.convertToFormat(QImage::Format_RGB888);
}
