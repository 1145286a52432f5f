#include "export/test_recording.h"

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <QDir>
#include <QFile>

using namespace Qt::StringLiterals;

namespace {

constexpr double colorPerColumn = 3.5;
constexpr double colorPerRow = 2.4;
constexpr double colorCx = 950.0;
constexpr double colorCy = 530.0;
/// libfreenect2's registration scales the linear terms by this.
constexpr double registration = 0.002199 / 0.01;

void require(bool done, const char* what) {
    if (!done)
        qFatal("%s", what);
}

} // namespace

TestRecording::TestRecording(int moments) {
    for (const QString& part : {u"color"_s, u"depth"_s})
        require(QDir().mkpath(path() + u'/' + part), "a folder can be made");
    // What is left of the sensor is at the right of a mirrored picture.
    const double markerColumn = cx - markerX_m * fx / plane_m;
    const double markerRow = cy + markerY_m * fy / plane_m;
    const cv::Mat depth(depthHeight, depthWidth, CV_16UC1, cv::Scalar(plane_m * 1000));
    cv::Mat color(1080, 1920, CV_8UC3, cv::Scalar(80, 80, 80));
    const cv::Point marker(qRound(colorCx + (markerColumn - cx) * colorPerColumn),
                           qRound(colorCy + (markerRow - cy) * colorPerRow));
    cv::circle(color, marker, 12, cv::Scalar(0, 0, 255), cv::FILLED);
    QByteArray times;
    for (int number = 0; number < moments; ++number) {
        const std::string name = '/' + std::to_string(number) + ".png";
        require(cv::imwrite((path() + u"/color"_s).toStdString() + name, color) &&
                    cv::imwrite((path() + u"/depth"_s).toStdString() + name, depth),
                "a picture can be written");
        times += QByteArray::number(number) + ',' + QByteArray::number(number * 100) + '\n';
    }
    writeText(u"timestamps.csv"_s, times);
    writeText(u"calibration.json"_s, calibration());
    writeText(u"recording.json"_s, R"({"first_frame": "2025-03-01T12:00:00.250Z"})");
}

void TestRecording::writeText(const QString& name, const QByteArray& text) const {
    QFile file(path() + u'/' + name);
    require(file.open(QIODevice::WriteOnly) && file.write(text) == text.size(),
            "a text can be written");
}

void TestRecording::remove(const QString& name) const {
    require(QFile::remove(path() + u'/' + name), "a file can be removed");
}

QByteArray TestRecording::calibration(bool mirrored, double k1) {
    const auto number = [](double value) { return QByteArray::number(value, 'g', 9); };
    return "{\"mirrored\": " + QByteArray(mirrored ? "true" : "false") +
           ", \"serial\": \"test\", \"ir\": {\"fx\": " + number(fx) + ", \"fy\": " + number(fy) +
           ", \"cx\": " + number(cx) + ", \"cy\": " + number(cy) + ", \"k1\": " + number(k1) +
           "}, \"color\": {\"fx\": 1060, \"fy\": 1060, \"cx\": " + number(colorCx) +
           ", \"cy\": " + number(colorCy) + ", \"shift_d\": 1, \"shift_m\": 0, \"mx_x1y0\": " +
           number(colorPerColumn * registration) +
           ", \"my_x0y1\": " + number(colorPerRow * registration) + "}}";
}
