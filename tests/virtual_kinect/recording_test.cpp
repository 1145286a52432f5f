#include "recording_source.h"
#include "virtual_kinect/recording_folder.h"

#include <QDir>
#include <QTest>

#include <algorithm>

using namespace Qt::StringLiterals;
using virtual_kinect::FrameSet;
using virtual_kinect::FrameSource;

class RecordingTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void picturesComeAsTheyWereStored();
    void theRecordingPlaysInALoop();
    void withoutTimesThirtyFramesASecond();
    void timesComeFromTheFile_data();
    void timesComeFromTheFile();
    void withoutInfraredPicturesItIsAllZero();
    void withoutColourPicturesItIsBlackAndOfASensorsSize();
    void theCalibrationComesFromTheFile();
    void numbersAreComparedAsNumbers();
    void colorMayBeJpeg();
    void otherFilesDoNotMatter();
    void thePicturesLieWhereTheyWereWhenThePlayingBegan();
    void aLongRecordingIsNotKeptInMemory();
};

namespace {

std::unique_ptr<FrameSource> play(const RecordingFolder& folder) {
    return virtual_kinect::makeRecordingSource(folder.path().toStdString());
}

FrameSet frame(FrameSource& source, std::uint64_t number) {
    FrameSet set;
    source.render(number, set);
    return set;
}

} // namespace

void RecordingTest::picturesComeAsTheyWereStored() {
    const RecordingFolder folder(1);
    cv::Mat color = RecordingFolder::color(0);
    color.at<cv::Vec3b>(2, 5) = {1, 2, 3};
    folder.write(u"color/0.png"_s, color);
    cv::Mat depth = RecordingFolder::depth(0);
    depth.at<std::uint16_t>(1, 3) = 65535;
    depth.at<std::uint16_t>(2, 0) = 0;
    folder.write(u"depth/0.png"_s, depth);
    const FrameSet set = frame(*play(folder), 0);
    QCOMPARE(set.colorWidth, RecordingFolder::colorWidth);
    QCOMPARE(set.colorHeight, RecordingFolder::colorHeight);
    QCOMPARE(set.depthWidth, RecordingFolder::depthWidth);
    QCOMPARE(set.depthHeight, RecordingFolder::depthHeight);
    QCOMPARE(set.bgrx.size(), std::size_t{8 * 6 * 4});
    const std::size_t changed = (2 * 8 + 5) * 4;
    QCOMPARE(int{set.bgrx[changed]}, 1);
    QCOMPARE(int{set.bgrx[changed + 1]}, 2);
    QCOMPARE(int{set.bgrx[changed + 2]}, 3);
    QCOMPARE(int{set.bgrx[1]}, 20);
    QCOMPARE(set.depth[1 * 4 + 3], 65535.0F);
    QCOMPARE(set.depth[2 * 4], 0.0F);
    QCOMPARE(set.depth[0], 1000.0F);
    QCOMPARE(set.infrared, std::vector<float>(12, 500.0F));
}

void RecordingTest::theRecordingPlaysInALoop() {
    const RecordingFolder folder(3);
    const auto source = play(folder);
    FrameSet set;
    for (const std::uint64_t number : {0UL, 1UL, 2UL, 3UL, 7UL, 3'000'002UL}) {
        source->render(number, set);
        QCOMPARE(set.depth.front(), 1000.0F + static_cast<float>(number % 3));
        QCOMPARE(std::uint64_t{set.bgrx.front()}, 10 * (number % 3));
    }
}

