#include "ui/smooth_shrinking.h"

#include <QRandomGenerator>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QImage noise(const QSize& size, QImage::Format format, quint32 seed) {
    QRandomGenerator random(seed);
    QImage image(size, format);
    for (int y = 0; y < size.height(); ++y)
        random.fillRange(reinterpret_cast<quint32*>(image.scanLine(y)), image.bytesPerLine() / 4);
    return image;
}

QImage scaledByQt(const QImage& source, const QSize& size) {
    return source.convertToFormat(QImage::Format_RGB32)
        .scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

bool supported() {
    return !smoothlyShrunk(noise(QSize(4, 4), QImage::Format_RGB32, 1), QSize(2, 2)).isNull();
}

} // namespace

class SmoothShrinkingTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void pixelsAreThoseOfQImage_data();
    void pixelsAreThoseOfQImage();
    void pixelsOfManySizesAreThoseOfQImage_data();
    void pixelsOfManySizesAreThoseOfQImage();
    void partsOfAnImageAreReadWithinTheirBounds();
    void whatItIsNotMadeForIsLeftToQImage_data();
    void whatItIsNotMadeForIsLeftToQImage();
};

void SmoothShrinkingTest::pixelsAreThoseOfQImage_data() {
    QTest::addColumn<QSize>("from");
    QTest::addColumn<QSize>("to");
    QTest::newRow("colour in a large tile") << QSize(1920, 1080) << QSize(1258, 708);
    QTest::newRow("colour in Combo") << QSize(1920, 1080) << QSize(690, 388);
    QTest::newRow("colour one smaller") << QSize(1920, 1080) << QSize(1919, 1079);
    QTest::newRow("colour by half") << QSize(1920, 1080) << QSize(960, 540);
    QTest::newRow("colour very small") << QSize(1920, 1080) << QSize(13, 7);
    QTest::newRow("depth in Combo") << QSize(512, 424) << QSize(178, 147);
    QTest::newRow("to one pixel") << QSize(512, 424) << QSize(1, 1);
    QTest::newRow("a tall one") << QSize(2, 3000) << QSize(1, 90);
    QTest::newRow("two by two") << QSize(2, 2) << QSize(1, 1);
}

void SmoothShrinkingTest::pixelsAreThoseOfQImage() {
    QFETCH(QSize, from);
    QFETCH(QSize, to);
    if (!supported())
        QSKIP("this processor leaves it to QImage");
    const QImage rgb888 = noise(from, QImage::Format_RGB888, 3);
    QCOMPARE(smoothlyShrunk(rgb888, to), scaledByQt(rgb888, to));
    const QImage rgb32 = noise(from, QImage::Format_RGB32, 4); // its fourth bytes are noise too
    QCOMPARE(smoothlyShrunk(rgb32, to), scaledByQt(rgb32, to));
}

void SmoothShrinkingTest::pixelsOfManySizesAreThoseOfQImage_data() {
    QTest::addColumn<QImage::Format>("format");
    QTest::newRow("RGB888") << QImage::Format_RGB888;
    QTest::newRow("RGB32") << QImage::Format_RGB32;
}

void SmoothShrinkingTest::pixelsOfManySizesAreThoseOfQImage() {
    QFETCH(QImage::Format, format);
    if (!supported())
        QSKIP("this processor leaves it to QImage");
    QRandomGenerator random(5);
    for (quint32 round = 0; round < 300; ++round) {
        const QSize from(random.bounded(2, 200), random.bounded(2, 150));
        const QSize to(random.bounded(1, from.width()), random.bounded(1, from.height()));
        const QImage source = noise(from, format, round);
        QVERIFY2(smoothlyShrunk(source, to) == scaledByQt(source, to),
                 qPrintable(u"%1x%2 to %3x%4"_s.arg(from.width())
                                .arg(from.height())
                                .arg(to.width())
                                .arg(to.height())));
    }
}

void SmoothShrinkingTest::partsOfAnImageAreReadWithinTheirBounds() {
    if (!supported())
        QSKIP("this processor leaves it to QImage");
    const QImage whole = noise(QSize(101, 40), QImage::Format_RGB888, 6);
    const QRect part(34, 9, 67, 31); // ends with the buffer
    const QImage view(whole.constScanLine(part.top()) + qsizetype(part.left()) * 3, part.width(),
                      part.height(), whole.bytesPerLine(), whole.format());
    QCOMPARE(smoothlyShrunk(view, QSize(31, 17)), scaledByQt(whole.copy(part), QSize(31, 17)));
}

void SmoothShrinkingTest::whatItIsNotMadeForIsLeftToQImage_data() {
    QTest::addColumn<QImage>("source");
    QTest::addColumn<QSize>("size");
    const QImage colour = noise(QSize(20, 10), QImage::Format_RGB888, 1);
    QTest::newRow("larger") << colour << QSize(40, 20);
    QTest::newRow("same width") << colour << QSize(20, 5);
    QTest::newRow("same height") << colour << QSize(5, 10);
    QTest::newRow("empty") << colour << QSize(0, 5);
    QTest::newRow("negative") << colour << QSize(-3, -3);
    QTest::newRow("null") << QImage() << QSize(5, 5);
    QTest::newRow("grey") << colour.convertToFormat(QImage::Format_Grayscale8) << QSize(5, 5);
    QTest::newRow("with alpha") << colour.convertToFormat(QImage::Format_ARGB32_Premultiplied)
                                << QSize(5, 5);
}

void SmoothShrinkingTest::whatItIsNotMadeForIsLeftToQImage() {
    QFETCH(QImage, source);
    QFETCH(QSize, size);
    QVERIFY(smoothlyShrunk(source, size).isNull());
}

QTEST_APPLESS_MAIN(SmoothShrinkingTest)

#include "smooth_shrinking_test.moc"
