#include "face/face_pass.h"

#include "face/owner_samples.h"
#include "scripted_detector.h"
#include "scripted_recognizer.h"

#include <QTest>
#include <algorithm>
#include <cfloat>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

const cv::Size frameSize(600, 500);
const cv::Rect faceBox(200, 100, 100, 100);

/// Squares of 8 pixels of two levels: bright, rich and sharp enough for recognition.
cv::Mat goodFrame(int low = 90, int high = 160) {
    cv::Mat frame(frameSize, CV_8U);
    for (int y = 0; y < frame.rows; ++y) {
        for (int x = 0; x < frame.cols; ++x)
            frame.at<uchar>(y, x) = static_cast<uchar>((x / 8 + y / 8) % 2 ? high : low);
    }
    return frame;
}

cv::Mat smoothFrame() {
    cv::Mat frame(frameSize, CV_8U);
    for (int x = 0; x < frame.cols; ++x)
        frame.col(x).setTo(60 + std::clamp(x - 175, 0, 150));
    return frame;
}

/// A pass whose detectors and recogniser follow a script. The frontal cascade finds `inFrame` in
/// the frame, which is searched at half its size, and `inCrop` in every crop of a body.
struct ScriptedPass {
    std::vector<cv::Rect> inFrame{faceBox};
    std::vector<cv::Rect> inCrop;
    cv::Mat frame = goodFrame();
    QList<QRect> bodies;
    Scripted frontal;
    cv::Ptr<ScriptedRecognizer> recognizer = cv::makePtr<ScriptedRecognizer>();
    std::stop_source stop;

    /// What the pass found; nothing for one that was stopped.
    std::optional<FacePass> runUntilStop() {
        frontal.seen->script = [this](const cv::Mat& image) {
            if (image.size() != cv::Size(frameSize.width / 2, frameSize.height / 2))
                return inCrop;
            std::vector<cv::Rect> halved;
            for (const cv::Rect& box : inFrame)
                halved.emplace_back(box.x / 2, box.y / 2, box.width / 2, box.height / 2);
            return halved;
        };
        FaceTools tools;
        tools.frontal = frontal.cascade;
        tools.recognizer = recognizer;
        return findFaces(frame, tools, face::Options(), bodies, stop.get_token());
    }
    FacePass run() { return runUntilStop().value(); }
};

int onlyPixel(const QImage& image) {
    const cv::Mat grey = grayFrame(image);
    return grey.at<uchar>(0, 0);
}

} // namespace

class FacePassTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void anAcceptedFaceIsRecognised();
    void aFaceThatTheGateRefusesIsNeverRecognised_data();
    void aFaceThatTheGateRefusesIsNeverRecognised();
    void theOwnersDistanceIsAtMost60_data();
    void theOwnersDistanceIsAtMost60();
    void hitsOfTheFrameAndOfBodiesAreMerged();
    void facesFoundOnlyInABodyStay();
    void bothCascadesAreUsedWhereThereAreTwo();
    void boxesAreClippedToTheFrame_data();
    void boxesAreClippedToTheFrame();
    void boxesOfAFrameThatCannotBeHalvedAreClipped();
    void aBoxOutsideTheFrameIsNoFace();
    void aStopEndsThePass_data();
    void aStopEndsThePass();
    void theGrayFrameWeighsRedGreenAndBlue_data();
    void theGrayFrameWeighsRedGreenAndBlue();
    void rowsMayBeLongerThanThePicture_data();
    void rowsMayBeLongerThanThePicture();
    void aNullImageGivesNoFrame();
    void theDefaultFilesAreTheSystemsAndTheUsers();
};

void FacePassTest::anAcceptedFaceIsRecognised() {
    ScriptedPass pass;
    pass.recognizer->distance = 41.5;
    const FacePass result = pass.run();
    QCOMPARE(result.faces.size(), 1U);
    QCOMPARE(result.faces[0].rect, faceBox);
    QCOMPARE(result.faces[0].detector, "frontal");
    QVERIFY(result.faces[0].owner);
    QCOMPARE(result.faces[0].distance, 41.5);
    QCOMPARE(result.bodyRegionFaces, 0);
    QCOMPARE(pass.recognizer->asked.size(), 1U);
    QCOMPARE(
        cv::norm(pass.recognizer->asked[0], recognizerInput(goodFrame()(faceBox)), cv::NORM_INF),
        0.0);
}

