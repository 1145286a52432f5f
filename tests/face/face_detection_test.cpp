#include "face/face_detection.h"
#include "scripted_detector.h"
#include "support/shared_pictures.h"
#include "support/temporary_place.h"
#include "synthetic_face.h"

#include <QFile>
#include <QTest>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

using namespace Qt::StringLiterals;

namespace {

void write(const QString& path, const QByteArray& content) {
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
}

/// The detectors of one image one after the other, each making its own pictures.
std::vector<FaceDetection> detectEachOnItsOwn(cv::CascadeClassifier& frontal,
                                              cv::CascadeClassifier& profile, cv::Mat grey,
                                              const face::Options& options) {
    std::vector<FaceDetection> found;
    for (const cv::Rect& hit : detectFaces(frontal, grey, options))
        found.push_back({hit, "frontal"});
    for (const cv::Rect& hit : detectFaces(profile, grey, options))
        found.push_back({hit, "profile_left"});
    cv::Mat mirror;
    cv::flip(grey, mirror, 1);
    for (cv::Rect hit : detectFaces(profile, mirror, options)) {
        hit.x = grey.cols - hit.x - hit.width;
        found.push_back({hit, "profile_right"});
    }
    return dedupeDetections(found);
}

QStringList texts(const std::vector<FaceDetection>& detections) {
    QStringList list;
    for (const FaceDetection& found : detections) {
        list.append(u"%1 %2,%3 %4x%5"_s.arg(QString::fromStdString(found.detector))
                        .arg(found.rect.x)
                        .arg(found.rect.y)
                        .arg(found.rect.width)
                        .arg(found.rect.height));
    }
    return list;
}

} // namespace

class FaceDetectionTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void frontalModeNeverAsksTheProfileCascade();
    void profileRightModeReturnsOnlyMirroredHits();
    void aRightProfileHitIsMirroredBack();
    void withoutAProfileCascadeAllDetectorsMeanFrontal();
    void anUnknownModeFindsNothing();
    void theFrameIsHalvedAndTheSmallestFaceWithIt();
    void theSearchIsAskedWithTheOptions();
    void theShrunkImageIsMadeOfAreaMeansAndEqualised();
    void hitsAreMappedBackByTruncation();
    void anUnshrunkImageIsEqualisedInPlace();
    void sharingPicturesChangesNothing_data();
    void sharingPicturesChangesNothing();
    void picturesTooSmallToShrinkHoldNoFace_data();
    void picturesTooSmallToShrinkHoldNoFace();
    void aStopEndsTheSearchBetweenDetectors();
    void priorities_data();
    void priorities();
    void overlapOfBoxes();
    void equalBoxesMergeIntoTheFrontalOneFrom35Percent();
    void largerBoxesWinAndDetectorsDecideBetweenEqualOnes();
    void ofAlmostEqualBoxesTheLargerOneStays();
    void ofEqualBoxesAndDetectorsTheUpperLeftStays();
    void keptBoxesStayApart();
    void bodyRegionsAreClippedAndCropped_data();
    void bodyRegionsAreClippedAndCropped();
    void bodyRegionHitsComeBackInFramePixels();
    void bodyRegionHitsAreTruncatedAndMerged();
    void bodyRegionsAreEnlargedByCubicInterpolation();
    void bodyRegionsLeaveTheFrameAlone();
    void aFaceTooSmallForTheFrameIsFoundInItsBodyRegion();
    void onlyAWholeCascadeFileLoads();
    void theRealPortraitHasOneFrontalFace();

private:
    // Loaded once: each load compares our search with the library's.
    cv::CascadeClassifier realFrontal;
    cv::CascadeClassifier realProfile;
};

void FaceDetectionTest::initTestCase() {
    QVERIFY(loadCascade(realFrontal, face::Options().frontalCascadePath));
    QVERIFY(loadCascade(realProfile, face::Options().profileCascadePath));
}

