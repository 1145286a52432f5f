#include "enroll/frame_grade.h"
#include "face/face_quality.h"

#include <QTest>
#include <functional>
#include <opencv2/imgproc.hpp>

using namespace enroll;

namespace {

/// A face that meets every wish.
FaceMeasures goodFace() {
    return {120, 120.0, 50.0, 400.0, 0.0, 0.1};
}

using Change = std::function<void(FaceMeasures&)>;

cv::Mat squares(int side, int low, int high) {
    cv::Mat image(side, side, CV_8U);
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x)
            image.at<uchar>(y, x) = static_cast<uchar>((x / 8 + y / 8) % 2 ? high : low);
    return image;
}

} // namespace

Q_DECLARE_METATYPE(Change)

class FrameGradeTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aSampleMustMeetEveryLimit_data();
    void aSampleMustMeetEveryLimit();
    void theLimitsAreTheRecognizersOwn();
    void wishesAreNarrowerThanTheMusts_data();
    void wishesAreNarrowerThanTheMusts();
    void whatRecognitionAcceptsHasNoGateFlaw_data();
    void whatRecognitionAcceptsHasNoGateFlaw();
    void measuresAreThoseOfTheBox();
    void aBoxIsSteadyAtItsThirdFrame();
    void aCopyIsNearerThanAPictureMovedByTwoPixels();
};

void FrameGradeTest::aSampleMustMeetEveryLimit_data() {
    QTest::addColumn<Change>("change");
    QTest::addColumn<int>("flaw");
    const auto row = [](const char* name, Flaw flaw, const Change& change) {
        QTest::newRow(name) << change << int(flaw);
    };
    row("good", Flaw::None, [](FaceMeasures&) {});
    row("side 80", Flaw::None, [](FaceMeasures& m) { m.sidePx = 80; });
    row("side 79", Flaw::TooSmall, [](FaceMeasures& m) { m.sidePx = 79; });
    row("mean 35", Flaw::None, [](FaceMeasures& m) { m.mean = 35; });
    row("mean 34.9", Flaw::TooDark, [](FaceMeasures& m) { m.mean = 34.9; });
    row("mean 220", Flaw::None, [](FaceMeasures& m) { m.mean = 220; });
    row("mean 220.1", Flaw::TooBright, [](FaceMeasures& m) { m.mean = 220.1; });
    row("deviation 20", Flaw::None, [](FaceMeasures& m) { m.deviation = 20; });
    row("deviation 19.9", Flaw::LowContrast, [](FaceMeasures& m) { m.deviation = 19.9; });
    row("sharpness 60", Flaw::None, [](FaceMeasures& m) { m.sharpness = 60; });
    row("sharpness 59.9", Flaw::TooBlurry, [](FaceMeasures& m) { m.sharpness = 59.9; });
    row("a quarter clipped", Flaw::None, [](FaceMeasures& m) { m.clippedShare = 0.25; });
    row("more clipped", Flaw::Clipped, [](FaceMeasures& m) { m.clippedShare = 0.251; });
    row("uneven light is allowed", Flaw::None, [](FaceMeasures& m) { m.halvesDiffer = 0.9; });
    row("small and dark", Flaw::TooSmall, [](FaceMeasures& m) {
        m.sidePx = 20;
        m.mean = 1;
    });
}

void FrameGradeTest::aSampleMustMeetEveryLimit() {
    QFETCH(Change, change);
    QFETCH(int, flaw);
    FaceMeasures measures = goodFace();
    change(measures);
    QCOMPARE(int(flawOf(measures, face::Options())), flaw);
}

void FrameGradeTest::theLimitsAreTheRecognizersOwn() {
    const auto flawWith = [](double face::Options::*limit, double value) {
        face::Options options;
        options.*limit = value;
        return flawOf(goodFace(), options);
    };
    face::Options strict;
    strict.minQualityFaceSize = 121;
    QCOMPARE(flawOf(goodFace(), strict), Flaw::TooSmall);
    QCOMPARE(flawWith(&face::Options::minBrightness, 121.0), Flaw::TooDark);
    QCOMPARE(flawWith(&face::Options::maxBrightness, 119.0), Flaw::TooBright);
    QCOMPARE(flawWith(&face::Options::minContrast, 51.0), Flaw::LowContrast);
    QCOMPARE(flawWith(&face::Options::minSharpness, 401.0), Flaw::TooBlurry);
}