void FacePassTest::aFaceThatTheGateRefusesIsNeverRecognised_data() {
    QTest::addColumn<cv::Mat>("frame");
    QTest::addColumn<QSize>("size");
    QTest::newRow("too small") << goodFrame() << QSize(100, 78);
    QTest::newRow("too dark") << goodFrame(0, 60) << QSize(100, 100);
    QTest::newRow("too bright") << goodFrame(200, 250) << QSize(100, 100);
    QTest::newRow("low contrast") << goodFrame(100, 130) << QSize(100, 100);
    QTest::newRow("too blurry") << smoothFrame() << QSize(100, 100);
}

void FacePassTest::aFaceThatTheGateRefusesIsNeverRecognised() {
    QFETCH(cv::Mat, frame);
    QFETCH(QSize, size);
    ScriptedPass pass;
    pass.frame = frame;
    pass.inFrame = {cv::Rect(200, 100, size.width(), size.height())};
    const FacePass result = pass.run();
    QVERIFY(pass.recognizer->asked.empty());
    QCOMPARE(result.faces.size(), 1U);
    QVERIFY(!result.faces[0].owner);
    QCOMPARE(result.faces[0].distance, 0.0);
}

void FacePassTest::theOwnersDistanceIsAtMost60_data() {
    QTest::addColumn<int>("label");
    QTest::addColumn<double>("distance");
    QTest::addColumn<bool>("owner");
    QTest::newRow("0") << 1 << 0.0 << true;
    QTest::newRow("60") << 1 << 60.0 << true;
    QTest::newRow("a little more") << 1 << std::nextafter(60.0, 61.0) << false;
    QTest::newRow("60.5") << 1 << 60.5 << false;
    QTest::newRow("somebody else") << 2 << 10.0 << false;
    QTest::newRow("nobody") << -1 << DBL_MAX << false;
}

void FacePassTest::theOwnersDistanceIsAtMost60() {
    QFETCH(int, label);
    QFETCH(double, distance);
    QFETCH(bool, owner);
    ScriptedPass pass;
    pass.recognizer->label = label;
    pass.recognizer->distance = distance;
    const FacePass result = pass.run();
    QCOMPARE(result.faces.size(), 1U);
    QCOMPARE(result.faces[0].owner, owner);
    if (label > 0)
        QCOMPARE(result.faces[0].distance, distance);
}

/// The body's crop starts at (100, 50) and is doubled, so that the two hits in it lie at
/// (204, 104) 96 x 96, on the frame's face, and at (110, 60) 40 x 40.
void FacePassTest::hitsOfTheFrameAndOfBodiesAreMerged() {
    ScriptedPass pass;
    pass.bodies = {QRect(72, 50, 230, 320)};
    pass.inCrop = {cv::Rect(208, 108, 192, 192), cv::Rect(20, 20, 80, 80)};
    const FacePass result = pass.run();
    QCOMPARE(result.bodyRegionFaces, 2);
    QCOMPARE(result.faces.size(), 2U);
    QCOMPARE(result.faces[0].rect, faceBox);
    QCOMPARE(result.faces[0].detector, "frontal");
    QCOMPARE(result.faces[1].rect, cv::Rect(110, 60, 40, 40));
    QCOMPARE(result.faces[1].detector, "frontal+far_crop");
    QCOMPARE(pass.recognizer->asked.size(), 1U);
}

void FacePassTest::facesFoundOnlyInABodyStay() {
    ScriptedPass pass;
    pass.inFrame = {};
    pass.bodies = {QRect(72, 50, 230, 320)};
    pass.inCrop = {cv::Rect(100, 100, 170, 170)};
    const FacePass result = pass.run();
    QCOMPARE(result.bodyRegionFaces, 1);
    QCOMPARE(result.faces.size(), 1U);
    QCOMPARE(result.faces[0].rect, cv::Rect(150, 100, 85, 85));
    QCOMPARE(result.faces[0].detector, "frontal+far_crop");
    QVERIFY(result.faces[0].owner); // The gate's 80 pixels hold for these faces too.
}

