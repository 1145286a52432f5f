#include "awareness/follow_texts.h"
#include "awareness/overlays.h"

#include <QTest>

using namespace Qt::StringLiterals;

class FollowViewTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void zoomBandsByDistance_data();
    void zoomBandsByDistance();
    void zoomBandsByFaceHeight_data();
    void zoomBandsByFaceHeight();
    void aFacesWholeHeightCountsEvenOutsideTheImage();
    void whyTheZoomIsWhatItIs();
    void anEmptyImageIsNotZoomed();
    void zoomSteps_data();
    void zoomSteps();
    void aZoomCloseToOneSnapsToOne_data();
    void aZoomCloseToOneSnapsToOne();
    void cropSizes_data();
    void cropSizes();
    void theSafeZonesBoundaryIsInside_data();
    void theSafeZonesBoundaryIsInside();
    void theCentreMovesByItsWeight();
    void cropPositionsRoundHalvesAwayFromZero();
    void edgeProtectionPullsTheCropAlong_data();
    void edgeProtectionPullsTheCropAlong();
    void theFirstTargetStartsFromTheWholeImage();
    void theOwnersHoldKeepsAtLeastThree();
    void theHeldOwnersZoom_data();
    void theHeldOwnersZoom();
    void theHoldTurnsToAnybodyElseAtFullZoom();
    void theHoldDoesNotApplyCloseUp();
    void theHoldEndsWithItsTime();
    void aLostOwnersHeadIsHeld();
    void reacquiringAimsAtBothHeads();
    void withNobodyTheViewResetsAtOnce();
    void aTargetOutsideTheImageKeepsTheHeldCrop();
    void aTargetOutsideTheImageResetsWithoutAHold();
    void aKeptCropKeepsItsHeadRegion();
    void anUnmeasuredTargetIsAtNoDistance();
    void aStaleOwnerSaysSo();
    void theStatusTextSaysItAll();
    void everyPassStartsAnew();
};

namespace {

constexpr qint64 now = 1'700'000'000'000;
const QSize image(1920, 1080);
const QRect head(900, 300, 120, 120);

FaceOverlay owner(double distance_m = 2.0) {
    return overlays::faceAt(identity::owner, head, distance_m);
}

FaceOverlay unknown(double distance_m = 2.0) {
    return overlays::faceAt(identity::unknown, head, distance_m);
}

FollowTarget holding(qint64 remainingMs) {
    FollowTarget follow;
    follow.lastTavinSeenMs = now - 1000;
    follow.lastTavinHeadRegion = head;
    follow.zoomHoldUntilMs = now + remainingMs;
    return follow;
}

FollowView settledView(const QRect& crop, double zoom) {
    FollowView view;
    view.followCrop = crop;
    view.followZoom = zoom;
    view.smoothedCropCenter = crop.center();
    return view;
}

FollowChoice choiceOf(FollowStatus status, bool reacquireMode = false) {
    FollowChoice choice;
    choice.selectedFollowTarget = choice.followTargetReason = status;
    choice.reacquireMode = reacquireMode;
    return choice;
}

const FollowChoice nobodyChosen = choiceOf(FollowStatus::NoTarget);
const FollowChoice reacquiring = choiceOf(FollowStatus::Reacquiring, true);

QString zoomReason(const FollowPass& pass) {
    return followTexts::zoomReason(pass.zoom.zoomReason);
}

} // namespace

