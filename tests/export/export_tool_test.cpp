#include "common/command_line.h"
#include "export/export_tool.h"
#include "export/test_recording.h"
#include "frame_source.h"
#include "tools/tool_run.h"

#include <opencv2/core/persistence.hpp>
#include <opencv2/imgcodecs.hpp>

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QScopeGuard>
#include <QTest>

#include <cmath>
#include <cstring>
#include <sys/mount.h>

using namespace Qt::StringLiterals;

class ExportToolTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aPlaneBecomesPointsOnThePlane();
    void whatIsLeftOfTheSensorHasANegativeX_data();
    void whatIsLeftOfTheSensorHasANegativeX();
    void picturesAndIntrinsicsGiveTheSamePoints();
    void tumFilesNameEveryPictureWithItsTime();
    void rtabMapReadsTheCalibration();
    void withoutColourDepthIsExportedAlone();
    void theRoomIsRegisteredByItsOwnPinhole();
    void camerasWithDistortionNeedTheSensorsLibrary();
    void whatCannotBeExportedIsSaid_data();
    void whatCannotBeExportedIsSaid();
    void aDamagedPictureIsLeftOut();
    void aFullDiskIsSaid();
    void whoeverStopsItIsToldThatItIsNotWhole();
    void wrongUseIsRefused_data();
    void wrongUseIsRefused();
};