void FaceDetectionTest::frontalModeNeverAsksTheProfileCascade() {
    Scripted frontal(cv::Rect(1, 2, 20, 20));
    Scripted profile(cv::Rect(50, 2, 20, 20));
    face::Options options;
    options.detector = face::DetectorMode::Frontal;
    cv::Mat grey(200, 200, CV_8U, cv::Scalar(90));
    QCOMPARE(texts(detectFacesMulti(frontal.cascade, &profile.cascade, grey, options)),
             QStringList{u"frontal 2,4 40x40"_s});
    QVERIFY(profile.seen->images.empty());
}

void FaceDetectionTest::profileRightModeReturnsOnlyMirroredHits() {
    Scripted frontal(cv::Rect(1, 2, 20, 20));
    Scripted profile(cv::Rect(10, 2, 20, 20));
    face::Options options;
    options.detector = face::DetectorMode::ProfileRight;
    cv::Mat grey(200, 200, CV_8U, cv::Scalar(90));
    QCOMPARE(texts(detectFacesMulti(frontal.cascade, &profile.cascade, grey, options)),
             QStringList{u"profile_right 140,4 40x40"_s});
    QVERIFY(frontal.seen->images.empty());
    QCOMPARE(profile.seen->images.size(), 1U);
}

void FaceDetectionTest::aRightProfileHitIsMirroredBack() {
    Scripted frontal;
    Scripted profile(cv::Rect(0, 10, 50, 50));
    face::Options options;
    options.detector = face::DetectorMode::ProfileRight;
    cv::Mat grey(540, 960, CV_8U, cv::Scalar(90));
    const auto found = detectFacesMulti(frontal.cascade, &profile.cascade, grey, options);
    QCOMPARE(found.size(), 1U);
    QCOMPARE(found[0].rect, cv::Rect(860, 20, 100, 100));
}

void FaceDetectionTest::withoutAProfileCascadeAllDetectorsMeanFrontal() {
    Scripted frontal(cv::Rect(1, 2, 20, 20));
    cv::Mat grey(200, 200, CV_8U, cv::Scalar(90));
    QCOMPARE(texts(detectFacesMulti(frontal.cascade, nullptr, grey, face::Options())),
             QStringList{u"frontal 2,4 40x40"_s});
}

void FaceDetectionTest::anUnknownModeFindsNothing() {
    for (const int mode : {-1, 4, 99}) {
        Scripted frontal(cv::Rect(1, 2, 20, 20));
        Scripted profile(cv::Rect(1, 2, 20, 20));
        face::Options options;
        options.detector = static_cast<face::DetectorMode>(mode);
        cv::Mat grey(200, 200, CV_8U, cv::Scalar(90));
        QVERIFY(detectFacesMulti(frontal.cascade, &profile.cascade, grey, options).empty());
        QVERIFY(frontal.seen->images.empty() && profile.seen->images.empty());
    }
}

void FaceDetectionTest::theFrameIsHalvedAndTheSmallestFaceWithIt() {
    Scripted frontal;
    cv::Mat grey(1080, 1920, CV_8U, cv::Scalar(90));
    detectFaces(frontal.cascade, grey, face::Options());
    QCOMPARE(frontal.seen->images.at(0).size(), cv::Size(960, 540));
    QCOMPARE(frontal.seen->minSizes.at(0), cv::Size(15, 15));
    face::Options tiny;
    tiny.minFaceSize = 1;
    detectFaces(frontal.cascade, grey, tiny);
    QCOMPARE(frontal.seen->minSizes.at(1), cv::Size(1, 1));
}

void FaceDetectionTest::theSearchIsAskedWithTheOptions() {
    Scripted frontal;
    cv::Mat grey(200, 200, CV_8U, cv::Scalar(90));
    face::Options options;
    detectFaces(frontal.cascade, grey, options);
    QCOMPARE(frontal.seen->scaleFactors, std::vector<double>{1.1});
    QCOMPARE(frontal.seen->minNeighbors, std::vector<int>{4});
    QCOMPARE(frontal.seen->flags, std::vector<int>{0});
    QCOMPARE(frontal.seen->maxSizes, std::vector<cv::Size>{cv::Size()});
    options.scaleFactor = 1.3;
    options.minNeighbors = 7;
    detectFaces(frontal.cascade, grey, options);
    QCOMPARE(frontal.seen->scaleFactors.at(1), 1.3);
    QCOMPARE(frontal.seen->minNeighbors.at(1), 7);
}