void FacePassTest::bothCascadesAreUsedWhereThereAreTwo() {
    Scripted frontal;
    Scripted profile;
    FaceTools tools;
    tools.frontal = frontal.cascade;
    cv::Mat frame = goodFrame();
    findFaces(frame, tools, face::Options(), {QRect(0, 0, 200, 300)});
    QCOMPARE(frontal.seen->images.size(), 2U);
    tools.profile = profile.cascade;
    findFaces(frame, tools, face::Options(), {QRect(0, 0, 200, 300)});
    QCOMPARE(frontal.seen->images.size(), 4U);
    QCOMPARE(profile.seen->images.size(), 4U);
}

void FacePassTest::boxesAreClippedToTheFrame_data() {
    QTest::addColumn<QRect>("hit");
    QTest::addColumn<QRect>("face");
    QTest::newRow("inside") << QRect(0, 0, 600, 500) << QRect(0, 0, 600, 500);
    QTest::newRow("left") << QRect(-20, 100, 120, 120) << QRect(0, 100, 100, 120);
    QTest::newRow("above") << QRect(100, -20, 120, 120) << QRect(100, 0, 120, 100);
    QTest::newRow("right") << QRect(500, 100, 120, 120) << QRect(500, 100, 100, 120);
    QTest::newRow("below") << QRect(100, 400, 120, 120) << QRect(100, 400, 120, 100);
    QTest::newRow("all around") << QRect(-20, -20, 700, 700) << QRect(0, 0, 600, 500);
    QTest::newRow("two pixels") << QRect(598, 100, 120, 120) << QRect(598, 100, 2, 120);
}

void FacePassTest::boxesAreClippedToTheFrame() {
    QFETCH(QRect, hit);
    QFETCH(QRect, face);
    ScriptedPass pass;
    pass.inFrame = {cv::Rect(hit.x(), hit.y(), hit.width(), hit.height())};
    const FacePass result = pass.run();
    QCOMPARE(result.faces.size(), 1U);
    QCOMPARE(result.faces[0].rect, cv::Rect(face.x(), face.y(), face.width(), face.height()));
    // The clipped box is what the gate judges.
    QCOMPARE(pass.recognizer->asked.size(), face.width() < 80 ? 0U : 1U);
}

/// 603 x 503 pixels are searched as 302 x 252, and doubled again that is a pixel too much: to the
/// right and below, and in the mirror image to the left.
void FacePassTest::boxesOfAFrameThatCannotBeHalvedAreClipped() {
    Scripted frontal(cv::Rect(200, 150, 102, 102));
    Scripted profile(cv::Rect(202, 0, 100, 100));
    FaceTools tools;
    tools.frontal = frontal.cascade;
    tools.profile = profile.cascade;
    tools.recognizer = cv::makePtr<ScriptedRecognizer>();
    cv::Mat frame(503, 603, CV_8U, cv::Scalar(90));
    const FacePass pass = findFaces(frame, tools, face::Options(), {}).value();
    QCOMPARE(frontal.seen->images.at(0).size(), cv::Size(302, 252));
    QCOMPARE(pass.faces.size(), 3U);
    QCOMPARE(pass.faces[0].rect, cv::Rect(400, 300, 203, 203));
    QCOMPARE(pass.faces[1].rect, cv::Rect(0, 0, 199, 200));
    QCOMPARE(pass.faces[2].rect, cv::Rect(404, 0, 199, 200));
}

void FacePassTest::aBoxOutsideTheFrameIsNoFace() {
    ScriptedPass pass;
    pass.inFrame = {cv::Rect(600, 100, 120, 120), cv::Rect(-120, 100, 120, 120),
                    cv::Rect(100, 500, 120, 120), faceBox};
    const FacePass result = pass.run();
    QCOMPARE(result.faces.size(), 1U);
    QCOMPARE(result.faces[0].rect, faceBox);
}