void FollowViewTest::zoomBandsByDistance_data() {
    QTest::addColumn<double>("distance_m");
    QTest::addColumn<bool>("reacquire");
    QTest::addColumn<double>("zoom");
    QTest::addColumn<bool>("maximum");
    QTest::newRow("0.5 m") << 0.5 << false << 1.0 << false;
    QTest::newRow("0.99 m") << 0.99 << false << 1.0 << false;
    QTest::newRow("1.0 m") << 1.0 << false << 1.5 << false;
    QTest::newRow("1.25 m") << 1.25 << false << 2.0 << false;
    QTest::newRow("1.5 m") << 1.5 << false << 3.0 << false;
    QTest::newRow("1.85 m") << 1.85 << false << 3.75 << false;
    QTest::newRow("2.2 m") << 2.2 << false << 5.0 << false;
    QTest::newRow("2.85 m") << 2.85 << false << 6.0 << false;
    QTest::newRow("3.49 m") << 3.49 << false << 5.0 + 2.0 * (3.49 - 2.2) / 1.3 << false;
    QTest::newRow("3.5 m") << 3.5 << false << 7.0 << true;
    QTest::newRow("8 m") << 8.0 << false << 7.0 << true;
    QTest::newRow("0.99 m, reacquiring") << 0.99 << true << 1.0 << false;
    QTest::newRow("1.0 m, reacquiring") << 1.0 << true << 8.0 << true;
    QTest::newRow("3.5 m, reacquiring") << 3.5 << true << 8.0 << true;
}

void FollowViewTest::zoomBandsByDistance() {
    QFETCH(double, distance_m);
    QFETCH(bool, reacquire);
    const TargetZoom zoom = targetZoom(unknown(distance_m), image, reacquire);
    QTEST(zoom.factor, "zoom");
    QTEST(zoom.maxZoomActive, "maximum");
    QCOMPARE(zoom.closeNoZoomActive(), zoom.factor == 1.0);
    QCOMPARE(followTexts::zoomReason(zoom.zoomReason) == u"close/no zoom"_s, zoom.factor == 1.0);
}

void FollowViewTest::zoomBandsByFaceHeight_data() {
    QTest::addColumn<int>("height");
    QTest::addColumn<bool>("reacquire");
    QTest::addColumn<double>("zoom");
    QTest::addColumn<bool>("maximum");
    // In an image that is 100 pixels high.
    QTest::newRow("15 %") << 15 << false << 7.0 << true;
    QTest::newRow("16 %") << 16 << false << 5.5 << false;
    QTest::newRow("23 %") << 23 << false << 5.5 << false;
    QTest::newRow("24 %") << 24 << false << 3.5 << false;
    QTest::newRow("37 %") << 37 << false << 3.5 << false;
    QTest::newRow("38 %") << 38 << false << 2.0 << false;
    QTest::newRow("54 %") << 54 << false << 2.0 << false;
    QTest::newRow("55 %") << 55 << false << 1.0 << false;
    QTest::newRow("90 %, reacquiring") << 90 << true << 8.0 << true;
}

void FollowViewTest::zoomBandsByFaceHeight() {
    QFETCH(int, height);
    QFETCH(bool, reacquire);
    const FaceOverlay face = overlays::face(identity::unknown, QRect(10, 10, 40, height));
    const TargetZoom zoom = targetZoom(face, QSize(200, 100), reacquire);
    QTEST(zoom.factor, "zoom");
    QTEST(zoom.maxZoomActive, "maximum");
    QCOMPARE(zoom.closeNoZoomActive(), height == 55);
}

void FollowViewTest::aFacesWholeHeightCountsEvenOutsideTheImage() {
    // 55 of 100 pixels, of which 20 are inside.
    const FaceOverlay face = overlays::face(identity::unknown, QRect(10, 80, 40, 55));
    QVERIFY(targetZoom(face, QSize(200, 100), false).closeNoZoomActive());
}

void FollowViewTest::whyTheZoomIsWhatItIs() {
    const auto reasonFor = [](const FaceOverlay& target, const QSize& size, bool reacquireMode) {
        return followTexts::zoomReason(targetZoom(target, size, reacquireMode).zoomReason);
    };
    for (const QSize& size : {image, QSize()}) { // also before the first colour image
        QCOMPARE(reasonFor(unknown(), size, false), u"face/head target"_s);
        QCOMPARE(reasonFor(overlays::body(identity::person, head, 2.0), size, false),
                 u"body/person head target"_s);
        QCOMPARE(reasonFor(unknown(), size, true),
                 u"recent Tavin lost/weak, holding aggressive reacquire zoom"_s);
    }
}

