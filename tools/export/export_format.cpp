#include "export/export_format.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace exporting {

using namespace Qt::StringLiterals;

namespace {

/// What Open3D's PinholeCameraIntrinsic reads: the matrix column by column.
QByteArray open3dIntrinsics(const Camera& camera) {
    const QJsonObject values{{u"width"_s, camera.width},
                             {u"height"_s, camera.height},
                             {u"intrinsic_matrix"_s, QJsonArray{camera.fx, 0.0, 0.0, 0.0, camera.fy,
                                                                0.0, camera.cx, camera.cy, 1.0}}};
    return QJsonDocument(values).toJson();
}

QByteArray yamlMatrix(const char* name, int rows, int columns, const QList<double>& values) {
    QByteArrayList numbers;
    for (const double value : values)
        numbers.append(QByteArray::number(value, 'g', 12));
    return QByteArray(name) + ":\n   rows: " + QByteArray::number(rows) +
           "\n   cols: " + QByteArray::number(columns) + "\n   data: [ " + numbers.join(", ") +
           " ]\n";
}

/// What RTAB-Map's camera model reads.
QByteArray rtabMapCalibration(const Camera& c) {
    QByteArray text = "%YAML:1.0\n---\ncamera_name: calibration\n";
    text += "image_width: " + QByteArray::number(c.width) + "\n";
    text += "image_height: " + QByteArray::number(c.height) + "\n";
    text += yamlMatrix("camera_matrix", 3, 3, {c.fx, 0, c.cx, 0, c.fy, c.cy, 0, 0, 1});
    text += "distortion_model: plumb_bob\n";
    text += yamlMatrix("distortion_coefficients", 1, 5, {0, 0, 0, 0, 0});
    text += yamlMatrix("rectification_matrix", 3, 3, {1, 0, 0, 0, 1, 0, 0, 0, 1});
    text += yamlMatrix("projection_matrix", 3, 4, {c.fx, 0, c.cx, 0, 0, c.fy, c.cy, 0, 0, 0, 1, 0});
    return text;
}

QByteArray seconds(double time) {
    return QByteArray::number(time, 'f', 6);
}

/// One line for each picture of a folder: time and file.
QByteArray tumIndex(const QByteArray& heading, const QString& folder,
                    const QList<ExportedMoment>& moments) {
    QByteArray text = heading;
    for (const ExportedMoment& moment : moments)
        text +=
            seconds(moment.seconds) + ' ' + folder.toUtf8() + '/' + moment.name.toUtf8() + ".png\n";
    return text;
}

QByteArray tumAssociations(const Layout& layout, const QList<ExportedMoment>& moments) {
    QByteArray text;
    for (const ExportedMoment& moment : moments) {
        const QByteArray file = '/' + moment.name.toUtf8() + ".png";
        text += seconds(moment.seconds) + ' ' + layout.colorFolder.toUtf8() + file + ' ' +
                seconds(moment.seconds) + ' ' + layout.depthFolder.toUtf8() + file + '\n';
    }
    return text;
}

QByteArray tumDepthHeading(const Camera& camera) {
    return "# depth pictures, 16-bit PNG: metres * 1000\n# fx fy cx cy: " +
           QByteArray::number(camera.fx) + ' ' + QByteArray::number(camera.fy) + ' ' +
           QByteArray::number(camera.cx) + ' ' + QByteArray::number(camera.cy) +
           "\n# timestamp filename\n";
}

} // namespace

Layout layoutOf(Format format) {
    switch (format) {
    case Format::Open3d:
        return {u"open3d"_s, u"color"_s, u"depth"_s, false};
    case Format::RtabMap:
        return {u"rtabmap"_s, u"rgb"_s, u"depth"_s, true};
    case Format::Tum:
        break;
    }
    return {u"tum"_s, u"rgb"_s, u"depth"_s, true};
}

QString pictureName(Format format, qint64 number, double time) {
    if (layoutOf(format).namesAreTimes)
        return QString::fromLatin1(seconds(time));
    return u"%1"_s.arg(number, 6, 10, QChar(u'0'));
}

QList<std::pair<QString, QByteArray>> textFiles(Format format, const Camera& camera, bool hasColor,
                                                const QList<ExportedMoment>& moments) {
    switch (format) {
    case Format::Open3d:
        return {{u"camera_intrinsic.json"_s, open3dIntrinsics(camera)}};
    case Format::RtabMap:
        return {{u"calibration.yaml"_s, rtabMapCalibration(camera)}};
    case Format::Tum:
        break;
    }
    const Layout layout = layoutOf(Format::Tum);
    QList<std::pair<QString, QByteArray>> files{
        {u"depth.txt"_s, tumIndex(tumDepthHeading(camera), layout.depthFolder, moments)}};
    if (hasColor) {
        files.append({u"rgb.txt"_s, tumIndex("# color pictures\n# timestamp filename\n",
                                             layout.colorFolder, moments)});
        files.append({u"associations.txt"_s, tumAssociations(layout, moments)});
    }
    return files;
}

} // namespace exporting