void FaceDetectionTest::theShrunkImageIsMadeOfAreaMeansAndEqualised() {
    cv::Mat grey(241, 322, CV_8U);
    cv::RNG(3).fill(grey, cv::RNG::NORMAL, 120, 40);
    const cv::Mat before = grey.clone();
    for (const double scale : {0.5, 0.4, 0.99}) {
        Scripted frontal;
        face::Options options;
        options.detectScale = scale;
        detectFaces(frontal.cascade, grey, options);
        cv::Mat expected;
        cv::resize(before, expected, cv::Size(), scale, scale, cv::INTER_AREA);
        cv::equalizeHist(expected, expected);
        QCOMPARE(cv::norm(frontal.seen->images.at(0), expected, cv::NORM_INF), 0.0);
    }
    QCOMPARE(cv::norm(grey, before, cv::NORM_INF), 0.0);
}

void FaceDetectionTest::hitsAreMappedBackByTruncation() {
    Scripted frontal(cv::Rect(1, 2, 5, 7));
    face::Options options;
    options.detectScale = 0.7;
    cv::Mat grey(200, 200, CV_8U, cv::Scalar(90));
    const std::vector<cv::Rect> found = detectFaces(frontal.cascade, grey, options);
    QCOMPARE(found.at(0), cv::Rect(1, 2, 7, 10));
}

void FaceDetectionTest::anUnshrunkImageIsEqualisedInPlace() {
    Scripted frontal;
    face::Options options;
    options.detectScale = 1.0;
    cv::Mat grey = frameWithFace();
    cv::Mat equalised;
    cv::equalizeHist(grey, equalised);
    detectFaces(frontal.cascade, grey, options);
    QCOMPARE(cv::norm(frontal.seen->images.at(0), equalised, cv::NORM_INF), 0.0);
    QCOMPARE(cv::norm(grey, equalised, cv::NORM_INF), 0.0);
}

void FaceDetectionTest::sharingPicturesChangesNothing_data() {
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<double>("scale");
    for (const double scale : {0.5, 0.4, 0.75, 1.0}) {
        for (const QSize size : {QSize(1920, 1080), QSize(322, 241), QSize(321, 240), QSize(2, 2)})
            QTest::addRow("%dx%d at %g", size.width(), size.height(), scale)
                << size.width() << size.height() << scale;
    }
}

void FaceDetectionTest::sharingPicturesChangesNothing() {
    QFETCH(int, width);
    QFETCH(int, height);
    QFETCH(double, scale);
    face::Options options;
    options.detectScale = scale;
    cv::Mat grey(height, width, CV_8U);
    cv::RNG(3).fill(grey, cv::RNG::NORMAL, 120, 40);

    Scripted frontal;
    Scripted profile;
    detectEachOnItsOwn(frontal.cascade, profile.cascade, grey.clone(), options);
    Scripted sharedFrontal;
    Scripted sharedProfile;
    detectFacesMulti(sharedFrontal.cascade, &sharedProfile.cascade, grey, options);

    QCOMPARE(sharedFrontal.seen->images.size(), 1U);
    QCOMPARE(sharedProfile.seen->images.size(), 2U);
    QCOMPARE(cv::norm(sharedFrontal.seen->images[0], frontal.seen->images[0], cv::NORM_INF), 0.0);
    for (const std::size_t i : {0U, 1U})
        QCOMPARE(cv::norm(sharedProfile.seen->images[i], profile.seen->images[i], cv::NORM_INF),
                 0.0);
}

void FaceDetectionTest::picturesTooSmallToShrinkHoldNoFace_data() {
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::newRow("nothing") << 0 << 0;
    QTest::newRow("one pixel") << 1 << 1;
    QTest::newRow("one column") << 1 << 400;
    QTest::newRow("one row") << 400 << 1;
}

