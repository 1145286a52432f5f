#include "frame_source.h"
#include "record/frame_encoding.h"
#include "record/test_frames.h"

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <QTest>

#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;
using record::Bytes;
using record::FrameEncoder;

class FrameEncodingTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void depthAndInfraredAreRoundedToWholeUnits();
    void valuesThatAreNoUnitsBecomeTheNearest_data();
    void valuesThatAreNoUnitsBecomeTheNearest();
    void jpegKeepsARoomAt38Decibels();
    void pngKeepsEveryBit();
    void rgbxIsRecordedWithItsColours_data();
    void rgbxIsRecordedWithItsColours();

private:
    virtual_kinect::FrameSet room;
};

namespace {

cv::Mat decode(const Bytes& bytes) {
    return cv::imdecode(bytes, cv::IMREAD_UNCHANGED);
}

/// The room's colour as BGR.
cv::Mat colorOf(virtual_kinect::FrameSet& room) {
    cv::Mat color;
    cv::cvtColor(cv::Mat(room.colorHeight, room.colorWidth, CV_8UC4, room.bgrx.data()), color,
                 cv::COLOR_BGRA2BGR);
    return color;
}

} // namespace

void FrameEncodingTest::initTestCase() {
    virtual_kinect::makeRoomSource()->render(300, room); // the owner stands in the middle
}

void FrameEncodingTest::depthAndInfraredAreRoundedToWholeUnits() {
    FrameEncoder encoder;
    for (const std::vector<float>& values : {room.depth, room.infrared}) {
        const cv::Mat stored =
            decode(encoder.wholeUnits(pixelsOf(values, room.depthWidth, room.depthHeight)));
        QCOMPARE(stored.type(), CV_16UC1);
        QCOMPARE(stored.total(), values.size());
        float largest = 0;
        for (std::size_t at = 0; at < values.size(); ++at) {
            const float back = stored.ptr<std::uint16_t>()[at];
            largest = std::max(largest, std::abs(back - values[at]));
        }
        QVERIFY2(largest <= 0.5F, qPrintable(u"off by %1"_s.arg(largest)));
        QVERIFY(largest > 0.1F); // the room's values have fractions
    }
}

void FrameEncodingTest::valuesThatAreNoUnitsBecomeTheNearest_data() {
    QTest::addColumn<float>("value");
    QTest::addColumn<int>("stored");
    QTest::newRow("negative") << -3.0F << 0;
    QTest::newRow("not a number") << std::numeric_limits<float>::quiet_NaN() << 0;
    QTest::newRow("largest") << 65535.0F << 65535;
    QTest::newRow("too large") << 70000.0F << 65535;
    QTest::newRow("half") << 1499.75F << 1500;
}

void FrameEncodingTest::valuesThatAreNoUnitsBecomeTheNearest() {
    QFETCH(float, value);
    QFETCH(int, stored);
    FrameEncoder encoder;
    const cv::Mat picture =
        decode(encoder.wholeUnits(pixelsOf(std::vector<float>(12, value), 4, 3)));
    QCOMPARE(int{picture.at<std::uint16_t>(0, 0)}, stored);
    QCOMPARE(int{picture.at<std::uint16_t>(2, 3)}, stored);
}

void FrameEncodingTest::jpegKeepsARoomAt38Decibels() {
    FrameEncoder encoder;
    const Bytes& bytes =
        encoder.jpeg(pixelsOf(room.bgrx, room.colorWidth, room.colorHeight), false);
    const double decibels = cv::PSNR(decode(bytes), colorOf(room));
    QVERIFY2(decibels >= 38, qPrintable(u"%1 dB"_s.arg(decibels)));
    qInfo() << "JPEG:" << decibels << "dB," << bytes.size() << "bytes";
}

void FrameEncodingTest::pngKeepsEveryBit() {
    FrameEncoder encoder;
    const Bytes& bytes = encoder.png(pixelsOf(room.bgrx, room.colorWidth, room.colorHeight), false);
    QCOMPARE(cv::norm(decode(bytes), colorOf(room), cv::NORM_INF), 0.0);
}

void FrameEncodingTest::rgbxIsRecordedWithItsColours_data() {
    QTest::addColumn<bool>("lossless");
    QTest::newRow("JPEG") << false;
    QTest::newRow("PNG") << true;
}

void FrameEncodingTest::rgbxIsRecordedWithItsColours() {
    QFETCH(bool, lossless);
    std::vector<unsigned char> pixels;
    for (int pixel = 0; pixel < 16 * 16; ++pixel)
        for (const int value : {200, 100, 20, 0}) // red, green, blue
            pixels.push_back(static_cast<unsigned char>(value));
    FrameEncoder encoder;
    const auto frame = pixelsOf(pixels, 16, 16);
    const cv::Mat picture = decode(lossless ? encoder.png(frame, true) : encoder.jpeg(frame, true));
    const auto bgr = picture.at<cv::Vec3b>(7, 7);
    QVERIFY(std::abs(bgr[0] - 20) <= 2 && std::abs(bgr[1] - 100) <= 2 &&
            std::abs(bgr[2] - 200) <= 2);
}

QTEST_APPLESS_MAIN(FrameEncodingTest)
#include "frame_encoding_test.moc"
