#include "awareness/body_candidates.h"
#include "awareness/depth_scene.h"
#include "awareness/plain_body_candidates.h"

#include <QTest>

#include <array>
#include <limits>
#include <random>

using namespace Qt::StringLiterals;

class BodyCandidatesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aFrameWithoutBodyDepthsHasNoCandidate_data();
    void aFrameWithoutBodyDepthsHasNoCandidate();
    void aStandingPersonIsFound();
    void aPersonOutsideTheBandIsNot_data();
    void aPersonOutsideTheBandIsNot();
    void bothEndsOfTheBandCount();
    void aCellNeedsFourPixelsOfTheBand();
    void aUniformWallIsNoCandidate();
    void diagonalNeighboursAreTwoBlobs();
    void gatesAtTheirExactBounds_data();
    void gatesAtTheirExactBounds();
    void fortyFourCellsAreTooFew();
    void nineteenSamplesAreTooFew();
    void theDistanceIsTheUpperMedian();
    void tierChangesAtTwoPointTwoMetres();
    void theBoxHasMarginsForHeadAndFeet();
    void aBlobAtTheBorderIsClipped();
    void theClippedBoxIsMeasured_data();
    void theClippedBoxIsMeasured();
    void aClippedBoxMayBeTooSmall_data();
    void aClippedBoxMayBeTooSmall();
    void theFourTallestComeTallestFirst();
    void unusableArgumentsGiveNothing_data();
    void unusableArgumentsGiveNothing();
    void equalsThePlainSearchOnRandomFrames_data();
    void equalsThePlainSearchOnRandomFrames();
    void equalsThePlainSearchOnWindingShapes();
    void hostileValuesStayInsideTheImage();
    void hugeImagesDoNotOverflow();
};

namespace {

const QSize fullHd(1920, 1080);
constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

QList<BodyCandidate> search(const DepthScene& scene, const QSize& colorSize = fullHd) {
    return detectDepthBodyCandidates(scene.frame(), colorSize);
}

/// Everything of a candidate list, for a comparison that shows what differs.
QString textOf(const QList<BodyCandidate>& candidates) {
    QString text;
    for (const BodyCandidate& c : candidates) {
        text += u"[%1,%2 %3x%4 %5m %6 cells %7] "_s.arg(c.rect.x())
                    .arg(c.rect.y())
                    .arg(c.rect.width())
                    .arg(c.rect.height())
                    .arg(c.distance_m, 0, 'g', 17)
                    .arg(c.cells)
                    .arg(c.tier);
    }
    return text;
}

/// A blob that passes every gate: 10x20 cells with a notch, so that its fill is 0.9.
DepthScene notchedBlob(float depth_mm) {
    DepthScene scene;
    scene.fillCells(QRect(40, 30, 10, 20), depth_mm);
    scene.fillCells(QRect(40, 30, 2, 10), 0.0F);
    return scene;
}

} // namespace

void BodyCandidatesTest::aFrameWithoutBodyDepthsHasNoCandidate_data() {
    QTest::addColumn<float>("depth_mm");
    QTest::newRow("zero") << 0.0F;
    QTest::newRow("not a number") << notANumber;
    QTest::newRow("infinite") << infinity;
    QTest::newRow("minus infinite") << -infinity;
    QTest::newRow("negative") << -2000.0F;
    QTest::newRow("minus zero") << -0.0F;
    QTest::newRow("largest float") << std::numeric_limits<float>::max();
}

void BodyCandidatesTest::aFrameWithoutBodyDepthsHasNoCandidate() {
    QFETCH(float, depth_mm);
    DepthScene scene;
    scene.stand(250, 100, 250, 2000.0F);
    QCOMPARE(search(scene).size(), 1);
    scene = DepthScene();
    scene.fill(QRect(200, 100, 80, 250), depth_mm);
    QVERIFY(search(scene).isEmpty());
}