void FaceDetectionTest::picturesTooSmallToShrinkHoldNoFace() {
    QFETCH(int, width);
    QFETCH(int, height);
    const face::Options options;
    cv::Mat grey(height, width, CV_8U, cv::Scalar(90));
    QVERIFY(detectFacesMulti(realFrontal, &realProfile, grey, options).empty());
    const QList<QRect> bodies{QRect(0, 0, 200, 400)};
    QVERIFY(detectFacesInBodyRegions(realFrontal, &realProfile, grey, options, bodies).empty());
}

void FaceDetectionTest::aStopEndsTheSearchBetweenDetectors() {
    Scripted frontal(cv::Rect(1, 2, 20, 20));
    Scripted profile(cv::Rect(50, 2, 20, 20));
    cv::Mat grey(400, 400, CV_8U, cv::Scalar(90));
    std::stop_source stop;
    frontal.seen->whenAsked = [&stop] { stop.request_stop(); };
    const auto found = detectFacesMulti(frontal.cascade, &profile.cascade, grey, face::Options(),
                                        stop.get_token());
    QCOMPARE(found.size(), 1U);
    QVERIFY(profile.seen->images.empty());
    const QList<QRect> regions(5, QRect(0, 0, 200, 300));
    QVERIFY(detectFacesInBodyRegions(frontal.cascade, &profile.cascade, grey, face::Options(),
                                     regions, stop.get_token())
                .empty());
    QCOMPARE(frontal.seen->images.size(), 1U);
}

void FaceDetectionTest::priorities_data() {
    QTest::addColumn<QString>("detector");
    QTest::addColumn<int>("priority");
    QTest::newRow("frontal") << u"frontal"_s << 3;
    QTest::newRow("left") << u"profile_left"_s << 2;
    QTest::newRow("right") << u"profile_right"_s << 2;
    QTest::newRow("far frontal") << u"frontal+far_crop"_s << 1;
    QTest::newRow("far left") << u"profile_left+far_crop"_s << 1;
    QTest::newRow("other case") << u"Frontal"_s << 1;
    QTest::newRow("empty") << QString() << 1;
}

void FaceDetectionTest::priorities() {
    QFETCH(QString, detector);
    QTEST(detectorPriority(detector.toStdString()), "priority");
}

void FaceDetectionTest::overlapOfBoxes() {
    QCOMPARE(face::rectIou({0, 0, 10, 10}, {0, 0, 10, 10}), 1.0);
    QCOMPARE(face::rectIou({0, 0, 10, 10}, {5, 0, 10, 10}), 50.0 / 150.0);
    QCOMPARE(face::rectIou({0, 0, 10, 10}, {10, 0, 10, 10}), 0.0);
    QCOMPARE(face::rectIou({0, 0, 0, 10}, {0, 0, 10, 10}), 0.0);
    QCOMPARE(face::rectIou({0, 0, 10, -1}, {0, 0, 10, 10}), 0.0);
}

void FaceDetectionTest::equalBoxesMergeIntoTheFrontalOneFrom35Percent() {
    // Two boxes of 135 x 100, apart by 65: 70 / 200 of them in common.
    const FaceDetection left{cv::Rect(65, 0, 135, 100), "profile_left"};
    const FaceDetection frontal{cv::Rect(0, 0, 135, 100), "frontal"};
    QCOMPARE(texts(dedupeDetections({left, frontal})), QStringList{u"frontal 0,0 135x100"_s});
    // Two boxes of 1350 x 100, apart by 651: 699 / 2001.
    QCOMPARE(dedupeDetections({{cv::Rect(651, 0, 1350, 100), "profile_left"},
                               {cv::Rect(0, 0, 1350, 100), "frontal"}})
                 .size(),
             2U);
    // Two boxes of 134 x 100, apart by 66: 68 / 200.
    const FaceDetection apartLeft{cv::Rect(66, 0, 134, 100), "profile_left"};
    const FaceDetection apartFrontal{cv::Rect(0, 0, 134, 100), "frontal"};
    QCOMPARE(texts(dedupeDetections({apartLeft, apartFrontal})),
             (QStringList{u"frontal 0,0 134x100"_s, u"profile_left 66,0 134x100"_s}));
}

