#include "ui/fitted_picture.h"
#include "ui/stream_frame.h"

#include <QTest>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

/// Every pixel differs from its neighbours; `seed` makes another picture of the same kind.
QImage patternedImage(const QSize& size, QImage::Format format, int seed = 0) {
    QImage image(size, QImage::Format_ARGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y,
                           qRgba((x * 7 + seed) & 255, (y * 5 + x * y) & 255, (x ^ y) & 255,
                                 255 - ((x + y) & 63)));
    }
    return image.convertToFormat(format);
}

} // namespace

class StreamFrameTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aNullImageGivesANullFrame();
    void pixelsOfEveryFormatAreKept_data();
    void pixelsOfEveryFormatAreKept();
    void rowsMayLieApart_data();
    void rowsMayLieApart();
    void theSendersBufferIsNeverShared();
    void theDevicePixelRatioOfAnImageIsDropped();
    void aCropIsAViewOfTheSamePixels();
    void aCropOutsideIsNull();
    void theViewKeepsThePixelsAlive();
    void aRecycledBufferIsNeverOneThatIsStillHeld();
    void aRecycledBufferIsUsedAgain();
    void everyFrameHasAnIdentityOfItsOwn();
    void aFittedPictureIsMadeOnceForTheSameQuestion();
    void aFittedPictureFollowsFramePartAndArea();
};

void StreamFrameTest::aNullImageGivesANullFrame() {
    const StreamFrame frame{QImage()};
    QVERIFY(frame.isNull());
    QVERIFY(frame.image().isNull());
    QVERIFY(frame.cropped(QRect(0, 0, 10, 10)).isNull());
    QCOMPARE(frame.size(), QSize(0, 0));
    QVERIFY(FittedPicture().fit(frame, QSize(10, 10)).isNull());
}

void StreamFrameTest::pixelsOfEveryFormatAreKept_data() {
    QTest::addColumn<QImage::Format>("format");
    QTest::addColumn<QImage::Format>("kept");
    QTest::newRow("RGB888") << QImage::Format_RGB888 << QImage::Format_RGB888;
    QTest::newRow("RGB32") << QImage::Format_RGB32 << QImage::Format_RGB32;
    QTest::newRow("BGR888") << QImage::Format_BGR888 << QImage::Format_RGB32;
    QTest::newRow("ARGB32") << QImage::Format_ARGB32 << QImage::Format_ARGB32_Premultiplied;
    QTest::newRow("ARGB32 premultiplied")
        << QImage::Format_ARGB32_Premultiplied << QImage::Format_ARGB32_Premultiplied;
    QTest::newRow("grey 8") << QImage::Format_Grayscale8 << QImage::Format_RGB32;
    QTest::newRow("grey 16") << QImage::Format_Grayscale16 << QImage::Format_RGB32;
    QTest::newRow("indexed") << QImage::Format_Indexed8 << QImage::Format_RGB32;
    QTest::newRow("bits") << QImage::Format_Mono << QImage::Format_RGB32;
    QTest::newRow("RGB16") << QImage::Format_RGB16 << QImage::Format_RGB32;
}

void StreamFrameTest::pixelsOfEveryFormatAreKept() {
    QFETCH(QImage::Format, format);
    QFETCH(QImage::Format, kept);
    QImage image = patternedImage(QSize(37, 11), format);
    if (format == QImage::Format_Indexed8) // an opaque colour table
        image = patternedImage(QSize(37, 11), QImage::Format_RGB32).convertToFormat(format);
    const StreamFrame frame(image);
    QCOMPARE(frame.image().format(), kept);
    QCOMPARE(frame.image(), image.convertToFormat(kept));
}

void StreamFrameTest::rowsMayLieApart_data() {
    QTest::addColumn<int>("bytesPerLine");
    QTest::newRow("tightly") << 15;
    QTest::newRow("as in Qt's own images") << 16;
    QTest::newRow("far") << 40;
}

void StreamFrameTest::rowsMayLieApart() {
    QFETCH(int, bytesPerLine);
    const QImage image = patternedImage(QSize(5, 7), QImage::Format_RGB888);
    // Ends with the last pixel: nothing behind it may be read.
    std::vector<uchar> buffer(static_cast<std::size_t>(bytesPerLine * 6 + 15));
    for (int y = 0; y < image.height(); ++y)
        std::copy_n(image.constScanLine(y), 15, buffer.data() + qsizetype(y) * bytesPerLine);
    const QImage outside(buffer.data(), 5, 7, bytesPerLine, QImage::Format_RGB888);
    QCOMPARE(StreamFrame(outside).image(), image);
}

void StreamFrameTest::theSendersBufferIsNeverShared() {
    std::vector<uchar> buffer(64 * 16 * 3, 0x20);
    const QImage outside(buffer.data(), 64, 16, 64 * 3, QImage::Format_RGB888);
    const StreamFrame frame(outside);
    std::fill(buffer.begin(), buffer.end(), uchar(0xff));
    QCOMPARE(frame.image().pixel(5, 5), qRgb(0x20, 0x20, 0x20));

    // The image is the same for Qt, with other pixels.
    const StreamFrame next(outside);
    QVERIFY(!(next.identity() == frame.identity()));
    QCOMPARE(next.image().pixel(5, 5), qRgb(0xff, 0xff, 0xff));
    QCOMPARE(frame.image().pixel(5, 5), qRgb(0x20, 0x20, 0x20));
}