void BodyCandidatesTest::aStandingPersonIsFound() {
    DepthScene scene;
    scene.stand(256, 100, 240, 2500.0F);
    const QList<BodyCandidate> found = search(scene);
    QCOMPARE(found.size(), 1);
    QVERIFY(found[0].rect.contains(QPoint(960, 600)));
    QVERIFY(qAbs(found[0].distance_m - 2.5) < 0.05);
    QCOMPARE(found[0].tier, u"far body"_s);
}

void BodyCandidatesTest::aPersonOutsideTheBandIsNot_data() {
    QTest::addColumn<float>("depth_mm");
    QTest::newRow("nearer") << 1500.0F;
    QTest::newRow("farther") << 3900.0F;
}

void BodyCandidatesTest::aPersonOutsideTheBandIsNot() {
    QFETCH(float, depth_mm);
    DepthScene scene;
    scene.stand(256, 60, 340, depth_mm);
    QVERIFY(search(scene).isEmpty());
}

void BodyCandidatesTest::bothEndsOfTheBandCount() {
    QCOMPARE(search(notchedBlob(1600.0F)).size(), 1);
    QCOMPARE(search(notchedBlob(3800.0F)).size(), 1);
    QVERIFY(search(notchedBlob(std::nextafter(1600.0F, 0.0F))).isEmpty());
    QVERIFY(search(notchedBlob(std::nextafter(3800.0F, 9000.0F))).isEmpty());
}

void BodyCandidatesTest::aCellNeedsFourPixelsOfTheBand() {
    for (const int pixels : {3, 4}) {
        DepthScene scene;
        for (int cell = 0; cell < 10 * 20; ++cell) {
            const bool notch = cell % 10 < 2 && cell < 100;
            const QPoint corner(160 + cell % 10 * 4, 120 + cell / 10 * 4);
            // From the centre pixel rightwards and down, so that every cell gives a sample.
            for (int i = 0; i < pixels && !notch; ++i)
                scene.fill(QRect(corner + QPoint(2 + i % 2, 2 + i / 2), QSize(1, 1)), 2000.0F);
        }
        QCOMPARE(search(scene).size(), pixels == 4 ? 1 : 0);
    }
}

void BodyCandidatesTest::aUniformWallIsNoCandidate() {
    QVERIFY(search(DepthScene(512, 424, 2500.0F)).isEmpty());
    DepthScene cupboard;
    cupboard.fillCells(QRect(20, 20, 30, 60), 2500.0F);
    QVERIFY(search(cupboard).isEmpty());
}

void BodyCandidatesTest::diagonalNeighboursAreTwoBlobs() {
    DepthScene scene;
    scene.fillCells(QRect(40, 20, 10, 20), 2000.0F);
    scene.fillCells(QRect(40, 20, 2, 10), 0.0F);
    scene.fillCells(QRect(50, 40, 10, 20), 2300.0F); // meets the first one's corner
    scene.fillCells(QRect(58, 50, 2, 10), 0.0F);
    QCOMPARE(search(scene).size(), 2);
    scene.fillCells(QRect(50, 39, 1, 1), 2000.0F); // beside the first, above the second
    QCOMPARE(search(scene).size(), 1);
    QCOMPARE(search(scene)[0].cells, 361);
}

void BodyCandidatesTest::gatesAtTheirExactBounds_data() {
    QTest::addColumn<int>("cells");
    QTest::addColumn<int>("wide");
    QTest::addColumn<int>("high");
    QTest::addColumn<BodyGate>("expected");
    QTest::newRow("44 cells") << 44 << 8 << 10 << BodyGate::Cells;
    QTest::newRow("45 cells") << 45 << 8 << 10 << BodyGate::Passed;
    QTest::newRow("as tall as wide") << 90 << 10 << 10 << BodyGate::Upright;
    QTest::newRow("1.05 times as tall") << 300 << 20 << 21 << BodyGate::Passed;
    QTest::newRow("just below 1.05") << 350 << 21 << 22 << BodyGate::Upright;
    QTest::newRow("fill 0.1") << 50 << 20 << 25 << BodyGate::Passed;
    QTest::newRow("fill below 0.1") << 49 << 20 << 25 << BodyGate::Fill;
    QTest::newRow("fill 0.92") << 460 << 20 << 25 << BodyGate::Passed;
    QTest::newRow("fill above 0.92") << 461 << 20 << 25 << BodyGate::Fill;
    QTest::newRow("70 cells wide") << 3000 << 70 << 80 << BodyGate::Passed;
    QTest::newRow("71 cells wide") << 3000 << 71 << 80 << BodyGate::Width;
    QTest::newRow("100 cells high") << 3000 << 50 << 100 << BodyGate::Passed;
    QTest::newRow("101 cells high") << 3000 << 50 << 101 << BodyGate::Height;
}