void FaceDetectionTest::largerBoxesWinAndDetectorsDecideBetweenEqualOnes() {
    QCOMPARE(texts(dedupeDetections({{cv::Rect(0, 0, 100, 100), "profile_left"},
                                     {cv::Rect(0, 0, 110, 110), "profile_right"}})),
             QStringList{u"profile_right 0,0 110x110"_s});
    // A smaller hit of a better detector takes the place of the larger one.
    QCOMPARE(texts(dedupeDetections({{cv::Rect(0, 0, 110, 110), "profile_left"},
                                     {cv::Rect(0, 0, 100, 100), "frontal"}})),
             QStringList{u"frontal 0,0 100x100"_s});
    QCOMPARE(texts(dedupeDetections({{cv::Rect(0, 0, 100, 100), "frontal+far_crop"},
                                     {cv::Rect(0, 0, 90, 90), "profile_left"}})),
             QStringList{u"profile_left 0,0 90x90"_s});
}

void FaceDetectionTest::ofAlmostEqualBoxesTheLargerOneStays() {
    QCOMPARE(texts(dedupeDetections({{cv::Rect(0, 0, 99, 100), "profile_right"},
                                     {cv::Rect(0, 0, 100, 100), "profile_left"}})),
             QStringList{u"profile_left 0,0 100x100"_s});
}

/// Threads of a library may give hits in any order; what comes out must not depend on it.
void FaceDetectionTest::ofEqualBoxesAndDetectorsTheUpperLeftStays() {
    const FaceDetection upper{cv::Rect(9, 0, 100, 100), "profile_left"};
    const FaceDetection left{cv::Rect(0, 5, 100, 100), "profile_right"};
    const FaceDetection right{cv::Rect(8, 5, 100, 100), "profile_right"};
    for (const auto& hits :
         {std::vector{upper, left, right}, std::vector{right, left, upper}, {left, upper, right}})
        QCOMPARE(texts(dedupeDetections(hits)), QStringList{u"profile_left 9,0 100x100"_s});
    QCOMPARE(texts(dedupeDetections({right, left})), QStringList{u"profile_right 0,5 100x100"_s});
}

void FaceDetectionTest::keptBoxesStayApart() {
    const std::vector<FaceDetection> apart{{cv::Rect(300, 0, 80, 80), "frontal"},
                                           {cv::Rect(0, 0, 90, 90), "profile_left"},
                                           {cv::Rect(150, 0, 100, 100), "profile_right"}};
    QCOMPARE(texts(dedupeDetections(apart)),
             (QStringList{u"profile_right 150,0 100x100"_s, u"profile_left 0,0 90x90"_s,
                          u"frontal 300,0 80x80"_s}));
    QVERIFY(dedupeDetections({}).empty());
}

