#include "kinect/frame_conversion.h"
#include "kinect/frame_kernels.h"

#include "support/plain_conversion.h"

#include <QTest>

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

using Bytes = std::vector<unsigned char>;
using Floats = QList<float>;

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float largest = std::numeric_limits<float>::max();
constexpr float denormal = std::numeric_limits<float>::denorm_min();

FrameView viewOf(const void* data, int width, int height) {
    return {static_cast<const unsigned char*>(data), static_cast<std::size_t>(width),
            static_cast<std::size_t>(height), 4, false};
}

FrameView viewOf(const Floats& floats, int width, int height) {
    return viewOf(floats.constData(), width, height);
}

const unsigned char* bytesOf(const Floats& floats) {
    return reinterpret_cast<const unsigned char*>(floats.constData());
}

/// The R, G, B of one pixel, for a message that can be read.
QList<int> rgbAt(const QImage& image, int x, int y = 0) {
    const uchar* pixel = image.constScanLine(y) + x * 3;
    return {pixel[0], pixel[1], pixel[2]};
}

/// Every bit pattern equally likely: all kinds of floats, NaN and infinities among them.
Floats anyFloats(int count, unsigned seed) {
    std::mt19937 random(seed);
    Floats floats(count);
    for (float& value : floats)
        value = std::bit_cast<float>(static_cast<quint32>(random()));
    return floats;
}

Floats uniform(int count, float from, float to, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> distribution(from, to);
    Floats floats(count);
    for (float& value : floats)
        value = distribution(random);
    return floats;
}

} // namespace

/// Every kernel that this processor can run is held against the plain loops.
class FrameConversionTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void unusableFrameGivesNullImage_data();
    void unusableFrameGivesNullImage();
    void colorBytesAreReordered();
    void colorEqualsPlainLoop_data();
    void colorEqualsPlainLoop();
    void infraredKnownFrames_data();
    void infraredKnownFrames();
    void infraredWithoutRangeIsNull_data();
    void infraredWithoutRangeIsNull();
    void infraredEqualsPlainLoop_data();
    void infraredEqualsPlainLoop();
    void depthKnownColors_data();
    void depthKnownColors();
    void depthWithoutValidPixelIsNull();
    void oneValidDepthKeepsTheImage();
    void depthEqualsPlainLoop_data();
    void depthEqualsPlainLoop();
    void everyDepthFrom240To8100EqualsPlainLoop();
    void unalignedFramesConvert();
    void rawDepthIsTheFrameItself();
    void rawDepthNeedsDataAndFourBytes();
    void imageThatSomebodyHoldsIsNotWrittenAgain();
    void depthListThatSomebodyHoldsIsNotWrittenAgain();
};

void FrameConversionTest::unusableFrameGivesNullImage_data() {
    static const Floats floats{1000.0F, 2000.0F, 3000.0F, 4000.0F};
    QTest::addColumn<FrameView>("frame");
    FrameView frame = viewOf(floats, 2, 2);
    frame.data = nullptr;
    QTest::newRow("no data") << frame;
    frame = viewOf(floats, 0, 2);
    QTest::newRow("no width") << frame;
    frame = viewOf(floats, 2, 0);
    QTest::newRow("no height") << frame;
    frame = viewOf(floats, 2, 2);
    frame.bytesPerPixel = 3;
    QTest::newRow("three bytes per pixel") << frame;
    frame.bytesPerPixel = 8;
    QTest::newRow("eight bytes per pixel") << frame;
    frame = FrameView();
    QTest::newRow("nothing") << frame;
}

void FrameConversionTest::unusableFrameGivesNullImage() {
    QFETCH(FrameView, frame);
    FrameConverter converter;
    QVERIFY(!isUsable(frame));
    QVERIFY(converter.color(frame).isNull());
    QVERIFY(converter.infrared(frame).isNull());
    QVERIFY(converter.depth(frame).isNull());
}