void BodyCandidatesTest::gatesAtTheirExactBounds() {
    QFETCH(int, cells);
    QFETCH(int, wide);
    QFETCH(int, high);
    QFETCH(BodyGate, expected);
    QCOMPARE(failedBodyGate({QRect(5, 3, wide, high), cells}, QSize(128, 106)), expected);
}

void BodyCandidatesTest::fortyFourCellsAreTooFew() {
    for (const int cells : {44, 45}) {
        DepthScene scene;
        scene.fillCells(QRect(60, 30, 3, 15), 2000.0F);
        scene.fillCells(QRect(63, 30, 1, 1), 2000.0F); // one beside it, for the fill
        if (cells == 44)
            scene.fillCells(QRect(60, 43, 2, 2), 0.0F);
        else
            scene.fillCells(QRect(60, 44, 1, 1), 0.0F);
        if (cells == 44)
            scene.fillCells(QRect(64, 30, 2, 1), 2000.0F);
        QCOMPARE(search(scene, QSize(3840, 2160)).size(), cells == 45 ? 1 : 0);
    }
}

void BodyCandidatesTest::nineteenSamplesAreTooFew() {
    for (const int samples : {19, 20}) {
        DepthScene scene = notchedBlob(2000.0F);
        int left = samples;
        for (int cy = 30; cy < 50; ++cy) {
            for (int cx = 40; cx < 50; ++cx) {
                const bool notch = cx < 42 && cy < 40;
                if (!notch && left-- <= 0)
                    scene.fill(QRect(cx * 4 + 2, cy * 4 + 2, 1, 1), 0.0F);
            }
        }
        QCOMPARE(search(scene).size(), samples == 20 ? 1 : 0);
    }
}

void BodyCandidatesTest::theDistanceIsTheUpperMedian() {
    // 180 cells, so that there are two middle ones: the 91st of the ascending order counts.
    DepthScene scene = notchedBlob(2000.0F);
    int number = 0;
    for (int cy = 30; cy < 50; ++cy) {
        for (int cx = 40; cx < 50; ++cx) {
            if (cx >= 42 || cy >= 40)
                scene.fillCells(QRect(cx, cy, 1, 1), 1700.0F + float(number++ * 7 % 180));
        }
    }
    QCOMPARE(number, 180);
    const QList<BodyCandidate> found = search(scene);
    QCOMPARE(found.size(), 1);
    QCOMPARE(found[0].cells, 180);
    QCOMPARE(found[0].distance_m, 1.79);
}

void BodyCandidatesTest::tierChangesAtTwoPointTwoMetres() {
    QCOMPARE(search(notchedBlob(2200.0F)).value(0).tier, u"far body"_s);
    QCOMPARE(search(notchedBlob(2199.0F)).value(0).tier, u"mid body"_s);
    QCOMPARE(BodyCandidate().tier, u"far"_s);
}

void BodyCandidatesTest::theBoxHasMarginsForHeadAndFeet() {
    // Columns 160 … 199 of 512 are 600 … 750 of 1920; rows 120 … 199 of 424 are 305 … 509 of 1080.
    const QRect box = search(notchedBlob(2000.0F)).value(0).rect;
    QCOMPARE(box, QRect(600 - 30, 305 - 25, 150 + 60, 203 + 25 + 20));
}