void FaceDetectionTest::bodyRegionsAreClippedAndCropped_data() {
    QTest::addColumn<QRect>("region");
    QTest::addColumn<QSize>("searched"); // The enlarged crop; empty when nothing is searched.
    QTest::newRow("crop of three quarters and half") << QRect(100, 50, 400, 600) << QSize(450, 450);
    QTest::newRow("narrow crops double") << QRect(100, 50, 200, 400) << QSize(300, 400);
    QTest::newRow("219 wide doubles") << QRect(0, 0, 293, 400) << QSize(438, 400);
    QTest::newRow("220 wide by 1.5") << QRect(0, 0, 294, 400) << QSize(330, 300);
    QTest::newRow("low bodies crop 80") << QRect(10, 10, 100, 150) << QSize(150, 160);
    QTest::newRow("159 high crops 80") << QRect(10, 10, 100, 159) << QSize(150, 160);
    QTest::newRow("162 high crops half") << QRect(10, 10, 100, 162) << QSize(150, 162);
    QTest::newRow("160 high crops half") << QRect(10, 10, 100, 160) << QSize(150, 160);
    QTest::newRow("60 wide") << QRect(10, 10, 60, 200) << QSize(90, 200);
    QTest::newRow("59 wide") << QRect(10, 10, 59, 200) << QSize();
    QTest::newRow("120 high") << QRect(10, 10, 100, 120) << QSize(150, 160);
    QTest::newRow("119 high") << QRect(10, 10, 100, 119) << QSize();
    QTest::newRow("59 wide after clipping") << QRect(-41, 10, 100, 200) << QSize();
    QTest::newRow("119 high after clipping") << QRect(10, -31, 100, 150) << QSize();
    QTest::newRow("clipped at the corner") << QRect(900, 600, 500, 500) << QSize(150, 160);
    QTest::newRow("left of the image") << QRect(-500, 0, 400, 400) << QSize();
    QTest::newRow("below the image") << QRect(0, 720, 400, 400) << QSize();
    QTest::newRow("no rectangle") << QRect() << QSize();
    QTest::newRow("negative size") << QRect(200, 200, -100, -200) << QSize();
    QTest::newRow("everything") << QRect(QPoint(INT_MIN, INT_MIN), QPoint(INT_MAX, INT_MAX))
                                << QSize(1125, 540);
}

void FaceDetectionTest::bodyRegionsAreClippedAndCropped() {
    QFETCH(QRect, region);
    QFETCH(QSize, searched);
    Scripted frontal;
    const cv::Mat grey(720, 1000, CV_8U, cv::Scalar(90));
    detectFacesInBodyRegions(frontal.cascade, nullptr, grey, face::Options(), {region});
    QCOMPARE(frontal.seen->images.size(), searched.isEmpty() ? 0U : 1U);
    if (searched.isEmpty())
        return;
    QCOMPARE(QSize(frontal.seen->images[0].cols, frontal.seen->images[0].rows), searched);
    QCOMPARE(frontal.seen->minSizes[0], cv::Size(24, 24));
}

void FaceDetectionTest::bodyRegionHitsComeBackInFramePixels() {
    // The crop starts at x + 100 / 8 and is doubled.
    Scripted frontal(cv::Rect(11, 21, 41, 43));
    Scripted profile;
    const cv::Mat grey(720, 1000, CV_8U, cv::Scalar(90));
    QCOMPARE(texts(detectFacesInBodyRegions(frontal.cascade, &profile.cascade, grey,
                                            face::Options(), {QRect(10, 20, 100, 150)})),
             QStringList{u"frontal+far_crop 27,30 20x21"_s});
}

void FaceDetectionTest::bodyRegionHitsAreTruncatedAndMerged() {
    // The crop is 300 wide, starts at x = 50 and is enlarged by 1.5.
    Scripted frontal(cv::Rect(100, 101, 91, 92));
    const cv::Mat grey(720, 1000, CV_8U, cv::Scalar(90));
    const QRect body(0, 0, 400, 600);
    QCOMPARE(
        texts(detectFacesInBodyRegions(frontal.cascade, nullptr, grey, face::Options(), {body})),
        QStringList{u"frontal+far_crop 116,67 60x61"_s});
    // Two bodies that overlap show the same face.
    QCOMPARE(texts(detectFacesInBodyRegions(frontal.cascade, nullptr, grey, face::Options(),
                                            {body, body.translated(3, 2)})),
             QStringList{u"frontal+far_crop 116,67 60x61"_s});
}