void RecordingTest::withoutTimesThirtyFramesASecond() {
    const RecordingFolder folder(2);
    const auto source = play(folder);
    QCOMPARE(source->timeOf(0).count(), 0);
    QCOMPARE(source->timeOf(1).count(), 33'333);
    QCOMPARE(source->timeOf(2).count(), 66'666);
    QCOMPARE(source->timeOf(4).count(), 133'332);
}

void RecordingTest::timesComeFromTheFile_data() {
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("plain") << QByteArray("0,5000\n1,5010\n2,5040.5\n");
    QTest::newRow("heading") << QByteArray("number,milliseconds\n0,0\n1,10\n2,40.5\n");
    QTest::newRow("further columns")
        << QByteArray("number,milliseconds,color_milliseconds\n0,0,1\n1,10, 8.5\n2,40.5,\n");
    QTest::newRow("blanks, other line ends, no last one")
        << QByteArray(" 0 , 0\r\n\r\n1\t,10\r\n 2,  40.5");
    QTest::newRow("any order") << QByteArray("2,40.5\n0,0\n1,10\n");
    QTest::newRow("before the epoch") << QByteArray("0,-10\n1,0\n2,30.5\n");
}

void RecordingTest::timesComeFromTheFile() {
    QFETCH(QByteArray, text);
    const RecordingFolder folder(3);
    folder.writeText(u"timestamps.csv"_s, text);
    const auto source = play(folder);
    QCOMPARE(source->timeOf(0).count(), 0);
    QCOMPARE(source->timeOf(1).count(), 10'000);
    QCOMPARE(source->timeOf(2).count(), 40'500);
    // The step from the last to the first is the average one.
    QCOMPARE(source->timeOf(3).count(), 60'750);
    QCOMPARE(source->timeOf(5).count(), 60'750 + 40'500);
}

void RecordingTest::withoutInfraredPicturesItIsAllZero() {
    const RecordingFolder folder(2);
    folder.remove(u"ir"_s);
    QCOMPARE(frame(*play(folder), 1).infrared, std::vector<float>(12, 0.0F));
}

void RecordingTest::withoutColourPicturesItIsBlackAndOfASensorsSize() {
    const RecordingFolder folder(2);
    folder.remove(u"color"_s);
    const FrameSet set = frame(*play(folder), 1);
    QCOMPARE(set.colorWidth, 1920);
    QCOMPARE(set.colorHeight, 1080);
    QCOMPARE(set.bgrx, std::vector<std::uint8_t>(std::size_t{1920} * 1080 * 4, 0));
    QCOMPARE(set.depth, std::vector<float>(12, 1001.0F));
}

void RecordingTest::theCalibrationComesFromTheFile() {
    const RecordingFolder folder(1);
    QCOMPARE(play(folder)->calibration().infrared.at("fx"), 365.5F); // a typical sensor's
    folder.writeText(
        u"calibration.json"_s,
        "{\"serial\": \"7\", \"mirrored\": false, \"ir\": {\"fx\": 366, \"fy\": 367.5, "
        "\"k1\": -0.25}, \"color\": {\"fx\": 1000, \"fy\": 1001, \"mx_x3y0\": 1e-3}}");
    const virtual_kinect::Calibration calibration = play(folder)->calibration();
    QCOMPARE(calibration.infrared.at("fx"), 366.0F);
    QCOMPARE(calibration.infrared.at("fy"), 367.5F);
    QCOMPARE(calibration.infrared.at("k1"), -0.25F);
    QCOMPARE(calibration.color.at("mx_x3y0"), 1e-3F);
    QCOMPARE(calibration.serial, std::string("7"));
    QVERIFY(!calibration.mirrored);
}

void RecordingTest::numbersAreComparedAsNumbers() {
    const RecordingFolder folder(0);
    folder.remove(u"ir"_s);
    const QStringList colors = {u"2.png"_s, u"010.png"_s, u"7.PNG"_s};
    const QStringList depths = {u"0002.png"_s, u"10.png"_s, u"07.png"_s};
    for (int at = 0; at < 3; ++at) {
        folder.write(u"color/"_s + colors[at].toLower(), RecordingFolder::color(at));
        if (colors[at] != colors[at].toLower())
            QVERIFY(QFile::rename(folder.file(u"color/"_s + colors[at].toLower()),
                                  folder.file(u"color/"_s + colors[at])));
        folder.write(u"depth/"_s + depths[at], RecordingFolder::depth(at));
    }
    const auto source = play(folder);
    // In the order 2, 7, 10.
    for (const auto& [number, stored] : {std::pair{0U, 0}, {1U, 2}, {2U, 1}}) {
        const FrameSet set = frame(*source, number);
        QCOMPARE(int{set.bgrx.front()}, 10 * stored);
        QCOMPARE(set.depth.front(), 1000.0F + static_cast<float>(stored));
    }
}

void RecordingTest::colorMayBeJpeg() {
    const RecordingFolder folder(1);
    folder.remove(u"color/0.png"_s);
    folder.write(u"color/0.jpeg"_s, RecordingFolder::color(0));
    const FrameSet set = frame(*play(folder), 0);
    QCOMPARE(set.colorWidth, RecordingFolder::colorWidth);
    QVERIFY(std::abs(set.bgrx[2] - 30) <= 3);
}

void RecordingTest::otherFilesDoNotMatter() {
    const RecordingFolder folder(2);
    folder.writeText(u"color/notes.txt"_s, "hello");
    folder.writeText(u"depth/.hidden"_s, "hello");
    folder.writeText(u"README"_s, "hello");
    QCOMPARE(frame(*play(folder), 1).depth.front(), 1001.0F);
}

void RecordingTest::thePicturesLieWhereTheyWereWhenThePlayingBegan() {
    const RecordingFolder folder(2);
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(folder.path()));
    const auto source = virtual_kinect::makeRecordingSource(".");
    QVERIFY(QDir::setCurrent(before));
    QCOMPARE(source->serialNumber(), std::string("recording-walk"));
    QCOMPARE(frame(*source, 1).depth.front(), 1001.0F);
}

void RecordingTest::aLongRecordingIsNotKeptInMemory() {
    constexpr int moments = 12;
    const RecordingFolder folder(moments);
    // 16 MB each when decoded; JPEG, which decodes quickly, and copies of one file.
    folder.write(u"color/0.jpg"_s, cv::Mat(2048, 2048, CV_8UC3, cv::Scalar(1, 2, 3)));
    for (int number = 0; number < moments; ++number) {
        folder.remove(u"color/%1.png"_s.arg(number));
        const QString copy = folder.file(u"color/%1.jpg"_s.arg(number));
        QVERIFY(number == 0 || QFile::copy(folder.file(u"color/0.jpg"_s), copy));
    }
    const auto source = play(folder);
    FrameSet set;
    for (std::uint64_t number = 0; number < moments; ++number)
        source->render(number, set);
    folder.remove(u"color"_s);
    int kept = 0;
    for (std::uint64_t number = 0; number < moments; ++number)
        try {
            source->render(number, set);
            ++kept;
        } catch (const std::exception&) {
        }
    QVERIFY2(kept > 0 && kept < moments, qPrintable(QString::number(kept)));
}

QTEST_GUILESS_MAIN(RecordingTest)
#include "recording_test.moc"
