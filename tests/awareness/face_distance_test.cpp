#include "awareness/depth_scene.h"
#include "awareness/face_distance.h"
#include "awareness/overlays.h"

#include <QTest>

#include <limits>

class FaceDistanceTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theDistanceIsTheMedianAroundTheCheeks();
    void theWindowIsNinePixelsWide();
    void fourSamplesAreNoDistance();
    void depthsOutsideTheSensorsRangeDoNotCount_data();
    void depthsOutsideTheSensorsRangeDoNotCount();
    void evenNumbersTakeTheUpperMedian();
    void facesOutsideTheImageUseTheNearestPixels();
    void invalidBoxesAreLeftAlone();
    void earlierFindingsAreReplaced();
    void aShortListHasNoSamples();
};

namespace {

const QSize fullHd(1920, 1080);
// Its point is (960, 522 + 0.58 x 100 = 580) of the image, pixel (256, 227) of the depth frame.
const QRect centralFace(910, 522, 100, 100);
constexpr QPoint centralPixel(256, 227);

FaceOverlay measured(const DepthScene& scene, const QRect& face = centralFace) {
    QList<FaceOverlay> faces{overlays::face(identity::unknown, face)};
    measureFaceDistances(faces, scene.frame(), fullHd);
    return faces[0];
}

QRect around(const QPoint& pixel, int reach) {
    return QRect(pixel - QPoint(reach, reach), QSize(2 * reach + 1, 2 * reach + 1));
}

} // namespace

void FaceDistanceTest::theDistanceIsTheMedianAroundTheCheeks() {
    DepthScene scene(512, 424, 3000.0F);
    scene.fill(around(centralPixel, 4), 1234.0F);
    const FaceOverlay face = measured(scene);
    QVERIFY(face.hasDistance);
    QVERIFY(!face.depthMissing);
    QCOMPARE(face.distanceMeters, 1.234);
}

void FaceDistanceTest::theWindowIsNinePixelsWide() {
    // Nothing but the window's own pixels is read, up to its very corners.
    DepthScene scene(512, 424, 3000.0F);
    scene.fill(around(centralPixel, 4), 0.0F);
    QVERIFY(!measured(scene).hasDistance);
    scene.fill(QRect(centralPixel + QPoint(-4, -4), QSize(3, 1)), 2000.0F);
    scene.fill(QRect(centralPixel + QPoint(3, 4), QSize(2, 1)), 2000.0F);
    QCOMPARE(measured(scene).distanceMeters, 2.0);
}

void FaceDistanceTest::fourSamplesAreNoDistance() {
    DepthScene scene;
    scene.fill(QRect(centralPixel, QSize(2, 2)), 2000.0F);
    FaceOverlay face = measured(scene);
    QVERIFY(!face.hasDistance);
    QVERIFY(face.depthMissing);
    scene.fill(QRect(centralPixel + QPoint(-1, 0), QSize(1, 1)), 2000.0F);
    face = measured(scene);
    QVERIFY(face.hasDistance);
    QVERIFY(!face.depthMissing);
}

void FaceDistanceTest::depthsOutsideTheSensorsRangeDoNotCount_data() {
    QTest::addColumn<float>("depth_mm");
    QTest::addColumn<bool>("counts");
    QTest::newRow("nearest") << 250.0F << true;
    QTest::newRow("too near") << std::nextafter(250.0F, 0.0F) << false;
    QTest::newRow("farthest") << 8000.0F << true;
    QTest::newRow("too far") << std::nextafter(8000.0F, 9000.0F) << false;
    QTest::newRow("infinite") << std::numeric_limits<float>::infinity() << false;
    QTest::newRow("not a number") << std::numeric_limits<float>::quiet_NaN() << false;
    QTest::newRow("negative") << -1000.0F << false;
}

void FaceDistanceTest::depthsOutsideTheSensorsRangeDoNotCount() {
    QFETCH(float, depth_mm);
    const DepthScene scene(512, 424, depth_mm);
    QTEST(measured(scene).hasDistance, "counts");
}

void FaceDistanceTest::evenNumbersTakeTheUpperMedian() {
    DepthScene scene;
    for (int i = 0; i < 6; ++i)
        scene.fill(QRect(centralPixel + QPoint(i % 3, i / 3), QSize(1, 1)),
                   1000.0F + 100.0F * float((i * 5) % 6));
    QCOMPARE(measured(scene).distanceMeters, 1.3);
}

void FaceDistanceTest::facesOutsideTheImageUseTheNearestPixels() {
    DepthScene scene;
    scene.fill(QRect(507, 419, 5, 5), 1500.0F); // what remains of the window in the corner
    QCOMPARE(measured(scene, QRect(4000, 4000, 50, 50)).distanceMeters, 1.5);
    scene = DepthScene();
    scene.fill(QRect(0, 0, 5, 5), 1600.0F);
    QCOMPARE(measured(scene, QRect(-4000, -4000, 50, 50)).distanceMeters, 1.6);
    constexpr int most = std::numeric_limits<int>::max();
    measured(scene, QRect(QPoint(-most, -most), QPoint(most, most)));
}

void FaceDistanceTest::invalidBoxesAreLeftAlone() {
    const DepthScene scene(512, 424, 2000.0F);
    QList<FaceOverlay> faces{overlays::face(identity::unknown, QRect()),
                             overlays::faceAt(identity::unknown, QRect(10, 10, -5, 9), 1.7)};
    measureFaceDistances(faces, scene.frame(), fullHd);
    QVERIFY(!faces[0].hasDistance);
    QVERIFY(!faces[0].depthMissing);
    QCOMPARE(faces[1].distanceMeters, 1.7);
}

void FaceDistanceTest::earlierFindingsAreReplaced() {
    FaceOverlay face = overlays::face(identity::unknown, centralFace);
    face.depthMissing = true;
    QList<FaceOverlay> faces{face};
    measureFaceDistances(faces, DepthScene(512, 424, 2000.0F).frame(), fullHd);
    QVERIFY(faces[0].hasDistance);
    QVERIFY(!faces[0].depthMissing);
    measureFaceDistances(faces, DepthScene().frame(), fullHd);
    QVERIFY(!faces[0].hasDistance);
    QVERIFY(faces[0].depthMissing);
}

void FaceDistanceTest::aShortListHasNoSamples() {
    DepthScene scene(512, 424, 2000.0F);
    scene.mm.removeLast();
    const FaceOverlay face = measured(scene);
    QVERIFY(!face.hasDistance);
    QVERIFY(face.depthMissing);
}

QTEST_APPLESS_MAIN(FaceDistanceTest)
#include "face_distance_test.moc"