void FaceDetectionTest::bodyRegionsAreEnlargedByCubicInterpolation() {
    cv::Mat grey(720, 1000, CV_8U);
    cv::RNG(3).fill(grey, cv::RNG::NORMAL, 120, 40);
    const auto searched = [&grey](const QRect& body) {
        Scripted frontal;
        detectFacesInBodyRegions(frontal.cascade, nullptr, grey, face::Options(), {body});
        return frontal.seen->images.at(0);
    };
    const auto enlarged = [&grey](const cv::Rect& crop, double factor) {
        cv::Mat image;
        cv::resize(grey(crop).clone(), image, cv::Size(), factor, factor, cv::INTER_CUBIC);
        cv::equalizeHist(image, image);
        return image;
    };
    QCOMPARE(
        cv::norm(searched({100, 50, 400, 600}), enlarged({150, 50, 300, 300}, 1.5), cv::NORM_INF),
        0.0);
    QCOMPARE(
        cv::norm(searched({100, 50, 200, 400}), enlarged({125, 50, 150, 200}, 2.0), cv::NORM_INF),
        0.0);
}

void FaceDetectionTest::bodyRegionsLeaveTheFrameAlone() {
    Scripted frontal;
    const cv::Mat grey = frameWithFace();
    const cv::Mat before = grey.clone();
    detectFacesInBodyRegions(frontal.cascade, nullptr, grey, face::Options(),
                             {QRect(0, 0, 480, 360)});
    QCOMPARE(cv::norm(grey, before, cv::NORM_INF), 0.0);
}

void FaceDetectionTest::aFaceTooSmallForTheFrameIsFoundInItsBodyRegion() {
    cv::Mat grey(400, 400, CV_8U, cv::Scalar(70));
    cv::Mat small;
    cv::resize(syntheticFace(180), small, cv::Size(100, 100), 0.0, 0.0, cv::INTER_AREA);
    small.copyTo(grey(cv::Rect(150, 50, 100, 100)));
    QVERIFY(detectFacesMulti(realFrontal, nullptr, grey, face::Options()).empty());
    const auto found = detectFacesInBodyRegions(realFrontal, nullptr, grey, face::Options(),
                                                {QRect(100, 30, 200, 350)});
    QCOMPARE(found.size(), 1U);
    QCOMPARE(found[0].detector, "frontal+far_crop");
    QVERIFY(face::rectIou(found[0].rect, cv::Rect(155, 55, 90, 90)) > 0.6);
}

void FaceDetectionTest::onlyAWholeCascadeFileLoads() {
    const TemporaryPlace place;
    QFile real(QString::fromStdString(face::Options().frontalCascadePath));
    QVERIFY(real.open(QIODevice::ReadOnly));
    const QByteArray content = real.readAll();
    write(u"whole.xml"_s, content);
    write(u"empty.xml"_s, QByteArray());
    write(u"truncated.xml"_s, content.left(content.size() / 2));
    write(u"noise.xml"_s, QByteArray(5000, '\x9f'));
    write(u"other.xml"_s, "<?xml version=\"1.0\"?>\n<opencv_storage><a>1</a></opencv_storage>\n");
    QVERIFY(QDir().mkdir(u"folder.xml"_s));
    QVERIFY(QFile::link(u"nowhere"_s, u"dangling.xml"_s));

    cv::CascadeClassifier cascade;
    QVERIFY(loadCascade(cascade, "whole.xml"));
    for (const char* bad : {"empty.xml", "truncated.xml", "noise.xml", "other.xml", "folder.xml",
                            "dangling.xml", "missing.xml", "", "/dev/zero"}) {
        QVERIFY2(!loadCascade(cascade, bad), bad);
    }
}

void FaceDetectionTest::theRealPortraitHasOneFrontalFace() {
    const QString path = sharedPicture(u"faces/portrait.png"_s);
    if (path.isEmpty())
        QSKIP("no real portrait beside the checkout");
    const face::Options options;
    cv::Mat grey = cv::imread(path.toStdString(), cv::IMREAD_GRAYSCALE);
    const auto found = detectFacesMulti(realFrontal, &realProfile, grey, options);
    qInfo() << texts(found);
    QCOMPARE(texts(detectEachOnItsOwn(realFrontal, realProfile, grey, options)), texts(found));
    QCOMPARE(std::count_if(found.begin(), found.end(),
                           [](const FaceDetection& face) { return face.detector == "frontal"; }),
             1);
}

QTEST_APPLESS_MAIN(FaceDetectionTest)
#include "face_detection_test.moc"
