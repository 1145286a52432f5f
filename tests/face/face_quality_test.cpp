#include "face/face_quality.h"

#include <QTest>
#include <opencv2/imgproc.hpp>

using namespace Qt::StringLiterals;

class FaceQualityTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void firstFailingTestWins_data();
    void firstFailingTestWins();
    void boundsAreInclusive();
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
    QTest::addColumn<QString>("word");
    QTest::newRow("good") << squares(80, 80, 90, 160) << u"accepted"_s;
    QTest::newRow("79 wide") << squares(79, 80, 90, 160) << u"too_small"_s;
    QTest::newRow("79 high") << squares(80, 79, 90, 160) << u"too_small"_s;
    QTest::newRow("small and dark") << squares(20, 20, 0, 0) << u"too_small"_s;
    QTest::newRow("dark and flat") << squares(80, 80, 10, 20) << u"too_dark"_s;
    QTest::newRow("bright and flat") << squares(80, 80, 230, 240) << u"too_bright"_s;
    QTest::newRow("flat") << squares(80, 80, 100, 130) << u"low_contrast"_s;
    QTest::newRow("soft") << smoothRamp(100) << u"too_blurry"_s;
}

void FaceQualityTest::firstFailingTestWins() {
    QFETCH(cv::Mat, face);
    QFETCH(QString, word);
    QCOMPARE(QString::fromLatin1(faceQuality(face, Options())), word);
}

void FaceQualityTest::boundsAreInclusive() {
    // Equal parts of both levels: mean and deviation are half their sum and half their difference.
    const auto word = [](int low, int high) {
        const cv::Mat face = squares(80, 80, low, high);
        return QString::fromLatin1(faceQuality(face, Options()));
    };
    QCOMPARE(word(15, 55), u"accepted"_s);       // Mean 35, deviation 20.
    QCOMPARE(word(14, 55), u"too_dark"_s);       // Mean 34.5.
    QCOMPARE(word(200, 240), u"accepted"_s);     // Mean 220.
    QCOMPARE(word(200, 241), u"too_bright"_s);   // Mean 220.5.
    QCOMPARE(word(100, 139), u"low_contrast"_s); // Deviation 19.5.

    const cv::Mat face = squares(80, 80, 90, 160);
    cv::Mat edges;
    cv::Laplacian(face, edges, CV_64F);
    cv::Scalar mean;
    cv::Scalar deviation;
    cv::meanStdDev(edges, mean, deviation);
    Options options;
    options.minSharpness = deviation[0] * deviation[0];
    QCOMPARE(QString::fromLatin1(faceQuality(face, options)), u"accepted"_s);
    options.minSharpness = std::nextafter(options.minSharpness, 1e9);
    QCOMPARE(QString::fromLatin1(faceQuality(face, options)), u"too_blurry"_s);
}

void FaceQualityTest::theSmallestSharpnessIs60_data() {
    QTest::addColumn<int>("sumOfSquares");
    QTest::addColumn<QString>("word");
    QTest::newRow("a little less than 60") << 4999 << u"too_blurry"_s;
    QTest::newRow("a little more than 60") << 5001 << u"accepted"_s;
}

/// 100 x 100 pixels of two flat halves, 50 levels apart: two columns where the Laplacian is 50, and
/// with them a variance of 50. A single pixel that is `a` levels brighter gives -4a there and a at
/// its four neighbours: 20 a^2 more in the sum of squares, and nothing in the mean. Of 10,000
/// pixels, single ones with sum(a^2) = 5000 make the variance 60.
void FaceQualityTest::theSmallestSharpnessIs60() {
    QFETCH(int, sumOfSquares);
    QFETCH(QString, word);
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
    QCOMPARE(QString::fromLatin1(faceQuality(face, Options())), word);
}

QTEST_APPLESS_MAIN(FaceQualityTest)
#include "face_quality_test.moc"