void FrameConversionTest::colorBytesAreReordered() {
    const Bytes bytes{10, 20, 30, 99, 40, 50, 60, 98};
    FrameConverter converter;
    FrameView frame = viewOf(bytes.data(), 2, 1);
    const QImage bgrx = converter.color(frame);
    QCOMPARE(bgrx.format(), QImage::Format_RGB888);
    QCOMPARE(bgrx.size(), QSize(2, 1));
    QCOMPARE(rgbAt(bgrx, 0), (QList<int>{30, 20, 10}));
    QCOMPARE(rgbAt(bgrx, 1), (QList<int>{60, 50, 40}));
    frame.rgbx = true;
    const QImage rgbx = converter.color(frame);
    QCOMPARE(rgbAt(rgbx, 0), (QList<int>{10, 20, 30}));
    QCOMPARE(rgbAt(rgbx, 1), (QList<int>{40, 50, 60}));
}

void FrameConversionTest::colorEqualsPlainLoop_data() {
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    for (const QSize size :
         {QSize(1, 1), QSize(3, 5), QSize(15, 2), QSize(16, 2), QSize(17, 2), QSize(63, 3),
          QSize(64, 3), QSize(65, 3), QSize(1, 200), QSize(333, 7), QSize(1920, 20)})
        QTest::addRow("%dx%d", size.width(), size.height()) << size.width() << size.height();
}

void FrameConversionTest::colorEqualsPlainLoop() {
    QFETCH(int, width);
    QFETCH(int, height);
    std::mt19937 random(3);
    Bytes bytes(plain::pixelIndex(0, height, width) * 4);
    for (unsigned char& byte : bytes)
        byte = static_cast<unsigned char>(random());
    for (const FrameKernels& kernels : supportedFrameKernels()) {
        FrameConverter converter(kernels);
        FrameView frame = viewOf(bytes.data(), width, height);
        for (const bool rgbx : {false, true}) {
            frame.rgbx = rgbx;
            QVERIFY2(converter.color(frame) == plain::color(bytes.data(), width, height, rgbx),
                     kernels.name);
        }
    }
}

void FrameConversionTest::infraredKnownFrames_data() {
    QTest::addColumn<Floats>("values");
    QTest::addColumn<QList<int>>("greys");
    // 100 to 5000 ends at 4265: a range of 4165, by the formula 4165 * (255 / 4165).
    QTest::newRow("the top of a wide range is cut")
        << Floats{100.0F, 5000.0F, 4265.0F, 4265.5F, 4264.0F, 2182.5F}
        << QList<int>{0, 255, 255, 255, 254, 127};
    // 100 to 600 keeps its range of 500 and the scale 0.51.
    QTest::newRow("a narrow range is kept")
        << Floats{100.0F, 600.0F, 350.0F, 102.0F, 101.0F} << QList<int>{0, 255, 127, 1, 0};
    // 100 to 1400: 85 % are 1105, less than 1200, so it ends at 1300.
    QTest::newRow("at least 1200 units stay")
        << Floats{100.0F, 1400.0F, 1300.0F, 1299.0F, 700.0F} << QList<int>{0, 255, 255, 254, 127};
    QTest::newRow("a range of exactly 1200 is not cut")
        << Floats{100.0F, 1300.0F, 1299.0F} << QList<int>{0, 255, 254};
    QTest::newRow("a range of 1 or less has scale 255")
        << Floats{10.0F, 10.5F, 10.25F} << QList<int>{0, 127, 63};
    QTest::newRow("invalid values are black and do not count")
        << Floats{notANumber, infinity, -infinity, -5.0F, 0.0F, 100.0F, 600.0F, -0.0F}
        << QList<int>{0, 0, 0, 0, 0, 0, 255, 0};
    QTest::newRow("denormals count")
        << Floats{denormal, 1000.0F, 500.0F} << QList<int>{0, 255, 127};
    QTest::newRow("the largest float counts")
        << Floats{1.0F, largest, largest * 0.399F} << QList<int>{0, 255, 119};
}

