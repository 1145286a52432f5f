#include "export/point_cloud.h"

#include <QtEndian>

#include <bit>

namespace exporting {

namespace {

constexpr double metresPerUnit = 0.001;

void appendNumber(QByteArray& bytes, double number) {
    const auto bits = qToLittleEndian(std::bit_cast<quint32>(static_cast<float>(number)));
    bytes.append(reinterpret_cast<const char*>(&bits), sizeof bits);
}

QByteArray header(qsizetype points, bool hasColor) {
    QByteArray text = "ply\nformat binary_little_endian 1.0\n"
                      "comment metres: x right of the sensor, y down, z away from it\n"
                      "element vertex " +
                      QByteArray::number(points) +
                      "\nproperty float x\nproperty float y\nproperty float z\n";
    if (hasColor)
        text += "property uchar red\nproperty uchar green\nproperty uchar blue\n";
    return text + "end_header\n";
}

} // namespace

QByteArray pointCloud(const RegisteredPictures& pictures, const Camera& camera) {
    QByteArray points;
    qsizetype count = 0;
    for (int row = 0; row < pictures.depth.rows; ++row)
        for (int column = 0; column < pictures.depth.cols; ++column) {
            const auto reading = pictures.depth.at<std::uint16_t>(row, column);
            if (reading == 0)
                continue;
            const double z = reading * metresPerUnit;
            appendNumber(points, (column - camera.cx) * z / camera.fx);
            appendNumber(points, (row - camera.cy) * z / camera.fy);
            appendNumber(points, z);
            if (!pictures.color.empty()) {
                const auto& bgr = pictures.color.at<cv::Vec3b>(row, column);
                for (const int channel : {2, 1, 0})
                    points.append(static_cast<char>(bgr[channel]));
            }
            ++count;
        }
    return header(count, !pictures.color.empty()) + points;
}

} // namespace exporting
