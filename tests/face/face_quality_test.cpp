#include "face/face_quality.h"

#include <QTest>
#include <opencv2/imgproc.hpp>

Q_DECLARE_METATYPE(FaceQuality)

class FaceQualityTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void firstFailingTestWins_data();
    void firstFailingTestWins();
    void boundsAreInclusive();
    void theSharpnessAtTheBorderLooksAtTheFrame();
    void theSmallestSharpnessIs60_data();
    void theSmallestSharpnessIs60();
};

namespace {

/// Squares of 8 pixels that alternate between two levels.
cv::Mat squares(int width, int height, int low, int high, int side = 8) {
    cv::Mat image(height, width, CV_8U);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            image.at<uchar>(y, x) = static_cast<uchar>((x / side + y / side) % 2 ? high : low);
    }
    return image;
}

cv::Mat smoothRamp(int side) {
    cv::Mat image(side, side, CV_8U);
    for (int x = 0; x < side; ++x)
        image.col(x).setTo(60 + x);
    return image;
}

} // namespace

void FaceQualityTest::firstFailingTestWins_data() {
    QTest::addColumn<cv::Mat>("face");
    QTest::addColumn<FaceQuality>("verdict");
    QTest::newRow("good") << squares(80, 80, 90, 160) << FaceQuality::Accepted;
    QTest::newRow("79 wide") << squares(79, 80, 90, 160) << FaceQuality::TooSmall;
    QTest::newRow("79 high") << squares(80, 79, 90, 160) << FaceQuality::TooSmall;
    QTest::newRow("small and dark") << squares(20, 20, 0, 0) << FaceQuality::TooSmall;
    QTest::newRow("dark and flat") << squares(80, 80, 10, 20) << FaceQuality::TooDark;
    QTest::newRow("bright and flat") << squares(80, 80, 230, 240) << FaceQuality::TooBright;
    QTest::newRow("flat") << squares(80, 80, 100, 130) << FaceQuality::LowContrast;
    QTest::newRow("soft") << smoothRamp(100) << FaceQuality::TooBlurry;
}

void FaceQualityTest::firstFailingTestWins() {
    QFETCH(cv::Mat, face);
    QFETCH(FaceQuality, verdict);
    QCOMPARE(faceQuality(face, face::Options()), verdict);
}

void FaceQualityTest::boundsAreInclusive() {
    // Equal parts of both levels: mean and deviation are half their sum and half their difference.
    const auto verdict = [](int low, int high) {
        const cv::Mat face = squares(80, 80, low, high);
        return faceQuality(face, face::Options());
    };
    QCOMPARE(verdict(15, 55), FaceQuality::Accepted);      // Mean 35, deviation 20.
    QCOMPARE(verdict(14, 55), FaceQuality::TooDark);       // Mean 34.5.
    QCOMPARE(verdict(200, 240), FaceQuality::Accepted);    // Mean 220.
    QCOMPARE(verdict(200, 241), FaceQuality::TooBright);   // Mean 220.5.
    QCOMPARE(verdict(100, 139), FaceQuality::LowContrast); // Deviation 19.5.

    const cv::Mat face = squares(80, 80, 90, 160);
    cv::Mat edges;
    cv::Laplacian(face, edges, CV_64F);
    cv::Scalar mean;
    cv::Scalar deviation;
    cv::meanStdDev(edges, mean, deviation);
    face::Options options;
    options.minSharpness = deviation[0] * deviation[0];
    QCOMPARE(faceQuality(face, options), FaceQuality::Accepted);
    options.minSharpness = std::nextafter(options.minSharpness, 1e9);
    QCOMPARE(faceQuality(face, options), FaceQuality::TooBlurry);
}

/// At the frame's own border the picture is mirrored about its outermost pixels.
void FaceQualityTest::theSharpnessAtTheBorderLooksAtTheFrame() {
    cv::Mat ramp(3, 5, CV_8U);
    for (int x = 0; x < ramp.cols; ++x)
        ramp.col(x).setTo(10 * x);
    QVERIFY(faceSharpness(ramp(cv::Rect(1, 0, 3, 3))) < 1e-9);
    // Second differences of 20, 0 and -20 in each row.
    const cv::Mat alone = ramp(cv::Rect(1, 0, 3, 3)).clone();
    QVERIFY(std::abs(faceSharpness(alone) - 800.0 / 3.0) < 1e-9);
}

void FaceQualityTest::theSmallestSharpnessIs60_data() {
    QTest::addColumn<int>("sumOfSquares");
    QTest::addColumn<FaceQuality>("verdict");
    QTest::newRow("a little less than 60") << 4999 << FaceQuality::TooBlurry;
    QTest::newRow("a little more than 60") << 5001 << FaceQuality::Accepted;
}

/// 100 x 100 pixels of two flat halves, 50 levels apart: two columns where the Laplacian is 50, and
/// with them a variance of 50. A single pixel that is `a` levels brighter gives -4a there and a at
/// its four neighbours: 20 a^2 more in the sum of squares, and nothing in the mean. Of 10,000
/// pixels, single ones with sum(a^2) = 5000 make the variance 60.
void FaceQualityTest::theSmallestSharpnessIs60() {
    QFETCH(int, sumOfSquares);
    QFETCH(FaceQuality, verdict);
    cv::Mat face(100, 100, CV_8U, cv::Scalar(90));
    face.colRange(50, 100).setTo(140);
    int place = 0;
    for (int level = 20; level > 0; --level) {
        for (; sumOfSquares >= level * level; sumOfSquares -= level * level) {
            face.at<uchar>(5 + 4 * (place / 10), 5 + 4 * (place % 10)) += static_cast<uchar>(level);
            ++place;
        }
    }
    QVERIFY(std::abs(faceSharpness(face) - 60.0) < 0.01);
    QCOMPARE(faceQuality(face, face::Options()), verdict);
}

QTEST_APPLESS_MAIN(FaceQualityTest)
#include "face_quality_test.moc"