void StreamFrameTest::theDevicePixelRatioOfAnImageIsDropped() {
    QImage image = patternedImage(QSize(20, 10), QImage::Format_RGB888);
    image.setDevicePixelRatio(2.0);
    const StreamFrame frame(image);
    QCOMPARE(frame.image().devicePixelRatio(), 1.0);
    QCOMPARE(frame.size(), QSize(20, 10));
}

void StreamFrameTest::aCropIsAViewOfTheSamePixels() {
    const QImage image = patternedImage(QSize(41, 23), QImage::Format_RGB888);
    const StreamFrame frame(image);
    const StreamFrame part = frame.cropped(QRect(5, 3, 17, 9));
    QCOMPARE(part.image(), image.copy(5, 3, 17, 9));
    QCOMPARE(part.image().constBits(), frame.image().constScanLine(3) + qsizetype(5) * 3);

    const StreamFrame inner = part.cropped(QRect(2, 1, 100, 100));
    QCOMPARE(inner.image(), image.copy(7, 4, 15, 8));
    QVERIFY(frame.cropped(frame.rect()).identity() == frame.identity());
}

void StreamFrameTest::aCropOutsideIsNull() {
    const StreamFrame frame(patternedImage(QSize(10, 10), QImage::Format_RGB888));
    QVERIFY(frame.cropped(QRect(10, 0, 5, 5)).isNull());
    QVERIFY(frame.cropped(QRect()).isNull());
    QCOMPARE(frame.cropped(QRect(9, 9, 5, 5)).size(), QSize(1, 1));
}

void StreamFrameTest::theViewKeepsThePixelsAlive() {
    const QImage image = patternedImage(QSize(50, 20), QImage::Format_RGB888);
    QImage view;
    {
        const StreamFrame frame(image);
        view = frame.cropped(QRect(10, 5, 20, 10)).image();
    }
    const StreamFrame other(patternedImage(QSize(50, 20), QImage::Format_RGB888, 99));
    QCOMPARE(view, image.copy(10, 5, 20, 10));
}

void StreamFrameTest::aRecycledBufferIsNeverOneThatIsStillHeld() {
    QList<QImage> images;
    QList<StreamFrame> frames;
    for (int seed = 0; seed < 12; ++seed) {
        images.append(patternedImage(QSize(30, 20), QImage::Format_RGB888, seed));
        frames.append(StreamFrame(images.back()));
        if (seed % 3 == 2) { // let some go in between
            images.removeFirst();
            frames.removeFirst();
        }
    }
    for (int index = 0; index < frames.size(); ++index)
        QCOMPARE(frames[index].image(), images[index]);
}

void StreamFrameTest::aRecycledBufferIsUsedAgain() {
    const QImage image = patternedImage(QSize(64, 48), QImage::Format_RGB888);
    StreamFrame frame(image);
    const uchar* first = frame.image().constBits();
    frame = StreamFrame();
    frame = StreamFrame(image);
    QCOMPARE(frame.image().constBits(), first);
}

void StreamFrameTest::everyFrameHasAnIdentityOfItsOwn() {
    const QImage image = patternedImage(QSize(8, 8), QImage::Format_RGB888);
    const StreamFrame frame(image);
    const StreamFrame same = frame;
    QVERIFY(same.identity() == frame.identity());
    QVERIFY(!(StreamFrame(image).identity() == frame.identity()));
    QVERIFY(!(frame.cropped(QRect(0, 0, 4, 4)).identity() == frame.identity()));
    QVERIFY(!(StreamFrame().identity() == frame.identity()));
}

void StreamFrameTest::aFittedPictureIsMadeOnceForTheSameQuestion() {
    const StreamFrame frame(patternedImage(QSize(80, 60), QImage::Format_RGB888));
    FittedPicture fitted;
    const qint64 key = fitted.fit(frame, QSize(40, 40)).cacheKey();
    const StreamFrame sameFrame = frame;
    QCOMPARE(fitted.fit(sameFrame, QSize(40, 40)).cacheKey(), key);
}

void StreamFrameTest::aFittedPictureFollowsFramePartAndArea() {
    const QImage image = patternedImage(QSize(83, 61), QImage::Format_RGB888);
    const StreamFrame frame(image);
    FittedPicture fitted;
    const auto expected = [](const QImage& source, const QSize& area) {
        return source.convertToFormat(QImage::Format_RGB32)
            .scaled(area, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    };
    QCOMPARE(fitted.fit(frame, QSize(40, 41)), expected(image, QSize(40, 41)));
    QCOMPARE(fitted.fit(frame, QSize(41, 40)), expected(image, QSize(41, 40)));
    const QRect part(10, 10, 31, 17);
    QCOMPARE(fitted.fit(frame.cropped(part), QSize(41, 40)),
             expected(image.copy(part), QSize(41, 40)));
    const QRect moved = part.translated(1, 0);
    QCOMPARE(fitted.fit(frame.cropped(moved), QSize(41, 40)),
             expected(image.copy(moved), QSize(41, 40)));
    const QImage next = patternedImage(QSize(83, 61), QImage::Format_RGB888, 3);
    QCOMPARE(fitted.fit(StreamFrame(next).cropped(moved), QSize(41, 40)),
             expected(next.copy(moved), QSize(41, 40)));
}

QTEST_APPLESS_MAIN(StreamFrameTest)

#include "stream_frame_test.moc"