void FollowViewTest::anEmptyImageIsNotZoomed() {
    FollowView view;
    FollowTarget follow;
    const FaceOverlay face = unknown(3.0);
    updateFollowView(view, follow, choiceOf(FollowStatus::Person), &face, QSize(), now);
    QCOMPARE(view.followZoom, 1.0);
    QCOMPARE(view.followCrop, QRect());
    follow = holding(3000);
    updateFollowView(view, follow, reacquiring, nullptr, QSize(0, 0), now);
    QCOMPARE(view.followCrop, QRect());
}

void FollowViewTest::zoomSteps_data() {
    QTest::addColumn<double>("zoom");
    QTest::addColumn<double>("target");
    QTest::addColumn<bool>("reacquire");
    QTest::addColumn<double>("expected");
    QTest::addColumn<QString>("state");
    QTest::newRow("in") << 2.0 << 4.0 << false << 2.2 << u"zoom-in slow alpha 0.10 target 4.0"_s;
    QTest::newRow("out") << 4.0 << 2.0 << false << 3.91
                         << u"zoom-out gentle alpha 0.04 target 2.0"_s;
    QTest::newRow("steady") << 4.0 << 4.02 << false << 4.0014
                            << u"zoom steady alpha 0.07 target 4.0"_s;
    QTest::newRow("upper end of the band")
        << 2.0 << 2.05 << false << 2.0035 << u"zoom steady alpha 0.07 target 2.0"_s;
    QTest::newRow("lower end of the band")
        << 2.0 << 1.95 << false << 1.9965 << u"zoom steady alpha 0.07 target 1.9"_s;
    QTest::newRow("above the band")
        << 2.0 << 2.052 << false << 2.0052 << u"zoom-in slow alpha 0.10 target 2.1"_s;
    QTest::newRow("below the band")
        << 2.0 << 1.948 << false << 1.99766 << u"zoom-out gentle alpha 0.04 target 1.9"_s;
    QTest::newRow("in, reacquiring")
        << 2.0 << 8.0 << true << 2.96 << u"zoom-in slow alpha 0.16 target 8.0"_s;
    QTest::newRow("out, reacquiring")
        << 4.0 << 1.0 << true << 3.52 << u"zoom-out gentle alpha 0.16 target 1.0"_s;
    QTest::newRow("steady, reacquiring")
        << 8.0 << 8.0 << true << 8.0 << u"zoom steady alpha 0.16 target 8.0"_s;
}

void FollowViewTest::zoomSteps() {
    QFETCH(double, zoom);
    QFETCH(double, target);
    QFETCH(bool, reacquire);
    FollowPass pass;
    pass.zoomStep = smoothedZoom(zoom, target, reacquire);
    QTEST(pass.zoomStep->zoom, "expected");
    QTEST(followTexts::zoomSmoothingState(pass), "state");
}

void FollowViewTest::aZoomCloseToOneSnapsToOne_data() {
    QTest::addColumn<double>("zoom");
    QTest::addColumn<double>("target");
    QTest::addColumn<bool>("snaps");
    QTest::newRow("1.04 to 1") << 1.04 << 1.0 << true;
    QTest::newRow("1.05 to 1.05") << 1.05 << 1.05 << true;
    QTest::newRow("1.056 to 1") << 1.056 << 1.0 << false;
    QTest::newRow("1.2 to 1") << 1.2 << 1.0 << false;
    QTest::newRow("1.0 to 1.5") << 1.0 << 1.5 << false;
    QTest::newRow("1.0 to 1.052") << 1.0 << 1.052 << false;
}

void FollowViewTest::aZoomCloseToOneSnapsToOne() {
    QFETCH(double, zoom);
    QFETCH(double, target);
    QTEST(smoothedZoom(zoom, target, false).zoom == 1.0, "snaps");
}

void FollowViewTest::cropSizes_data() {
    QTest::addColumn<double>("zoom");
    QTest::addColumn<QSize>("imageSize");
    QTest::addColumn<QSize>("expected");
    QTest::newRow("no zoom") << 1.0 << image << image;
    QTest::newRow("below 1") << 0.5 << image << image;
    QTest::newRow("truncated") << 7.0 << image << QSize(274, 154);
    QTest::newRow("8") << 8.0 << image << QSize(240, 150);
    QTest::newRow("above 8") << 20.0 << QSize(4000, 4000) << QSize(500, 500);
    QTest::newRow("a small image") << 8.0 << QSize(320, 240) << QSize(220, 150);
    QTest::newRow("220x150") << 8.0 << QSize(220, 150) << QSize(220, 150);
    QTest::newRow("a tiny image") << 2.0 << QSize(100, 100) << QSize(100, 100);
}

