#include "ui/stream_geometry.h"

#include <QRandomGenerator>
#include <QTest>
#include <limits>

using namespace streamGeometry;

namespace {

constexpr int least = std::numeric_limits<int>::min();
constexpr int most = std::numeric_limits<int>::max();

QRect edges(int left, int top, int right, int bottom) {
    return {QPoint(left, top), QPoint(right, bottom)};
}

/// A 1280 x 720 image of which all or `source` is shown at double size from (10, 20).
ImagePlacement doubled(const QRect& source = {}) {
    const QSize shown = source.isEmpty() ? QSize(1280, 720) : source.size();
    return {source, shown, QRect(QPoint(10, 20), shown * 2)};
}

} // namespace

Q_DECLARE_METATYPE(streamGeometry::ImagePlacement)

class StreamGeometryTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theSourceIsWhatACropSharesWithTheImage_data();
    void theSourceIsWhatACropSharesWithTheImage();
    void aPictureStandsInTheMiddle();
    void devicePixelsLieAtTheNearestEdges();
    void aBoxIsScaledTruncatedAndClipped_data();
    void aBoxIsScaledTruncatedAndClipped();
    void anyOrdinaryBoxFollowsTheFormula();
    void anyBoxStaysInsideTheImage();
    void aTagIsPlacedAboveItsBoxInsideTheImage_data();
    void aTagIsPlacedAboveItsBoxInsideTheImage();
    void theBannerNeedsRoom();
    void lightsFollowTheSizeOfTheWidget();
    void voiceLinesStandAtTheFoot();
};

void StreamGeometryTest::theSourceIsWhatACropSharesWithTheImage_data() {
    QTest::addColumn<QRect>("crop");
    QTest::addColumn<QRect>("source");
    QTest::newRow("inside") << edges(100, 50, 739, 409) << QRect(100, 50, 640, 360);
    QTest::newRow("over the edge") << QRect(-10, 700, 30, 30) << QRect(0, 700, 20, 20);
    QTest::newRow("one pixel") << QRect(1279, 719, 1, 1) << QRect(1279, 719, 1, 1);
    QTest::newRow("null") << QRect() << QRect();
    QTest::newRow("right edge left of the left one") << edges(50, 10, 48, 90) << QRect();
    QTest::newRow("bottom above the top") << edges(50, 10, 90, 9) << QRect();
    QTest::newRow("outside") << QRect(1280, 0, 50, 50) << QRect();
    QTest::newRow("everything") << edges(least, least, most, most) << QRect(0, 0, 1280, 720);
    QTest::newRow("nearly everything")
        << edges(least + 10, least, most, most) << QRect(0, 0, 1280, 720);
    QTest::newRow("far away") << edges(most - 5, most - 5, most, most) << QRect();
}

void StreamGeometryTest::theSourceIsWhatACropSharesWithTheImage() {
    QFETCH(QRect, crop);
    QFETCH(QRect, source);
    const QRect found = sourceRect(crop, QSize(1280, 720));
    QCOMPARE(found.isEmpty(), source.isEmpty());
    if (!source.isEmpty())
        QCOMPARE(found, source);
}

void StreamGeometryTest::aPictureStandsInTheMiddle() {
    const QRect area(6, 6, 101, 51);
    QCOMPARE(fittedIn(area, QSize(100, 51)), QRect(6, 6, 100, 51));
    QCOMPARE(fittedIn(area, QSize(99, 20)), QRect(6, 21, 101, 20));
    QCOMPARE(fittedIn(area, QSize(50, 102)), QRect(44, 6, 25, 51));
    QCOMPARE(fittedIn(area, QSize(4000, 1)), QRect(6, 31, 101, 1));
}