void BodyCandidatesTest::aBlobAtTheBorderIsClipped() {
    DepthScene scene;
    scene.fillCells(QRect(0, 0, 10, 40), 2000.0F);
    scene.fillCells(QRect(0, 0, 4, 10), 0.0F);
    const QRect box = search(scene).value(0).rect;
    QCOMPARE(box.topLeft(), QPoint(0, 0));
    scene = DepthScene();
    scene.fillCells(QRect(118, 66, 10, 40), 2000.0F);
    scene.fillCells(QRect(118, 66, 4, 10), 0.0F);
    QCOMPARE(search(scene).value(0).rect.bottomRight(), QPoint(1919, 1079));
}

void BodyCandidatesTest::theClippedBoxIsMeasured_data() {
    QTest::addColumn<QPoint>("cell");
    QTest::addColumn<QSize>("colorSize");
    QTest::addColumn<QSize>("boxSize"); // null for the side that does not matter
    QTest::addColumn<bool>("found");
    // The blob is 10x20 cells, 0.078 of the width and 0.189 of the height. With both margins it
    // would always be large enough here.
    QTest::newRow("left, 54") << QPoint(0, 40) << QSize(588, 1080) << QSize(54, 0) << false;
    QTest::newRow("left, 55") << QPoint(0, 40) << QSize(589, 1080) << QSize(55, 0) << true;
    QTest::newRow("right, 54") << QPoint(118, 40) << QSize(576, 1080) << QSize(54, 0) << false;
    QTest::newRow("right, 55") << QPoint(118, 40) << QSize(577, 1080) << QSize(55, 0) << true;
    QTest::newRow("bottom, 119") << QPoint(60, 86) << QSize(1920, 561) << QSize(0, 119) << false;
    QTest::newRow("bottom, 120") << QPoint(60, 86) << QSize(1920, 562) << QSize(0, 120) << true;
    QTest::newRow("top, 119") << QPoint(60, 0) << QSize(1920, 582) << QSize(0, 119) << false;
    QTest::newRow("top, 121") << QPoint(60, 0) << QSize(1920, 583) << QSize(0, 121) << true;
}

void BodyCandidatesTest::theClippedBoxIsMeasured() {
    QFETCH(QPoint, cell);
    QFETCH(QSize, colorSize);
    QFETCH(QSize, boxSize);
    QFETCH(bool, found);
    DepthScene scene;
    scene.fillCells(QRect(cell, QSize(10, 20)), 2000.0F);
    scene.fillCells(QRect(cell, QSize(2, 10)), 0.0F);
    const QList<BodyCandidate> candidates = search(scene, colorSize);
    QCOMPARE(candidates.size(), found ? 1 : 0);
    if (!found)
        return;
    const QRect box = candidates[0].rect;
    QCOMPARE(QSize(boxSize.width() ? box.width() : 0, boxSize.height() ? box.height() : 0),
             boxSize);
}

void BodyCandidatesTest::aClippedBoxMayBeTooSmall_data() {
    QTest::addColumn<QSize>("colorSize");
    QTest::addColumn<int>("expected");
    // The blob of notchedBlob is 0.078 of the width, 0.19 of the height, before its margins.
    QTest::newRow("55x120") << QSize(512, 528) << 1;
    QTest::newRow("54 wide") << QSize(500, 1080) << 0;
    QTest::newRow("119 high") << QSize(1920, 518) << 0;
}

void BodyCandidatesTest::aClippedBoxMayBeTooSmall() {
    QFETCH(QSize, colorSize);
    QFETCH(int, expected);
    QCOMPARE(search(notchedBlob(2000.0F), colorSize).size(), expected);
}

void BodyCandidatesTest::theFourTallestComeTallestFirst() {
    DepthScene scene;
    const std::array heights{20, 28, 16, 24, 32};
    for (int i = 0; i < 5; ++i) {
        scene.fillCells(QRect(4 + i * 20, 20, 8, heights[size_t(i)]), 2000.0F + 100.0F * float(i));
        scene.fillCells(QRect(4 + i * 20, 20, 3, 8), 0.0F);
    }
    QList<double> distances;
    for (const BodyCandidate& candidate : search(scene))
        distances.append(candidate.distance_m);
    QCOMPARE(distances, QList<double>({2.4, 2.1, 2.3, 2.0}));
}