void FollowViewTest::cropSizes() {
    QFETCH(double, zoom);
    QFETCH(QSize, imageSize);
    QTEST(followCropSize(zoom, imageSize), "expected");
}

void FollowViewTest::theSafeZonesBoundaryIsInside_data() {
    QTest::addColumn<QPoint>("center");
    QTest::addColumn<bool>("inside");
    // The crop is (400, 200) 1000x400: the zone reaches from (550, 260) to (1250, 540).
    QTest::newRow("left boundary") << QPoint(550, 400) << true;
    QTest::newRow("left of it") << QPoint(549, 400) << false;
    QTest::newRow("right boundary") << QPoint(1250, 400) << true;
    QTest::newRow("right of it") << QPoint(1251, 400) << false;
    QTest::newRow("top boundary") << QPoint(900, 260) << true;
    QTest::newRow("above it") << QPoint(900, 259) << false;
    QTest::newRow("bottom boundary") << QPoint(900, 540) << true;
    QTest::newRow("below it") << QPoint(900, 541) << false;
}

void FollowViewTest::theSafeZonesBoundaryIsInside() {
    QFETCH(QPoint, center);
    QFETCH(bool, inside);
    FollowPass pass;
    pass.cropStep = movedCrop(settledView(QRect(400, 200, 1000, 400), 2.0),
                              QRect(center - QPoint(10, 10), QSize(21, 21)), image, false);
    QCOMPARE(pass.targetCenter(), center);
    QCOMPARE(pass.targetInSafeZone(), inside);
    QCOMPARE(pass.edgeProtectionActive(), !inside);
}

void FollowViewTest::theCentreMovesByItsWeight() {
    const QRect crop(480, 270, 960, 540);
    const QRect near(QPoint(1040, 520), QSize(21, 21)); // centre (1050, 530)
    FollowView view = settledView(crop, 2.0);
    FollowPass pass;
    view.smoothedCropCenter = QPointF(960.5, 540.5);
    pass.cropStep = movedCrop(view, near, image, false);
    QCOMPARE(pass.cropStep->center, QPointF(0.2 * 1050 + 0.8 * 960.5, 0.2 * 530 + 0.8 * 540.5));
    QCOMPARE(followTexts::cropCenterSmoothingState(pass),
             u"center alpha 0.20 safe_zone true edge false"_s);

    view.smoothedCropCenter = QPointF(960, 540);
    pass.cropStep = movedCrop(view, near, image, true);
    QCOMPARE(pass.cropStep->center, QPointF(0.34 * 1050 + 0.66 * 960, 0.34 * 530 + 0.66 * 540));
    QCOMPARE(followTexts::cropCenterSmoothingState(pass),
             u"center alpha 0.34 safe_zone true edge false"_s);

    pass.cropStep = movedCrop(settledView(crop, 2.0), QRect(100, 100, 21, 21), image, true);
    QCOMPARE(followTexts::cropCenterSmoothingState(pass),
             u"center alpha 0.52 safe_zone false edge true"_s);
}

void FollowViewTest::cropPositionsRoundHalvesAwayFromZero() {
    // An odd crop of 641 pixels around 960.0 starts at 639.5, which becomes 640.
    FollowView view = settledView(QRect(640, 360, 641, 360), 1920.0 / 641.5);
    view.smoothedCropCenter = QPointF(960.0, 540.0);
    const CropStep step = movedCrop(view, QRect(950, 530, 21, 21), image, false);
    QCOMPARE(step.crop.size(), QSize(641, 360));
    QCOMPARE(step.crop.topLeft(), QPoint(640, 360));
}