void FrameConversionTest::infraredKnownFrames() {
    QFETCH(Floats, values);
    QFETCH(QList<int>, greys);
    const int width = static_cast<int>(values.size());
    for (const FrameKernels& kernels : supportedFrameKernels()) {
        const QImage image = FrameConverter(kernels).infrared(viewOf(values, width, 1));
        QCOMPARE(image.format(), QImage::Format_RGB888);
        QVERIFY(image == plain::infrared(bytesOf(values), width, 1));
        for (int x = 0; x < width; ++x)
            QCOMPARE(rgbAt(image, x), (QList<int>{greys[x], greys[x], greys[x]}));
    }
}

void FrameConversionTest::infraredWithoutRangeIsNull_data() {
    QTest::addColumn<Floats>("values");
    QTest::newRow("all zero") << Floats{0.0F, 0.0F, 0.0F, 0.0F};
    QTest::newRow("one value") << Floats{500.0F};
    QTest::newRow("all equal") << Floats{500.0F, 500.0F, 500.0F, 500.0F};
    QTest::newRow("one valid value") << Floats{0.0F, 500.0F, notANumber, -1.0F};
    QTest::newRow("none valid") << Floats{notANumber, infinity, -infinity, -1.0F, -0.0F, -largest};
    QTest::newRow("negative NaN") << Floats{std::copysign(notANumber, -1.0F), 0.0F};
}

void FrameConversionTest::infraredWithoutRangeIsNull() {
    QFETCH(Floats, values);
    for (const FrameKernels& kernels : supportedFrameKernels()) {
        FrameConverter converter(kernels);
        QVERIFY(converter.infrared(viewOf(values, static_cast<int>(values.size()), 1)).isNull());
    }
}

void FrameConversionTest::infraredEqualsPlainLoop_data() {
    QTest::addColumn<Floats>("values");
    QTest::addColumn<int>("width");
    QTest::newRow("any bits") << anyFloats(512 * 40, 1) << 512;
    QTest::newRow("any bits, odd width") << anyFloats(77 * 31, 2) << 77;
    QTest::newRow("any bits, one column") << anyFloats(500, 3) << 1;
    QTest::newRow("sensor's range") << uniform(512 * 100, 0.0F, 65535.0F, 4) << 512;
    QTest::newRow("narrow range") << uniform(512 * 100, 100.0F, 1250.0F, 5) << 512;
    QTest::newRow("just over 1200") << uniform(512 * 100, 1.0F, 1201.5F, 6) << 512;
    QTest::newRow("85 % are about 1200") << uniform(512 * 100, 1.0F, 1412.8F, 7) << 512;
    QTest::newRow("less than one unit") << uniform(512 * 100, 3.0F, 3.9F, 8) << 512;
    QTest::newRow("about one unit") << uniform(512 * 100, 3.0F, 4.001F, 9) << 512;
    QTest::newRow("around zero") << uniform(512 * 100, -100.0F, 3000.0F, 10) << 512;
    QTest::newRow("denormals") << uniform(640, 0.0F, 1e-38F, 11) << 64;
    QTest::newRow("huge") << uniform(640, 1e37F, 3e38F, 12) << 64;
    Floats mixed = uniform(512 * 50, 50.0F, 9000.0F, 13);
    for (int i = 0; i < mixed.size(); i += 7)
        mixed[i] = QList<float>{notANumber, infinity, -infinity, 0.0F, -1.0F, -0.0F}[i / 7 % 6];
    QTest::newRow("with holes") << mixed << 512;
}

void FrameConversionTest::infraredEqualsPlainLoop() {
    QFETCH(Floats, values);
    QFETCH(int, width);
    const int height = static_cast<int>(values.size()) / width;
    const QImage expected = plain::infrared(bytesOf(values), width, height);
    QVERIFY(!expected.isNull());
    for (const FrameKernels& kernels : supportedFrameKernels()) {
        FrameConverter converter(kernels);
        QVERIFY2(converter.infrared(viewOf(values, width, height)) == expected, kernels.name);
    }
}