namespace {

/// One run of lumeno-export.
struct Run : ToolRun {
    explicit Run(
        const QStringList& arguments, const std::function<bool()>& stopped = [] { return false; })
        : ToolRun(u"lumeno-export"_s, exporting::runExportTool, arguments, stopped) {}
};

struct Point {
    float x = 0, y = 0, z = 0;
    bool isRed = false;
};

QByteArray contentOf(const QString& name) {
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// The points of a PLY file with colours; none when it is not as long as it says.
std::vector<Point> readPly(const QString& name) {
    constexpr qsizetype pointBytes = 15;
    const QByteArray file = contentOf(name);
    const qsizetype begin = file.indexOf("end_header\n") + 11;
    const qsizetype countAt = file.indexOf("element vertex ") + 15;
    const qsizetype count = file.mid(countAt, file.indexOf('\n', countAt) - countAt).toLongLong();
    if (!file.startsWith("ply\nformat binary_little_endian 1.0\n") ||
        file.size() != begin + count * pointBytes)
        return {};
    std::vector<Point> points(static_cast<std::size_t>(count));
    const char* bytes = file.constData() + begin;
    for (Point& point : points) {
        for (float* const value : {&point.x, &point.y, &point.z}) {
            std::memcpy(value, bytes, sizeof *value);
            bytes += sizeof *value;
        }
        const auto channel = [&](int at) { return static_cast<unsigned char>(bytes[at]); };
        point.isRed = channel(0) > 200 && channel(1) < 60 && channel(2) < 60;
        bytes += 3;
    }
    return points;
}

struct Middle {
    double x = 0, y = 0;
    int points = 0;
};

Middle middleOfMarker(const std::vector<Point>& points) {
    Middle middle;
    for (const Point& point : points)
        if (point.isRed) {
            middle.x += static_cast<double>(point.x);
            middle.y += static_cast<double>(point.y);
            ++middle.points;
        }
    middle.x /= std::max(1, middle.points);
    middle.y /= std::max(1, middle.points);
    return middle;
}

bool isNear(double value, double expected) {
    return std::abs(value - expected) < 0.005; // metres
}

} // namespace

void ExportToolTest::aPlaneBecomesPointsOnThePlane() {
    const TestRecording recording;
    const Run run({recording.path(), u"--ply"_s, u"0"_s});
    QVERIFY2(run.status == tool::Succeeded, qPrintable(run.errors));
    const auto points = readPly(recording.beside(u"walk-000000.ply"_s));
    QCOMPARE(points.size(), std::size_t{512 * 424});
    float left = 0, right = 0, top = 0, bottom = 0;
    for (const Point& point : points) {
        QVERIFY(isNear(point.z, TestRecording::plane_m));
        left = std::min(left, point.x);
        right = std::max(right, point.x);
        top = std::min(top, point.y);
        bottom = std::max(bottom, point.y);
    }
    // The whole field of view.
    QVERIFY(isNear(left, (TestRecording::cx - 511) * 2 / TestRecording::fx));
    QVERIFY(isNear(right, TestRecording::cx * 2 / TestRecording::fx));
    QVERIFY(isNear(top, -TestRecording::cy * 2 / TestRecording::fy));
    QVERIFY(isNear(bottom, (423 - TestRecording::cy) * 2 / TestRecording::fy));
}

void ExportToolTest::whatIsLeftOfTheSensorHasANegativeX_data() {
    QTest::addColumn<bool>("mirrored");
    QTest::newRow("mirrored, as sensors deliver") << true;
    QTest::newRow("not mirrored") << false;
}

void ExportToolTest::whatIsLeftOfTheSensorHasANegativeX() {
    QFETCH(bool, mirrored);
    const TestRecording recording;
    recording.writeText(u"calibration.json"_s, TestRecording::calibration(mirrored));
    QCOMPARE(Run({recording.path(), u"--ply=0"_s}).status, tool::Succeeded);
    const Middle marker = middleOfMarker(readPly(recording.beside(u"walk-000000.ply"_s)));
    QVERIFY(marker.points > 5);
    // The marker was put into the picture for a sensor that mirrors.
    const double expected = mirrored ? TestRecording::markerX_m : -TestRecording::markerX_m;
    QVERIFY2(isNear(marker.x, expected), qPrintable(QString::number(marker.x)));
    QVERIFY2(isNear(marker.y, TestRecording::markerY_m), qPrintable(QString::number(marker.y)));
}

void ExportToolTest::picturesAndIntrinsicsGiveTheSamePoints() {
    const TestRecording recording(3);
    const Run run({recording.path(), u"--open3d"_s});
    QVERIFY2(run.status == tool::Succeeded, qPrintable(run.errors));
    const QString folder = recording.beside(u"walk-open3d"_s);
    const QJsonObject camera =
        QJsonDocument::fromJson(contentOf(folder + u"/camera_intrinsic.json"_s)).object();
    QCOMPARE(camera[u"width"_s].toInt(), 512);
    QCOMPARE(camera[u"height"_s].toInt(), 424);
    const QJsonArray matrix = camera[u"intrinsic_matrix"_s].toArray(); // column by column
    QCOMPARE(matrix.size(), 9);
    QCOMPARE(matrix[0].toDouble(), TestRecording::fx);
    QCOMPARE(matrix[4].toDouble(), TestRecording::fy);
    QCOMPARE(matrix[6].toDouble(), 511 - TestRecording::cx);
    QCOMPARE(matrix[7].toDouble(), TestRecording::cy);
    QCOMPARE(matrix[8].toDouble(), 1.0);
    for (const QString& name : {u"/000000.png"_s, u"/000001.png"_s, u"/000002.png"_s}) {
        const cv::Mat depth =
            cv::imread((folder + u"/depth"_s + name).toStdString(), cv::IMREAD_UNCHANGED);
        const cv::Mat color = cv::imread((folder + u"/color"_s + name).toStdString());
        QCOMPARE(depth.type(), CV_16UC1);
        QVERIFY(depth.size() == cv::Size(512, 424) && color.size() == depth.size());
        QCOMPARE(cv::norm(depth, cv::NORM_INF), TestRecording::plane_m * 1000);
        std::vector<Point> points;
        for (int row = 0; row < 424; ++row)
            for (int column = 0; column < 512; ++column) {
                const double z = depth.at<std::uint16_t>(row, column) / 1000.0;
                const auto bgr = color.at<cv::Vec3b>(row, column);
                const double x = (column - matrix[6].toDouble()) * z / matrix[0].toDouble();
                const double y = (row - matrix[7].toDouble()) * z / matrix[4].toDouble();
                points.push_back({static_cast<float>(x), static_cast<float>(y),
                                  static_cast<float>(z), bgr[2] > 200 && bgr[1] < 60});
            }
        const Middle marker = middleOfMarker(points);
        QVERIFY(marker.points > 5 && isNear(marker.x, TestRecording::markerX_m));
        QVERIFY(isNear(marker.y, TestRecording::markerY_m));
    }
}

void ExportToolTest::tumFilesNameEveryPictureWithItsTime() {
    const TestRecording recording(3);
    const QString folder = recording.beside(u"dataset"_s);
    const Run run({recording.path(), u"--tum"_s, u"--to"_s, folder});
    QVERIFY2(run.status == tool::Succeeded, qPrintable(run.errors));
    for (const auto& [index, place] :
         {std::pair{u"depth.txt"_s, QByteArray("depth/")}, {u"rgb.txt"_s, QByteArray("rgb/")}}) {
        int moments = 0;
        for (const QByteArray& line : contentOf(folder + u'/' + index).split('\n')) {
            if (line.isEmpty() || line.startsWith('#'))
                continue;
            const QList<QByteArray> words = line.split(' ');
            QCOMPARE(words.size(), 2);
            QCOMPARE(words[0], QByteArray::number(1740830400.25 + moments * 0.1, 'f', 6));
            QVERIFY(words[1].startsWith(place));
            QVERIFY(QFile::exists(folder + u'/' + QString::fromLatin1(words[1])));
            ++moments;
        }
        QCOMPARE(moments, 3);
    }
    QVERIFY(contentOf(folder + u"/depth.txt"_s).contains("metres * 1000"));
    QCOMPARE(contentOf(folder + u"/associations.txt"_s).count('\n'), 3);
}

void ExportToolTest::rtabMapReadsTheCalibration() {
    const TestRecording recording(2);
    const Run run({recording.path(), u"--rtabmap"_s});
    QVERIFY2(run.status == tool::Succeeded, qPrintable(run.errors));
    const QString folder = recording.beside(u"walk-rtabmap"_s);
    const cv::FileStorage file((folder + u"/calibration.yaml"_s).toStdString(),
                               cv::FileStorage::READ);
    QVERIFY(file.isOpened());
    QCOMPARE(static_cast<int>(file["image_width"]), 512);
    QCOMPARE(static_cast<int>(file["image_height"]), 424);
    std::vector<double> values;
    file["camera_matrix"]["data"] >> values;
    QCOMPARE(values, (std::vector<double>{TestRecording::fx, 0, 511 - TestRecording::cx, 0,
                                          TestRecording::fy, TestRecording::cy, 0, 0, 1}));
    file["distortion_coefficients"]["data"] >> values;
    QCOMPARE(values, std::vector<double>(5, 0));
    file["projection_matrix"]["data"] >> values;
    QCOMPARE(values.size(), std::size_t{12});
    const QStringList pictures{u"1740830400.250000.png"_s, u"1740830400.350000.png"_s};
    QCOMPARE(QDir(folder + u"/rgb"_s).entryList(QDir::Files), pictures);
    QCOMPARE(QDir(folder + u"/depth"_s).entryList(QDir::Files), pictures);
}

void ExportToolTest::withoutColourDepthIsExportedAlone() {
    const TestRecording recording;
    QVERIFY(QDir(recording.path() + u"/color"_s).removeRecursively());
    QCOMPARE(Run({recording.path(), u"--open3d"_s}).status, tool::Succeeded);
    const QString folder = recording.beside(u"walk-open3d"_s);
    QVERIFY(QFile::exists(folder + u"/depth/000000.png"_s));
    QVERIFY(!QDir(folder + u"/color"_s).exists());
    QCOMPARE(Run({recording.path(), u"--ply=0"_s}).status, tool::Succeeded);
    const QByteArray points = contentOf(recording.beside(u"walk-000000.ply"_s));
    QVERIFY(points.contains("end_header") && !points.contains("red"));
}

void ExportToolTest::theRoomIsRegisteredByItsOwnPinhole() {
    const TestRecording recording;
    const auto object = [](const std::map<std::string, float>& values) {
        QJsonObject result;
        for (const auto& [name, value] : values)
            result[QString::fromStdString(name)] = static_cast<double>(value);
        return result;
    };
    const virtual_kinect::Calibration room = virtual_kinect::makeRoomSource()->calibration();
    const QJsonObject calibration{{u"ir"_s, object(room.infrared)},
                                  {u"color"_s, object(room.color)}};
    recording.writeText(u"calibration.json"_s, QJsonDocument(calibration).toJson());
    const Run run({recording.path(), u"--ply=0"_s});
    QVERIFY2(run.status == tool::Succeeded, qPrintable(run.errors));
    QVERIFY2(run.output.contains(u"registered by its own pinhole"_s), qPrintable(run.output));
}

void ExportToolTest::camerasWithDistortionNeedTheSensorsLibrary() {
    const TestRecording recording;
    recording.writeText(u"calibration.json"_s, TestRecording::calibration(true, 0.09));
    const Run run({recording.path(), u"--open3d"_s});
    QCOMPARE(run.status, tool::Failed);
    QVERIFY2(run.errors.contains(u"needs libfreenect2's registration"_s), qPrintable(run.errors));
    QVERIFY(!QDir(recording.beside(u"walk-open3d"_s)).exists());
}

void ExportToolTest::whatCannotBeExportedIsSaid_data() {
    QTest::addColumn<QString>("removed");
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("reason");
    const QStringList open3d{u"--open3d"_s};
    QTest::newRow("no calibration")
        << u"calibration.json"_s << open3d << u"it has no calibration.json"_s;
    QTest::newRow("a picture is missing") << u"color/0.png"_s << open3d << u"has no images"_s;
    QTest::newRow("no such moment") << QString() << QStringList{u"--ply=7"_s}
                                    << u"The recording has no moment with the number 7"_s;
    QTest::newRow("target is not empty")
        << QString() << QStringList{u"--open3d"_s, u"--to"_s, u"/proc"_s}
        << u"an export needs a new or an empty folder"_s;
    QTest::newRow("target cannot be made")
        << QString() << QStringList{u"--open3d"_s, u"--to"_s, u"/proc/nothing"_s}
        << u"cannot be made"_s;
    QTest::newRow("points cannot be written")
        << QString() << QStringList{u"--ply=0"_s, u"--to"_s, u"/proc/nothing/a.ply"_s}
        << u"No such file or directory"_s;
}

void ExportToolTest::whatCannotBeExportedIsSaid() {
    QFETCH(QString, removed);
    QFETCH(QStringList, arguments);
    QFETCH(QString, reason);
    const TestRecording recording;
    if (!removed.isEmpty())
        recording.remove(removed);
    const Run run(QStringList{recording.path()} + arguments);
    QCOMPARE(run.status, tool::Failed);
    QVERIFY2(run.errors.contains(reason), qPrintable(run.errors));
    QCOMPARE(run.errors.count(u'\n'), 1);
}

void ExportToolTest::aDamagedPictureIsLeftOut() {
    const TestRecording recording(3);
    QFile picture(recording.path() + u"/depth/1.png"_s);
    QVERIFY(picture.open(QIODevice::ReadWrite));
    picture.seek(60);
    picture.write(QByteArray(8, '\x55'));
    picture.close();
    const Run run({recording.path(), u"--tum"_s});
    QCOMPARE(run.status, tool::Failed);
    QVERIFY2(run.errors.contains(u"1 moments are left out: "_s), qPrintable(run.errors));
    const QString folder = recording.beside(u"walk-tum"_s);
    QCOMPARE(QDir(folder + u"/rgb"_s).entryList(QDir::Files).size(), 2);
    QCOMPARE(contentOf(folder + u"/associations.txt"_s).count('\n'), 2);
}

void ExportToolTest::aFullDiskIsSaid() {
    const TestRecording recording(12); // two files of a page each for each moment
    const QString disk = recording.beside(u"disk"_s);
    QVERIFY(QDir().mkdir(disk));
    const QByteArray path = QFile::encodeName(disk);
    if (mount("tmpfs", path.constData(), "tmpfs", 0, "size=64k") != 0)
        QSKIP("A small disk cannot be mounted here.");
    const auto unmount = qScopeGuard([&] { umount2(path.constData(), MNT_DETACH); });
    const Run run({recording.path(), u"--open3d"_s, u"--to"_s, disk + u"/out"_s});
    QCOMPARE(run.status, tool::Failed);
    QVERIFY2(run.errors.contains(u"No space left on device"_s), qPrintable(run.errors));
}

void ExportToolTest::whoeverStopsItIsToldThatItIsNotWhole() {
    const TestRecording recording(5);
    int asked = 0;
    const Run run({recording.path(), u"--tum"_s}, [&] { return ++asked > 2; });
    QCOMPARE(run.status, tool::Failed);
    QVERIFY2(run.errors.contains(u"The export was stopped before its end."_s),
             qPrintable(run.errors));
    QCOMPARE(contentOf(recording.beside(u"walk-tum/associations.txt"_s)).count('\n'), 2);
}

void ExportToolTest::wrongUseIsRefused_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("no folder") << QStringList{u"--tum"_s};
    QTest::newRow("no format") << QStringList{u"a"_s};
    QTest::newRow("two formats") << QStringList{u"a"_s, u"--tum"_s, u"--open3d"_s};
    QTest::newRow("format and points") << QStringList{u"a"_s, u"--tum"_s, u"--ply=1"_s};
    QTest::newRow("no number") << QStringList{u"a"_s, u"--ply=first"_s};
}

void ExportToolTest::wrongUseIsRefused() {
    QFETCH(QStringList, arguments);
    const Run run(arguments);
    QCOMPARE(run.status, tool::WrongUse);
    QCOMPARE(run.errors.count(u'\n'), 1);
}

QTEST_GUILESS_MAIN(ExportToolTest)
#include "export_tool_test.moc"