void FollowViewTest::edgeProtectionPullsTheCropAlong_data() {
    QTest::addColumn<QRect>("region");
    QTest::addColumn<QRect>("expected");
    // The crop stays 480x270 (zoom 4) around (960, 540); its margins are 86 and 48 pixels.
    QTest::newRow("left") << QRect(600, 500, 80, 80) << QRect(514, 405, 480, 270);
    QTest::newRow("right") << QRect(1300, 500, 80, 80) << QRect(1379 + 86 - 480, 405, 480, 270);
    QTest::newRow("top") << QRect(920, 250, 80, 60) << QRect(720, 202, 480, 270);
    QTest::newRow("bottom") << QRect(920, 780, 80, 60) << QRect(720, 839 + 48 - 270, 480, 270);
    QTest::newRow("left end of the image") << QRect(0, 500, 80, 80) << QRect(0, 405, 480, 270);
    QTest::newRow("right end of the image")
        << QRect(1840, 500, 80, 80) << QRect(1440, 405, 480, 270);
    QTest::newRow("bottom end of the image")
        << QRect(920, 1000, 80, 80) << QRect(720, 810, 480, 270);
    QTest::newRow("wider than the crop: the right test has the last word")
        << QRect(300, 500, 600, 80) << QRect(899 + 86 - 480, 405, 480, 270);
}

void FollowViewTest::edgeProtectionPullsTheCropAlong() {
    QFETCH(QRect, region);
    QFETCH(QRect, expected);
    FollowView view = settledView(QRect(720, 405, 480, 270), 4.0);
    view.smoothedCropCenter = QPointF(960, 540);
    const CropStep step = movedCrop(view, region, image, false);
    QVERIFY(!step.targetInSafeZone);
    if (expected.left() == 720)
        QCOMPARE(step.crop.top(), expected.top());
    else
        QCOMPARE(step.crop.left(), expected.left());
    QCOMPARE(step.crop.size(), expected.size());
    QCOMPARE(step.center, QPointF(step.crop.center()));
}

void FollowViewTest::theFirstTargetStartsFromTheWholeImage() {
    FollowView view;
    view.followZoom = 6.0; // of a view that was reset since
    FollowTarget follow;
    const FaceOverlay face = unknown(2.2);
    const FollowChoice choice = choiceOf(FollowStatus::Person);
    const FollowPass first = updateFollowView(view, follow, choice, &face, image, now);
    QVERIFY(first.zoomSnapPrevented);
    QCOMPARE(view.followZoom, 1.4); // a tenth of the way from 1 to 5
    QCOMPARE(view.followCrop.width(), 1371);
    QVERIFY(QRect(QPoint(0, 0), image).contains(view.followCrop));
    QCOMPARE(view.targetHeadRegion, head);
    QCOMPARE(first.targetDistance, 2.2);
    QVERIFY(!updateFollowView(view, follow, choice, &face, image, now + 33).zoomSnapPrevented);
}

void FollowViewTest::theOwnersHoldKeepsAtLeastThree() {
    FollowView view = settledView(QRect(480, 270, 960, 540), 2.0);
    const FollowTarget follow = holding(5000);
    FaceOverlay face = owner(1.2); // alone it would be 1.9
    FollowPass pass =
        updateFollowView(view, follow, choiceOf(FollowStatus::Owner), &face, image, now);
    QCOMPARE(followTexts::zoomSmoothingState(pass), u"zoom-in slow alpha 0.10 target 3.0"_s);
    QVERIFY(!pass.choice.reacquireMode && !pass.zoom.maxZoomActive);
    QCOMPARE(zoomReason(pass), u"face/head target"_s);
    face = owner(4.0);
    pass = updateFollowView(view, follow, choiceOf(FollowStatus::Owner), &face, image, now);
    QVERIFY(pass.zoom.maxZoomActive); // it already was
    QCOMPARE(followTexts::zoomSmoothingState(pass), u"zoom-in slow alpha 0.10 target 7.0"_s);
}