void FacePassTest::aStopEndsThePass_data() {
    QTest::addColumn<int>("stopAtSearch");
    QTest::addColumn<int>("searches");
    QTest::newRow("before") << 0 << 0;
    QTest::newRow("while the frame is searched") << 1 << 1;
    QTest::newRow("while a body is searched") << 2 << 2;
}

void FacePassTest::aStopEndsThePass() {
    QFETCH(int, stopAtSearch);
    QFETCH(int, searches);
    ScriptedPass pass;
    pass.bodies = {QRect(0, 0, 200, 300), QRect(300, 0, 200, 300)};
    if (stopAtSearch == 0)
        pass.stop.request_stop();
    pass.frontal.seen->whenAsked = [&pass, stopAtSearch] {
        if (static_cast<int>(pass.frontal.seen->images.size()) == stopAtSearch)
            pass.stop.request_stop();
    };
    QVERIFY(!pass.runUntilStop());
    QCOMPARE(static_cast<int>(pass.frontal.seen->images.size()), searches);
    QVERIFY(pass.recognizer->asked.empty());
}

void FacePassTest::theGrayFrameWeighsRedGreenAndBlue_data() {
    QTest::addColumn<QColor>("color");
    QTest::addColumn<int>("gray");
    QTest::newRow("red") << QColor(255, 0, 0) << 76;
    QTest::newRow("green") << QColor(0, 255, 0) << 150;
    QTest::newRow("blue") << QColor(0, 0, 255) << 29;
    QTest::newRow("white") << QColor(255, 255, 255) << 255;
}

void FacePassTest::theGrayFrameWeighsRedGreenAndBlue() {
    QFETCH(QColor, color);
    QFETCH(int, gray);
    for (const QImage::Format format :
         {QImage::Format_RGB888, QImage::Format_BGR888, QImage::Format_RGB32,
          QImage::Format_ARGB32_Premultiplied, QImage::Format_RGBA8888}) {
        QImage image(1, 1, format);
        image.fill(color);
        QCOMPARE(onlyPixel(image), gray);
    }
}

void FacePassTest::rowsMayBeLongerThanThePicture_data() {
    QTest::addColumn<QImage::Format>("format");
    QTest::addColumn<int>("bytesPerPixel");
    QTest::newRow("RGB888") << QImage::Format_RGB888 << 3;
    QTest::newRow("RGB32") << QImage::Format_RGB32 << 4;
    QTest::newRow("gray") << QImage::Format_Grayscale8 << 1;
}

/// The picture is the left part of a wider one; what lies to its right is bright.
void FacePassTest::rowsMayBeLongerThanThePicture() {
    QFETCH(QImage::Format, format);
    QFETCH(int, bytesPerPixel);
    constexpr int width = 7;
    constexpr int height = 5;
    constexpr int bytesPerLine = 64;
    std::vector<uchar> bytes(bytesPerLine * height, 255);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width * bytesPerPixel; ++x)
            bytes[static_cast<std::size_t>(y * bytesPerLine + x)] = static_cast<uchar>(10 * y + 5);
    }
    const QImage image(bytes.data(), width, height, bytesPerLine, format);
    const cv::Mat gray = grayFrame(image);
    QCOMPARE(gray.size(), cv::Size(width, height));
    QCOMPARE(gray.type(), CV_8UC1);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            QCOMPARE(int(gray.at<uchar>(y, x)), 10 * y + 5);
    }
}

void FacePassTest::aNullImageGivesNoFrame() {
    QVERIFY(grayFrame(QImage()).empty());
}

void FacePassTest::theDefaultFilesAreTheSystemsAndTheUsers() {
    const face::Options options;
    QCOMPARE(options.samplesDir, "faces/tavin");
    QCOMPARE(options.modelPath, "models/face_recognizer.yml");
    QCOMPARE(options.frontalCascadePath,
             "/usr/share/opencv4/haarcascades/haarcascade_frontalface_default.xml");
    QCOMPARE(options.profileCascadePath,
             "/usr/share/opencv4/haarcascades/haarcascade_profileface.xml");
}

QTEST_APPLESS_MAIN(FacePassTest)
#include "face_pass_test.moc"