void StreamGeometryTest::devicePixelsLieAtTheNearestEdges() {
    QCOMPARE(devicePixels({10.0, 20.0, 30.0, 40.0}), QRect(10, 20, 30, 40));
    QCOMPARE(devicePixels({10.5, 20.4, 30.0, 40.0}), QRect(11, 20, 30, 40));
    // Two rectangles that share an edge share it on the device too.
    QCOMPARE(devicePixels({1.5, 0.0, 1.5, 1.5}), QRect(2, 0, 1, 2));
    QCOMPARE(devicePixels({3.0, 0.0, 1.5, 1.5}), QRect(3, 0, 2, 2));
    QCOMPARE(devicePixels({5.0, 5.0, 0.1, 0.1}), QRect(5, 5, 1, 1));
}

void StreamGeometryTest::aBoxIsScaledTruncatedAndClipped_data() {
    QTest::addColumn<QRect>("box");
    QTest::addColumn<ImagePlacement>("placement");
    QTest::addColumn<QRect>("expected"); // empty: skipped
    const QRect crop = edges(100, 50, 739, 409);
    const QRect none;
    QTest::newRow("inside") << QRect(100, 50, 30, 40) << doubled() << QRect(210, 120, 60, 80);
    QTest::newRow("over the corner") << QRect(-5, -5, 20, 20) << doubled() << QRect(10, 20, 30, 30);
    QTest::newRow("outside") << QRect(1300, 0, 5, 5) << doubled() << none;
    QTest::newRow("null") << QRect() << doubled() << none;
    QTest::newRow("in the crop") << QRect(110, 60, 5, 5) << doubled(crop) << QRect(30, 40, 10, 10);
    QTest::newRow("over the crop's edge")
        << QRect(90, 40, 20, 20) << doubled(crop) << QRect(10, 20, 20, 20);
    QTest::newRow("outside the crop") << QRect(10, 10, 20, 20) << doubled(crop) << none;
    QTest::newRow("touching the crop from outside")
        << QRect(80, 50, 20, 20) << doubled(crop) << none;
    const ImagePlacement shrunk{{}, QSize(100, 100), QRect(6, 6, 33, 33)};
    QTest::newRow("truncated") << QRect(10, 11, 5, 7) << shrunk << QRect(9, 9, 1, 2);
    QTest::newRow("truncated toward zero") << QRect(-2, -4, 20, 20) << shrunk << QRect(6, 6, 6, 5);
    QTest::newRow("smaller than a pixel") << QRect(10, 10, 3, 30) << shrunk << none;
    QTest::newRow("everything") << edges(least, least, most, most) << doubled()
                                << QRect(10, 20, 2560, 1440);
    QTest::newRow("from far left") << edges(least, 0, 9, 9) << doubled() << QRect(10, 20, 20, 20);
    QTest::newRow("to far right") << edges(9, 9, most, most) << doubled()
                                  << edges(28, 38, 2569, 1459);
    QTest::newRow("far away") << edges(most - 9, most - 9, most, most) << doubled() << none;
}

void StreamGeometryTest::aBoxIsScaledTruncatedAndClipped() {
    QFETCH(QRect, box);
    QFETCH(ImagePlacement, placement);
    QFETCH(QRect, expected);
    const std::optional<QRect> found = screenBox(box, placement);
    QCOMPARE(found.has_value(), !expected.isEmpty());
    if (found)
        QCOMPARE(*found, expected);
}

void StreamGeometryTest::anyOrdinaryBoxFollowsTheFormula() {
    QRandomGenerator random(7);
    for (int round = 0; round < 20000; ++round) {
        const QSize shown(random.bounded(1, 2000), random.bounded(1, 1200));
        const QRect target(random.bounded(0, 50), random.bounded(0, 50), random.bounded(1, 1500),
                           random.bounded(1, 900));
        const QRect source =
            round % 2 == 0 ? QRect() : QRect(QPoint(random.bounded(900), 5), shown);
        const QRect box(random.bounded(-300, 2500), random.bounded(-300, 1500),
                        random.bounded(0, 900), random.bounded(0, 900));

        const QRect moved = source.isEmpty() ? box : box.translated(-source.topLeft());
        const double sx = double(target.width()) / shown.width();
        const double sy = double(target.height()) / shown.height();
        QRect expected =
            QRect(int(moved.left() * sx) + target.left(), int(moved.top() * sy) + target.top(),
                  int(moved.width() * sx), int(moved.height() * sy))
                .intersected(target);
        if (!source.isEmpty() && !moved.intersects(QRect(QPoint(0, 0), shown)))
            expected = QRect();
        const std::optional<QRect> found = screenBox(box, {source, shown, target});
        QCOMPARE(found.has_value(), !expected.isEmpty());
        if (found)
            QCOMPARE(*found, expected);
    }
}