void FollowViewTest::theHeldOwnersZoom_data() {
    QTest::addColumn<double>("factor");
    QTest::addColumn<bool>("maximumBefore");
    QTest::addColumn<double>("held");
    QTest::addColumn<bool>("maximum");
    QTest::newRow("1.5") << 1.5 << false << 3.0 << false;
    QTest::newRow("3.0") << 3.0 << false << 3.0 << false;
    QTest::newRow("3.1") << 3.1 << false << 3.1 << false;
    QTest::newRow("7.0, the maximum") << 7.0 << true << 7.0 << true;
    QTest::newRow("7.94") << 7.94 << false << 7.94 << false;
    QTest::newRow("7.95") << 7.95 << false << 7.95 << true;
}

void FollowViewTest::theHeldOwnersZoom() {
    QFETCH(double, factor);
    QFETCH(bool, maximumBefore);
    const TargetZoom zoom = heldOwnerZoom({factor, ZoomReason::FaceHead, maximumBefore});
    QTEST(zoom.factor, "held");
    QTEST(zoom.maxZoomActive, "maximum");
    QCOMPARE(zoom.zoomReason, ZoomReason::FaceHead);
}

void FollowViewTest::theHoldTurnsToAnybodyElseAtFullZoom() {
    FollowView view = settledView(QRect(480, 270, 960, 540), 2.0);
    const FaceOverlay face = unknown(2.0);
    const FollowPass pass =
        updateFollowView(view, holding(100), choiceOf(FollowStatus::Person), &face, image, now);
    QVERIFY(pass.choice.reacquireMode && pass.zoom.maxZoomActive);
    QCOMPARE(followTexts::zoomSmoothingState(pass), u"zoom-in slow alpha 0.16 target 8.0"_s);
}

void FollowViewTest::theHoldDoesNotApplyCloseUp() {
    FollowView view = settledView(QRect(480, 270, 960, 540), 2.0);
    for (const FaceOverlay& face : {owner(0.9), unknown(0.9)}) {
        const FollowPass pass =
            updateFollowView(view, holding(5000), choiceOf(FollowStatus::Owner), &face, image, now);
        QVERIFY(pass.zoom.closeNoZoomActive());
        QVERIFY(!pass.zoom.maxZoomActive && !pass.choice.reacquireMode);
        QCOMPARE(followTexts::zoomSmoothingState(pass), u"zoom-out gentle alpha 0.04 target 1.0"_s);
    }
}

void FollowViewTest::theHoldEndsWithItsTime() {
    FollowView view = settledView(QRect(480, 270, 960, 540), 2.0);
    const FaceOverlay face = unknown(1.25);
    const FollowPass pass =
        updateFollowView(view, holding(0), choiceOf(FollowStatus::Person), &face, image, now);
    QVERIFY(!pass.choice.reacquireMode);
    QCOMPARE(followTexts::zoomSmoothingState(pass), u"zoom steady alpha 0.07 target 2.0"_s);
}

void FollowViewTest::aLostOwnersHeadIsHeld() {
    FollowView view = settledView(QRect(480, 270, 960, 540), 2.0);
    const FollowPass pass = updateFollowView(view, holding(4000), reacquiring, nullptr, image, now);
    QCOMPARE(zoomReason(pass), u"recent Tavin lost, holding last known head region"_s);
    QVERIFY(pass.zoom.maxZoomActive && pass.choice.reacquireMode);
    QCOMPARE(followTexts::zoomSmoothingState(pass), u"zoom-in slow alpha 0.16 target 8.0"_s);
    QCOMPARE(view.targetHeadRegion, head);
    QCOMPARE(pass.targetDistance, 0.0);
}

void FollowViewTest::reacquiringAimsAtBothHeads() {
    FollowView view = settledView(QRect(QPoint(0, 0), image), 1.0);
    const FaceOverlay body =
        overlays::body(identity::possibleOwner, QRect(1000, 280, 300, 700), 2.0);
    updateFollowView(view, holding(4000), reacquiring, &body, image, now);
    QCOMPARE(view.targetHeadRegion, head | QRect(1032, 280, 234, 224));
}

