#include "awareness/overlay_geometry.h"
#include "awareness/overlays.h"

#include <QTest>

#include <limits>

class OverlayGeometryTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void overlapIsIntersectionOverUnion_data();
    void overlapIsIntersectionOverUnion();
    void hostileBoxesDoNotOverflow();
    void centresAreWholePixels();
    void theBodyOfAFaceIsBesideAndBelowIt();
    void theHeadOfAFaceIsItsClippedBox();
    void theHeadOfABodyIsItsTop_data();
    void theHeadOfABodyIsItsTop();
};

namespace {

const QSize image(1920, 1080);
constexpr int most = std::numeric_limits<int>::max();
constexpr int least = std::numeric_limits<int>::min();

} // namespace

void OverlayGeometryTest::overlapIsIntersectionOverUnion_data() {
    QTest::addColumn<QRect>("a");
    QTest::addColumn<QRect>("b");
    QTest::addColumn<double>("expected");
    QTest::newRow("the same") << QRect(10, 10, 50, 40) << QRect(10, 10, 50, 40) << 1.0;
    QTest::newRow("half beside") << QRect(0, 0, 10, 10) << QRect(5, 0, 10, 10) << 50.0 / 150.0;
    QTest::newRow("one pixel") << QRect(0, 0, 10, 10) << QRect(9, 9, 10, 10) << 1.0 / 199.0;
    QTest::newRow("side by side") << QRect(0, 0, 10, 10) << QRect(10, 0, 10, 10) << 0.0;
    QTest::newRow("inside") << QRect(0, 0, 10, 10) << QRect(2, 2, 5, 4) << 0.2;
    QTest::newRow("a null one") << QRect() << QRect(0, 0, 10, 10) << 0.0;
    QTest::newRow("two null ones") << QRect() << QRect() << 0.0;
}

void OverlayGeometryTest::overlapIsIntersectionOverUnion() {
    QFETCH(QRect, a);
    QFETCH(QRect, b);
    QFETCH(double, expected);
    QCOMPARE(overlayGeometry::rectIou(a, b), expected);
    QCOMPARE(overlayGeometry::rectIou(b, a), expected);
}

void OverlayGeometryTest::hostileBoxesDoNotOverflow() {
    const QRect everything(QPoint(least, least), QPoint(most, most));
    const QRect vast(QPoint(least / 2, least / 2), QPoint(most / 2, most / 2));
    QCOMPARE(overlayGeometry::rectIou(vast, vast), 1.0);
    QCOMPARE(overlayGeometry::boxCenter(QRect(QPoint(most - 2, most - 2), QPoint(most, most))),
             QPoint(most - 1, most - 1));
    QCOMPARE(overlayGeometry::expectedBodyBox(everything), everything);
    QCOMPARE(overlayGeometry::enlargedByHalf(everything), everything);
    QCOMPARE(overlayGeometry::estimatedHeadRegion(overlays::face(identity::unknown, vast), image),
             QRect(QPoint(0, 0), image));
}

void OverlayGeometryTest::centresAreWholePixels() {
    QCOMPARE(overlayGeometry::boxCenter(QRect(QPoint(10, 20), QPoint(13, 25))), QPoint(11, 22));
    QCOMPARE(overlayGeometry::boxCenter(QRect()), QPoint(0, 0));
}

void OverlayGeometryTest::theBodyOfAFaceIsBesideAndBelowIt() {
    QCOMPARE(overlayGeometry::expectedBodyBox(QRect(100, 200, 30, 40)),
             QRect(QPoint(70, 160), QPoint(159, 239 + 120)));
    QCOMPARE(overlayGeometry::enlargedByHalf(QRect(100, 200, 31, 41)),
             QRect(QPoint(85, 180), QPoint(145, 260)));
}

void OverlayGeometryTest::theHeadOfAFaceIsItsClippedBox() {
    const auto head = [](const QRect& rect) {
        return overlayGeometry::estimatedHeadRegion(overlays::face(identity::unknown, rect), image);
    };
    QCOMPARE(head(QRect(-20, 1000, 100, 100)), QRect(0, 1000, 80, 80));
    QCOMPARE(head(QRect(2000, 10, 50, 50)), QRect());
    QCOMPARE(overlayGeometry::estimatedHeadRegion(
                 overlays::face(identity::unknown, QRect(0, 0, 9, 9)), QSize()),
             QRect());
}

void OverlayGeometryTest::theHeadOfABodyIsItsTop_data() {
    QTest::addColumn<QRect>("body");
    QTest::addColumn<QSize>("imageSize");
    QTest::addColumn<QRect>("expected");
    // 0.78 of 300 is 234, 0.32 of 500 is 160; the centre of 800 … 1099 is 949.
    QTest::newRow("usual") << QRect(800, 300, 300, 500) << image << QRect(832, 300, 234, 160);
    QTest::newRow("small sides") << QRect(800, 300, 70, 150) << image << QRect(802, 300, 64, 64);
    QTest::newRow("smaller than a head")
        << QRect(800, 300, 40, 50) << image << QRect(787, 300, 64, 64);
    QTest::newRow("clipped first")
        << QRect(-150, -100, 300, 600) << image << QRect(16, 0, 117, 160);
    QTest::newRow("kept inside on the right")
        << QRect(1890, 900, 100, 300) << image << QRect(1856, 900, 64, 64);
    QTest::newRow("kept inside below")
        << QRect(800, 1050, 200, 300) << image << QRect(821, 1016, 156, 64);
    QTest::newRow("an image smaller than a head")
        << QRect(0, 0, 50, 40) << QSize(50, 40) << QRect(0, 0, 50, 40);
    QTest::newRow("outside") << QRect(3000, 0, 100, 300) << image << QRect();
}

void OverlayGeometryTest::theHeadOfABodyIsItsTop() {
    QFETCH(QRect, body);
    QFETCH(QSize, imageSize);
    QTEST(overlayGeometry::estimatedHeadRegion(overlays::body(identity::person, body, 2.0),
                                               imageSize),
          "expected");
}

QTEST_APPLESS_MAIN(OverlayGeometryTest)
#include "overlay_geometry_test.moc"