void FrameGradeTest::wishesAreNarrowerThanTheMusts_data() {
    QTest::addColumn<Change>("change");
    QTest::addColumn<bool>("wished");
    const auto row = [](const char* name, bool wished, const Change& change) {
        QTest::newRow(name) << change << wished;
    };
    row("good", true, [](FaceMeasures&) {});
    row("side 88", true, [](FaceMeasures& m) { m.sidePx = 88; });
    row("side 87", false, [](FaceMeasures& m) { m.sidePx = 87; });
    row("mean 60", true, [](FaceMeasures& m) { m.mean = 60; });
    row("mean 59.9", false, [](FaceMeasures& m) { m.mean = 59.9; });
    row("mean 190", true, [](FaceMeasures& m) { m.mean = 190; });
    row("mean 190.1", false, [](FaceMeasures& m) { m.mean = 190.1; });
    row("deviation 35", true, [](FaceMeasures& m) { m.deviation = 35; });
    row("deviation 34.9", false, [](FaceMeasures& m) { m.deviation = 34.9; });
    row("sharpness 120", true, [](FaceMeasures& m) { m.sharpness = 120; });
    row("sharpness 119.9", false, [](FaceMeasures& m) { m.sharpness = 119.9; });
    row("5 % clipped", true, [](FaceMeasures& m) { m.clippedShare = 0.05; });
    row("6 % clipped", false, [](FaceMeasures& m) { m.clippedShare = 0.06; });
    row("halves differ by 35 %", true, [](FaceMeasures& m) { m.halvesDiffer = 0.35; });
    row("halves differ by 36 %", false, [](FaceMeasures& m) { m.halvesDiffer = 0.36; });
}

void FrameGradeTest::wishesAreNarrowerThanTheMusts() {
    QFETCH(Change, change);
    QFETCH(bool, wished);
    FaceMeasures measures = goodFace();
    change(measures);
    QCOMPARE(meetsWishes(measures), wished);
    QCOMPARE(flawOf(measures, face::Options()), Flaw::None);
}

void FrameGradeTest::whatRecognitionAcceptsHasNoGateFlaw_data() {
    QTest::addColumn<cv::Mat>("face");
    QTest::addColumn<int>("flaw");
    QTest::newRow("good") << squares(80, 90, 160) << int(Flaw::None);
    QTest::newRow("small") << squares(79, 90, 160) << int(Flaw::TooSmall);
    QTest::newRow("dark") << squares(80, 10, 20) << int(Flaw::TooDark);
    QTest::newRow("bright") << squares(80, 230, 240) << int(Flaw::TooBright);
    QTest::newRow("flat") << squares(80, 100, 130) << int(Flaw::LowContrast);
    QTest::newRow("black and white") << squares(80, 0, 255) << int(Flaw::None);
    cv::Mat ramp(100, 100, CV_8U);
    for (int x = 0; x < ramp.cols; ++x)
        ramp.col(x).setTo(60 + x);
    QTest::newRow("soft") << ramp << int(Flaw::TooBlurry);
}

void FrameGradeTest::whatRecognitionAcceptsHasNoGateFlaw() {
    QFETCH(cv::Mat, face);
    QFETCH(int, flaw);
    const face::Options options;
    QCOMPARE(int(gateFlaw(measureFace(face), options)), flaw);
    QCOMPARE(faceQuality(face, options) == FaceQuality::Accepted, flaw == int(Flaw::None));
}

void FrameGradeTest::measuresAreThoseOfTheBox() {
    cv::Mat face(100, 90, CV_8U, cv::Scalar(100));
    face.colRange(45, 90).setTo(140);
    face.rowRange(0, 10).setTo(5);    // clipped
    face.rowRange(10, 20).setTo(250); // clipped
    face.rowRange(20, 30).setTo(6);
    face.rowRange(30, 40).setTo(249);
    const FaceMeasures measures = measureFace(face);
    QCOMPARE(measures.sidePx, 90);
    QCOMPARE(measures.clippedShare, 0.2);
    QCOMPARE(measures.mean, 0.1 * (5 + 250 + 6 + 249) + 0.6 * 120);
    QCOMPARE(measures.halvesDiffer, 0.6 * 40 / measures.mean);
    QCOMPARE(measures.sharpness, faceSharpness(face));
}

void FrameGradeTest::aBoxIsSteadyAtItsThirdFrame() {
    const cv::Rect box(100, 100, 100, 100);
    Steadiness steadiness;
    for (const bool steady : {false, false, true, true}) {
        steadiness = nextSteadiness(steadiness, box);
        QCOMPARE(isSteady(steadiness), steady);
    }
    // 92 of 108 columns in common are 0.852, 91 of 109 are 0.835.
    steadiness = nextSteadiness(steadiness, box + cv::Point(8, 0));
    QVERIFY(isSteady(steadiness));
    steadiness = nextSteadiness(steadiness, box + cv::Point(17, 0));
    QVERIFY(!isSteady(steadiness));
    QCOMPARE(steadiness.frames, 1);
    QCOMPARE(nextSteadiness(steadiness, {}).frames, 0);
}

void FrameGradeTest::aCopyIsNearerThanAPictureMovedByTwoPixels() {
    QVERIFY(isCopy(0.0));
    QVERIFY(isCopy(14.9));
    QVERIFY(!isCopy(15.0));
    QVERIFY(!isCopy(16.0));
}

QTEST_APPLESS_MAIN(FrameGradeTest)
#include "frame_grade_test.moc"