void FollowViewTest::withNobodyTheViewResetsAtOnce() {
    FollowView view;
    const FollowTarget follow;
    const FaceOverlay face = unknown();
    FollowPass pass =
        updateFollowView(view, follow, choiceOf(FollowStatus::Person), &face, image, now);
    QVERIFY(view.followZoom > 1.0 && view.followCrop.isValid());
    QCOMPARE(view.targetHeadRegion, head);
    QVERIFY(view.smoothedCropCenter.x() > 900.0);
    QCOMPARE(pass.targetCenter(), head.center());
    pass = updateFollowView(view, follow, nobodyChosen, nullptr, image, now + 33);
    QCOMPARE(view.followZoom, 1.0);
    QCOMPARE(view.followCrop, QRect());
    QCOMPARE(view.targetHeadRegion, QRect());
    QCOMPARE(view.smoothedCropCenter, QPointF());
    QCOMPARE(pass.targetCenter(), QPoint(0, 0));
    QCOMPARE(followTexts::selectedFollowTarget(pass, view, follow), u"No follow target"_s);
    QCOMPARE(zoomReason(pass), u"no target"_s);
}

void FollowViewTest::aTargetOutsideTheImageKeepsTheHeldCrop() {
    const QRect crop(480, 270, 960, 540);
    FollowView view = settledView(crop, 2.04);
    FollowTarget follow = holding(2500);
    follow.lastTavinHeadRegion = QRect();
    FollowPass pass = updateFollowView(view, follow, nobodyChosen, nullptr, image, now);
    QCOMPARE(view.followCrop, crop);
    QCOMPARE(view.followZoom, 2.04);
    QCOMPARE(followTexts::selectedFollowTarget(pass, view, follow),
             u"Reacquiring Tavin face | Follow zoom: 2.0x | zoom_hold_remaining=2.5s | "
             "close_no_zoom_active false | reacquire_mode true | max_zoom_active true | "
             "zoom_reason: holding previous crop | zoom_smoothing_state: hold | "
             "crop_center_smoothing_state: hold | last_tavin_seen_ms=1699999999000"_s);
    QCOMPARE(zoomReason(pass), u"Tavin zoom hold active"_s);
    QCOMPARE(followTexts::zoomSmoothingState(pass), u"idle"_s);

    const FaceOverlay outside = overlays::faceAt(identity::unknown, QRect(5000, 0, 100, 100), 2.0);
    pass = updateFollowView(view, follow, choiceOf(FollowStatus::Person), &outside, image, now);
    QCOMPARE(view.followCrop, crop);
    QCOMPARE(zoomReason(pass), u"face/head target"_s);
}

void FollowViewTest::aTargetOutsideTheImageResetsWithoutAHold() {
    FollowView view = settledView(QRect(480, 270, 960, 540), 2.0);
    const FaceOverlay outside = overlays::faceAt(identity::unknown, QRect(5000, 0, 100, 100), 2.0);
    updateFollowView(view, FollowTarget(), choiceOf(FollowStatus::Person), &outside, image, now);
    QCOMPARE(view.followCrop, QRect());
    QCOMPARE(view.followZoom, 1.0);
}

void FollowViewTest::aKeptCropKeepsItsHeadRegion() {
    FollowView view = settledView(QRect(480, 270, 960, 540), 2.0);
    view.targetHeadRegion = head;
    const FollowTarget follow = holding(2500);
    const FaceOverlay outside = overlays::faceAt(identity::owner, QRect(5000, 0, 100, 100), 2.0);
    FollowPass pass =
        updateFollowView(view, follow, choiceOf(FollowStatus::Owner), &outside, image, now);
    QVERIFY(pass.previousCropKept);
    QCOMPARE(view.targetHeadRegion, head);
    QCOMPARE(view.smoothedCropCenter, QPointF(QRect(480, 270, 960, 540).center()));
    // The text is a fixed one apart from its flag: the owner's own zoom is not the strongest.
    QVERIFY(!pass.choice.reacquireMode);
    const QString text = followTexts::selectedFollowTarget(pass, view, follow);
    QVERIFY(text.contains(u"| reacquire_mode true | max_zoom_active false |"_s));

    FollowTarget withoutHead = follow;
    withoutHead.lastTavinHeadRegion = QRect();
    pass = updateFollowView(view, withoutHead, nobodyChosen, nullptr, image, now);
    QVERIFY(pass.previousCropKept && pass.choice.reacquireMode && pass.zoom.maxZoomActive);
    QCOMPARE(view.targetHeadRegion, head);
}