void FrameConversionTest::depthKnownColors_data() {
    QTest::addColumn<float>("millimetres");
    QTest::addColumn<QList<int>>("rgb");
    const QList<int> black{0, 0, 0};
    const QList<int> darkRed{127, 0, 0};
    const QList<int> darkBlue{0, 0, 127};
    QTest::newRow("249.9") << 249.9F << black;
    QTest::newRow("250") << 250.0F << darkRed;
    QTest::newRow("500") << 500.0F << darkRed;
    QTest::newRow("1000") << 1000.0F << QList<int>{255, 0, 0};
    QTest::newRow("2500") << 2500.0F << QList<int>{125, 255, 129};
    QTest::newRow("4000") << 4000.0F << QList<int>{0, 0, 251};
    QTest::newRow("4500") << 4500.0F << darkBlue;
    QTest::newRow("8000") << 8000.0F << darkBlue;
    QTest::newRow("8000.1") << 8000.1F << black;
    QTest::newRow("no reading") << 0.0F << black;
    QTest::newRow("negative") << -1000.0F << black;
    QTest::newRow("NaN") << notANumber << black;
    QTest::newRow("infinity") << infinity << black;
    QTest::newRow("negative infinity") << -infinity << black;
    QTest::newRow("denormal") << denormal << black;
}

void FrameConversionTest::depthKnownColors() {
    QFETCH(float, millimetres);
    QFETCH(QList<int>, rgb);
    const Floats values{millimetres, 1000.0F}; // the second keeps the image from being null
    for (const FrameKernels& kernels : supportedFrameKernels()) {
        const QImage image = FrameConverter(kernels).depth(viewOf(values, 2, 1));
        QCOMPARE(image.format(), QImage::Format_RGB888);
        QCOMPARE(rgbAt(image, 0), rgb);
    }
}

void FrameConversionTest::depthWithoutValidPixelIsNull() {
    for (const Floats& values :
         {Floats{0.0F}, Floats{249.9F, 8000.1F, notANumber, infinity, 0.0F, -500.0F},
          Floats(512 * 3, 0.0F)}) {
        for (const FrameKernels& kernels : supportedFrameKernels()) {
            FrameConverter converter(kernels);
            const FrameView frame = viewOf(values, static_cast<int>(values.size()), 1);
            QVERIFY(converter.depth(frame).isNull());
            QCOMPARE(converter.rawDepth(frame).size(), values.size());
        }
    }
}

void FrameConversionTest::oneValidDepthKeepsTheImage() {
    for (const int position : {0, 63, 64, 700, 1023}) {
        Floats values(1024, 0.0F);
        values[position] = 8000.0F;
        for (const FrameKernels& kernels : supportedFrameKernels()) {
            FrameConverter converter(kernels);
            QVERIFY(converter.depth(viewOf(values, 512, 2)) ==
                    plain::depth(bytesOf(values), 512, 2));
        }
    }
}

void FrameConversionTest::depthEqualsPlainLoop_data() {
    QTest::addColumn<Floats>("values");
    QTest::addColumn<int>("width");
    QTest::newRow("any bits") << anyFloats(512 * 40, 21) << 512;
    QTest::newRow("sensor's range") << uniform(512 * 100, 0.0F, 9000.0F, 22) << 512;
    QTest::newRow("odd width") << uniform(77 * 31, 0.0F, 9000.0F, 23) << 77;
    QTest::newRow("one column") << uniform(500, 0.0F, 9000.0F, 24) << 1;
    QTest::newRow("one pixel") << Floats{1234.5F} << 1;
}

void FrameConversionTest::depthEqualsPlainLoop() {
    QFETCH(Floats, values);
    QFETCH(int, width);
    const int height = static_cast<int>(values.size()) / width;
    const QImage expected = plain::depth(bytesOf(values), width, height);
    QVERIFY(!expected.isNull());
    for (const FrameKernels& kernels : supportedFrameKernels()) {
        FrameConverter converter(kernels);
        QVERIFY2(converter.depth(viewOf(values, width, height)) == expected, kernels.name);
    }
}

