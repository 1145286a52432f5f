#include "awareness/stream_display.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

FaceOverlay overlayAt(const QRect& rect, const QString& label = u"Person"_s) {
    FaceOverlay overlay;
    overlay.rect = rect;
    overlay.label = label;
    return overlay;
}

} // namespace

class StreamDisplayTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void followCrop_data();
    void followCrop();
    void cropKeepsTheOverlaysThatMeetItAndMovesThem();
    void withoutACropEveryOverlayIsShownWhereItIs();
    void bannerNamesTheCrop();
    void bannerWithoutACrop();
    void targetTextIsNoTemplate();
    void theLogNamesTheCropThatIsShown();
};

void StreamDisplayTest::followCrop_data() {
    QTest::addColumn<QRect>("followCrop");
    QTest::addColumn<QRect>("applied");
    const QRect none;
    QTest::newRow("null") << QRect() << none;
    QTest::newRow("whole image") << QRect(0, 0, 640, 480) << none;
    QTest::newRow("larger than the image") << QRect(-10, -10, 900, 900) << none;
    QTest::newRow("inside") << QRect(10, 20, 100, 50) << QRect(10, 20, 100, 50);
    QTest::newRow("narrower only") << QRect(1, 0, 639, 480) << QRect(1, 0, 639, 480);
    QTest::newRow("lower only") << QRect(0, 0, 640, 479) << QRect(0, 0, 640, 479);
    QTest::newRow("partly outside") << QRect(600, 400, 100, 100) << QRect(600, 400, 40, 80);
    QTest::newRow("outside") << QRect(640, 0, 100, 100) << none;
    QTest::newRow("reversed") << QRect(QPoint(50, 50), QPoint(10, 10)) << none;
    QTest::newRow("one pixel") << QRect(639, 479, 1, 1) << QRect(639, 479, 1, 1);
}

void StreamDisplayTest::followCrop() {
    QFETCH(QRect, followCrop);
    QFETCH(QRect, applied);
    const FollowDisplay display = followDisplay({640, 480}, followCrop, {}, u"rgb"_s, u"t"_s);
    QCOMPARE(display.cropApplied, applied.isValid());
    if (applied.isValid())
        QCOMPARE(display.crop, applied);
}

void StreamDisplayTest::cropKeepsTheOverlaysThatMeetItAndMovesThem() {
    const QList<FaceOverlay> overlays{
        overlayAt({90, 40, 20, 20}, u"reaches in"_s),
        overlayAt({10, 10, 20, 20}, u"outside"_s),
        overlayAt({300, 200, 40, 40}, u"inside"_s),
        overlayAt({}, u"no box"_s),
    };
    const FollowDisplay display =
        followDisplay({1280, 720}, {100, 50, 640, 360}, overlays, u"follow"_s, u"t"_s);
    QCOMPARE(display.overlays.size(), 2);
    QCOMPARE(display.overlays[0].label, u"reaches in"_s);
    QCOMPARE(display.overlays[0].rect, QRect(-10, -10, 20, 20));
    QCOMPARE(display.overlays[1].label, u"inside"_s);
    QCOMPARE(display.overlays[1].rect, QRect(200, 150, 40, 40));
}

void StreamDisplayTest::withoutACropEveryOverlayIsShownWhereItIs() {
    const QList<FaceOverlay> overlays{overlayAt({90, 40, 20, 20}), overlayAt({9000, 0, 5, 5})};
    const FollowDisplay display = followDisplay({640, 480}, {}, overlays, u"follow"_s, u"t"_s);
    QCOMPARE(display.overlays.size(), 2);
    QCOMPARE(display.overlays[1].rect, QRect(9000, 0, 5, 5));
}

void StreamDisplayTest::bannerNamesTheCrop() {
    const FollowDisplay display =
        followDisplay({640, 480}, {10, 20, 300, 200}, {}, u"follow"_s, u"Following Tavin"_s);
    QCOMPARE(display.statusText,
             u"VISIBLE FOLLOW ZOOM ACTIVE | current view: FOLLOW | Following Tavin | crop applied "
             "to display: true | crop 10,20 300x200"_s);
}

void StreamDisplayTest::bannerWithoutACrop() {
    const FollowDisplay display =
        followDisplay({640, 480}, {0, 0, 640, 480}, {}, u"combo"_s, u"No follow target"_s);
    QCOMPARE(display.statusText,
             u"current view: COMBO | No follow target | crop applied to display: false"_s);
}

void StreamDisplayTest::targetTextIsNoTemplate() {
    const QString target = u"%1 %2 %3 %6 %%"_s;
    QCOMPARE(followDisplay({9, 9}, {}, {}, u"%2"_s, target).statusText,
             u"current view: %2 | "_s + target + u" | crop applied to display: false"_s);
    QVERIFY(followDisplay({9, 9}, {1, 1, 2, 2}, {}, u"%2"_s, target)
                .statusText.contains(u"current view: %2 | "_s + target + u" | crop applied"_s));
}

void StreamDisplayTest::theLogNamesTheCropThatIsShown() {
    // The follow crop is that of a larger image than the one that is shown now.
    const FollowDisplay display =
        followDisplay({640, 480}, {600, 400, 100, 100}, {}, u"follow"_s, u"Following Tavin"_s);
    QString line;
    writeFollowDisplayReport(QDebug(&line), display, u"follow"_s, 2.5, {40, 80}, {640, 480});
    QCOMPARE(line.trimmed(),
             u"Qt follow display: current_view= \"follow\" crop_applied_to_display= true "
             "follow_zoom= 2.5 follow_crop= QRect(600,400 40x80) display_image= QSize(40, 80) "
             "source_image= QSize(640, 480) status= \"VISIBLE FOLLOW ZOOM ACTIVE | current view: "
             "FOLLOW | Following Tavin | crop applied to display: true | crop 600,400 40x80\""_s);
}

QTEST_APPLESS_MAIN(StreamDisplayTest)
#include "stream_display_test.moc"