void FollowViewTest::anUnmeasuredTargetIsAtNoDistance() {
    FollowView view;
    FaceOverlay face = unknown(3.3);
    face.hasDistance = false;
    const FollowPass pass =
        updateFollowView(view, FollowTarget(), choiceOf(FollowStatus::Person), &face, image, now);
    QCOMPARE(pass.targetDistance, 0.0);
    QCOMPARE(pass.zoom.factor, 7.0); // by its height, a ninth of the image's
}

void FollowViewTest::aStaleOwnerSaysSo() {
    FollowView view;
    const FollowTarget follow;
    FaceOverlay face = owner();
    face.stale = true;
    const FollowPass pass =
        updateFollowView(view, follow, choiceOf(FollowStatus::Owner), &face, image, now);
    QVERIFY(followTexts::selectedFollowTarget(pass, view, follow)
                .startsWith(u"Tavin lost, holding last position | Follow zoom: "_s));
}

void FollowViewTest::theStatusTextSaysItAll() {
    FollowView view;
    const FollowTarget follow = holding(4200);
    FollowChoice choice = choiceOf(FollowStatus::Owner);
    choice.followTargetReason = FollowStatus::Reacquiring; // not the same as the status
    const auto textFor = [&](const FaceOverlay& face) {
        const FollowPass pass = updateFollowView(view, follow, choice, &face, image, now);
        return followTexts::selectedFollowTarget(pass, view, follow);
    };
    QCOMPARE(textFor(owner(2.2)),
             u"Following Tavin | Follow zoom: 1.4x | target_distance=2.20m | "
             "zoom_hold_remaining=4.2s | close_no_zoom_active false | reacquire_mode false | "
             "max_zoom_active false | target_in_safe_zone true | edge_protection_active false | "
             "zoom_snap_prevented true | zoom_reason: face/head target | "
             "follow_target_reason: Reacquiring Tavin face | target_center=959,359 | "
             "smoothed_crop_center=960,504 | "
             "zoom_smoothing_state: zoom-in slow alpha 0.10 target 5.0 | "
             "crop_center_smoothing_state: center alpha 0.20 safe_zone true edge false | "
             "last_tavin_seen_ms=1699999999000"_s);

    const QString close = textFor(owner(0.8));
    QVERIFY(close.contains(u"x close/no zoom | target_distance=0.80m | "_s));
    QVERIFY(close.contains(u"close_no_zoom_active true"_s));

    const QString far = textFor(owner(4.0));
    QVERIFY(far.contains(u"x max | target_distance=4.00m | "_s));
    QVERIFY(far.contains(u"max_zoom_active true"_s));
}

void FollowViewTest::everyPassStartsAnew() {
    FollowView view = settledView(QRect(0, 0, 480, 270), 4.0); // the head is outside its safe zone
    const FollowTarget follow;
    const FaceOverlay face = owner(4.0);
    FollowPass pass =
        updateFollowView(view, follow, choiceOf(FollowStatus::Owner), &face, image, now);
    QVERIFY(pass.zoom.maxZoomActive);
    QVERIFY(pass.edgeProtectionActive() && !pass.targetInSafeZone());
    QCOMPARE(pass.targetDistance, 4.0);
    pass = updateFollowView(view, follow, nobodyChosen, nullptr, image, now + 33);
    QVERIFY(!pass.zoom.maxZoomActive && !pass.zoomSnapPrevented);
    QVERIFY(!pass.zoom.closeNoZoomActive());
    QVERIFY(pass.targetInSafeZone() && !pass.edgeProtectionActive());
    QCOMPARE(followTexts::zoomSmoothingState(pass), u"idle"_s);
    QCOMPARE(followTexts::cropCenterSmoothingState(pass), u"idle"_s);
    QCOMPARE(pass.targetDistance, 0.0);
}

QTEST_APPLESS_MAIN(FollowViewTest)
#include "follow_view_test.moc"