void BodyCandidatesTest::unusableArgumentsGiveNothing_data() {
    QTest::addColumn<int>("length");
    QTest::addColumn<QSize>("depth");
    QTest::addColumn<QSize>("color");
    QTest::newRow("empty list") << 0 << QSize(512, 424) << fullHd;
    QTest::newRow("list one short") << 512 * 424 - 1 << QSize(512, 424) << fullHd;
    QTest::newRow("width 0") << 100 << QSize(0, 424) << fullHd;
    QTest::newRow("height negative") << 100 << QSize(512, -1) << fullHd;
    QTest::newRow("width 3") << 0 << QSize(3, 424) << fullHd;
    QTest::newRow("height 3") << 0 << QSize(512, 3) << fullHd;
    QTest::newRow("no colour image") << 512 * 424 << QSize(512, 424) << QSize(0, 0);
    QTest::newRow("null colour size") << 512 * 424 << QSize(512, 424) << QSize();
    QTest::newRow("sizes whose product overflows")
        << 100 << QSize(std::numeric_limits<int>::max(), std::numeric_limits<int>::max()) << fullHd;
}

void BodyCandidatesTest::unusableArgumentsGiveNothing() {
    QFETCH(int, length);
    QFETCH(QSize, depth);
    QFETCH(QSize, color);
    DepthScene scene;
    scene.stand(250, 100, 250, 2000.0F);
    scene.mm.resize(length);
    QVERIFY(detectDepthBodyCandidates({scene.mm, depth.width(), depth.height()}, color).isEmpty());
}

void BodyCandidatesTest::equalsThePlainSearchOnRandomFrames_data() {
    QTest::addColumn<QSize>("depth");
    QTest::addColumn<int>("blockSize");
    QTest::newRow("sensor size, noise") << QSize(512, 424) << 1;
    QTest::newRow("sensor size, specks") << QSize(512, 424) << 5;
    QTest::newRow("sensor size, blobs") << QSize(512, 424) << 17;
    QTest::newRow("sensor size, large blobs") << QSize(512, 424) << 60;
    QTest::newRow("odd size") << QSize(519, 203) << 9;
    QTest::newRow("one word of cells") << QSize(256, 300) << 11;
    QTest::newRow("a cell more than a word") << QSize(260, 300) << 11;
    QTest::newRow("narrow") << QSize(7, 2000) << 3;
    QTest::newRow("one cell") << QSize(4, 4) << 2;
}

void BodyCandidatesTest::equalsThePlainSearchOnRandomFrames() {
    QFETCH(QSize, depth);
    QFETCH(int, blockSize);
    std::mt19937 random(20240607);
    int found = 0;
    for (int round = 0; round < 12; ++round) {
        DepthScene scene(depth.width(), depth.height());
        const unsigned share = 20 + 6 * unsigned(round);
        for (int y = 0; y < depth.height(); y += blockSize) {
            for (int x = 0; x < depth.width(); x += blockSize) {
                const bool inBand = random() % 100 < share;
                const float mm = inBand ? 1600.0F + float(random() % 2201) : float(random() % 1600);
                scene.fill(QRect(x, y, blockSize, blockSize), mm);
            }
        }
        const QSize color(1920 + 13 * round, 1080 + 7 * round);
        const QList<BodyCandidate> expected =
            plain::bodyCandidates(scene.mm, scene.width, scene.height, color);
        QCOMPARE(textOf(search(scene, color)), textOf(expected));
        found += int(expected.size());
    }
    if (blockSize == 17)
        QVERIFY2(found > 0, "these frames are meant to hold candidates");
}