void StreamGeometryTest::anyBoxStaysInsideTheImage() {
    QRandomGenerator random(11);
    const QRect target(6, 6, 640, 360);
    const auto coordinate = [&] { return static_cast<int>(random.generate()); };
    for (int round = 0; round < 20000; ++round) {
        const QRect box = edges(coordinate(), coordinate(), coordinate(), coordinate());
        const QRect source = round % 2 == 0 ? QRect() : QRect(100, 50, 640, 360);
        const std::optional<QRect> found = screenBox(box, {source, QSize(640, 360), target});
        if (found)
            QVERIFY(target.contains(*found) && !found->isEmpty());
    }
}

void StreamGeometryTest::aTagIsPlacedAboveItsBoxInsideTheImage_data() {
    QTest::addColumn<QRect>("box");
    QTest::addColumn<int>("textWidth");
    QTest::addColumn<QRect>("image");
    QTest::addColumn<QRect>("tag");
    const QRect image(10, 20, 400, 300);
    QTest::newRow("above the box")
        << QRect(50, 100, 80, 80) << 100 << image << QRect(50, 75, 114, 22);
    QTest::newRow("a short text") << QRect(50, 100, 80, 80) << 3 << image << QRect(50, 75, 74, 22);
    QTest::newRow("one pixel more than a short text")
        << QRect(50, 100, 80, 80) << 61 << image << QRect(50, 75, 75, 22);
    QTest::newRow("a box at the top")
        << QRect(50, 20, 80, 80) << 100 << image << QRect(50, 20, 114, 22);
    QTest::newRow("a box near the right edge")
        << QRect(380, 100, 30, 80) << 100 << image << QRect(409 - 114, 75, 114, 22);
    QTest::newRow("a text wider than the image")
        << QRect(50, 100, 80, 80) << 5000 << image << QRect(10, 75, 400, 22);
    QTest::newRow("an image narrower than a tag")
        << QRect(20, 100, 20, 80) << 3 << QRect(10, 20, 50, 300) << QRect(10, 75, 50, 22);
}

void StreamGeometryTest::aTagIsPlacedAboveItsBoxInsideTheImage() {
    QFETCH(QRect, box);
    QFETCH(int, textWidth);
    QFETCH(QRect, image);
    QTEST(captionTag(box, textWidth, image), "tag");
}

void StreamGeometryTest::theBannerNeedsRoom() {
    QCOMPARE(bannerRect(640), edges(8, 8, 631, 33));
    QCOMPARE(bannerRect(640).height(), 26);
    QCOMPARE(bannerRect(17), QRect(8, 8, 1, 26));
    QVERIFY(bannerRect(16).isEmpty());
}

void StreamGeometryTest::lightsFollowTheSizeOfTheWidget() {
    QCOMPARE(speakerLight(0, QSize(420, 170)), QRect(209 - 83, 169 - 44, 22, 8));
    QCOMPARE(speakerLight(5, QSize(420, 170)), QRect(209 - 83 + 5 * 29, 169 - 44, 22, 8));
    QCOMPARE(speakerLight(0, QSize(419, 169)), QRect(209 - 60, 168 - 24, 16, 8));
    QCOMPARE(speakerLight(5, QSize(419, 169)), QRect(209 - 60 + 5 * 21, 168 - 24, 16, 8));
}

void StreamGeometryTest::voiceLinesStandAtTheFoot() {
    QCOMPARE(firstVoiceLine(QSize(640, 360)), edges(8, 329, 631, 344));
    QCOMPARE(secondVoiceLine(QSize(640, 360)), edges(8, 344, 631, 357));
}

QTEST_APPLESS_MAIN(StreamGeometryTest)

#include "stream_geometry_test.moc"