/// All floats there are: positive ones are ordered as their bit patterns are.
void FrameConversionTest::everyDepthFrom240To8100EqualsPlainLoop() {
    constexpr int width = 1 << 15;
    const auto first = std::bit_cast<quint32>(240.0F);
    const auto last = std::bit_cast<quint32>(8100.0F);
    Floats row(width);
    Bytes expected(std::size_t{width} * 3);
    for (quint32 bits = first; bits <= last; bits += width) {
        bool anyValid = false;
        for (int x = 0; x < width; ++x) {
            row[x] = std::bit_cast<float>(bits + static_cast<quint32>(x));
            const bool valid =
                plain::depthColor(row[x], &expected[static_cast<std::size_t>(x) * 3]);
            anyValid = anyValid || valid;
        }
        for (const FrameKernels& kernels : supportedFrameKernels()) {
            const QImage image = FrameConverter(kernels).depth(viewOf(row, width, 1));
            QCOMPARE(image.isNull(), !anyValid);
            QVERIFY2(image.isNull() ||
                         std::memcmp(image.constScanLine(0), expected.data(), expected.size()) == 0,
                     kernels.name);
        }
    }
}

void FrameConversionTest::unalignedFramesConvert() {
    const Floats values = uniform(130 * 3, 300.0F, 4000.0F, 31);
    const QImage depth = plain::depth(bytesOf(values), 130, 3);
    const QImage infrared = plain::infrared(bytesOf(values), 130, 3);
    for (const FrameKernels& kernels : supportedFrameKernels()) {
        FrameConverter converter(kernels);
        Bytes bytes(static_cast<std::size_t>(values.size()) * 4 + 1);
        std::memcpy(bytes.data() + 1, values.constData(), bytes.size() - 1);
        const FrameView frame = viewOf(bytes.data() + 1, 130, 3);
        QVERIFY(converter.depth(frame) == depth);
        QVERIFY(converter.infrared(frame) == infrared);
        QVERIFY(converter.color(frame) == plain::color(frame.data, 130, 3, false));
    }
}

void FrameConversionTest::rawDepthIsTheFrameItself() {
    const Floats values{0.0F, -1.0F, notANumber, infinity, 1234.5F, denormal};
    FrameConverter converter;
    const Floats copy = converter.rawDepth(viewOf(values, 3, 2));
    QCOMPARE(copy.size(), values.size());
    QVERIFY(std::memcmp(copy.constData(), values.constData(), sizeof(float) * 6) == 0);
}

void FrameConversionTest::rawDepthNeedsDataAndFourBytes() {
    FrameConverter converter;
    const Floats values{1.0F, 2.0F};
    FrameView frame = viewOf(values, 2, 1);
    QCOMPARE(converter.rawDepth(frame), values);
    frame.bytesPerPixel = 2;
    QVERIFY(converter.rawDepth(frame).isEmpty());
    frame = viewOf(values, 2, 0);
    QVERIFY(converter.rawDepth(frame).isEmpty());
    frame = viewOf(values, 2, 1);
    frame.data = nullptr;
    QVERIFY(converter.rawDepth(frame).isEmpty());
}

void FrameConversionTest::imageThatSomebodyHoldsIsNotWrittenAgain() {
    FrameConverter converter;
    QList<QImage> held;
    QList<QImage> expected;
    for (unsigned char shade = 0; shade < 20; ++shade) {
        const Bytes bytes(64 * 4, shade);
        held.append(converter.color(viewOf(bytes.data(), 8, 8)));
        expected.append(plain::color(bytes.data(), 8, 8, false));
    }
    QCOMPARE(held, expected);
}

void FrameConversionTest::depthListThatSomebodyHoldsIsNotWrittenAgain() {
    FrameConverter converter;
    QList<Floats> held;
    QList<Floats> expected;
    for (int i = 0; i < 20; ++i) {
        expected.append(Floats{static_cast<float>(i), 2.0F});
        held.append(converter.rawDepth(viewOf(expected.last(), 2, 1)));
    }
    QCOMPARE(held, expected);
}

QTEST_APPLESS_MAIN(FrameConversionTest)
#include "frame_conversion_test.moc"