void BodyCandidatesTest::equalsThePlainSearchOnWindingShapes() {
    // A comb, a spiral and rings: shapes whose parts are joined late or inside each other.
    DepthScene comb;
    for (int x = 10; x < 60; x += 2)
        comb.fillCells(QRect(x, 10, 1, 60), 2000.0F + float(x));
    comb.fillCells(QRect(10, 70, 50, 1), 2100.0F);
    QCOMPARE(textOf(search(comb)), textOf(plain::bodyCandidates(comb.mm, 512, 424, fullHd)));
    QCOMPARE(search(comb).size(), 1);

    DepthScene rings;
    for (int ring = 0; ring < 12; ring += 2) {
        const QRect outer(20 + ring, 10 + ring, 30 - 2 * ring, 50 - 2 * ring);
        rings.fillCells(outer, 2000.0F + float(ring));
        rings.fillCells(outer.adjusted(1, 1, -1, -1), 0.0F);
    }
    QCOMPARE(textOf(search(rings)), textOf(plain::bodyCandidates(rings.mm, 512, 424, fullHd)));
    QCOMPARE(search(rings).size(), 4);

    DepthScene spiral;
    QRect turn(20, 5, 60, 90);
    while (turn.width() > 8) {
        spiral.fillCells(QRect(turn.left(), turn.top(), turn.width(), 1), 2000.0F);
        spiral.fillCells(QRect(turn.right(), turn.top(), 1, turn.height()), 2100.0F);
        spiral.fillCells(QRect(turn.left() + 2, turn.bottom(), turn.width() - 2, 1), 2200.0F);
        spiral.fillCells(QRect(turn.left() + 2, turn.top() + 2, 1, turn.height() - 2), 2300.0F);
        turn.adjust(2, 2, -2, -2);
    }
    QCOMPARE(textOf(search(spiral)), textOf(plain::bodyCandidates(spiral.mm, 512, 424, fullHd)));
}

void BodyCandidatesTest::hostileValuesStayInsideTheImage() {
    constexpr std::array values{0.0F,    -0.0F,      -1.0F,  1e-45F,  1e38F,   infinity, -infinity,
                                1600.0F, notANumber, 3.8e3F, 2000.0F, 2500.0F, 1999.5F};
    std::mt19937 random(7);
    const int rounds = qEnvironmentVariableIsSet("LUMENO_LONG_TESTS") ? 4000 : 60;
    for (int round = 0; round < rounds; ++round) {
        const int width = 1 + int(random() % 700);
        const int height = 1 + int(random() % 500);
        const int block = 1 + int(random() % 40);
        DepthScene scene(width, height);
        for (int y = 0; y < height; y += block) {
            for (int x = 0; x < width; x += block)
                scene.fill(QRect(x, y, block, block), values[random() % values.size()]);
        }
        if (round % 5 == 0)
            scene.mm.resize(scene.mm.size() * qsizetype(random() % 3) / 2);
        const QSize color(1 + int(random() % 4000), 1 + int(random() % 3000));
        const QList<BodyCandidate> found = search(scene, color);
        QVERIFY(found.size() <= 4);
        for (const BodyCandidate& candidate : found) {
            QVERIFY(QRect(QPoint(0, 0), color).contains(candidate.rect));
            QVERIFY(candidate.distance_m >= 1.6 && candidate.distance_m <= 3.8);
        }
        QCOMPARE(textOf(found),
                 textOf(plain::bodyCandidates(scene.mm, scene.width, scene.height, color)));
    }
}

void BodyCandidatesTest::hugeImagesDoNotOverflow() {
    constexpr int most = std::numeric_limits<int>::max();
    DepthScene scene;
    scene.fillCells(QRect(64, 10, 64, 90), 2000.0F);
    scene.fillCells(QRect(64, 10, 32, 40), 0.0F);
    const QList<BodyCandidate> found = search(scene, QSize(most, most));
    QCOMPARE(found.size(), 1);
    QCOMPARE(found[0].rect.right(), most - 1);
}

QTEST_APPLESS_MAIN(BodyCandidatesTest)
#include "body_candidates_test.moc"
