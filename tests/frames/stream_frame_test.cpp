#include "frames/stream_frame.h"

#include "frames/picture_pool.h"
#include "frames/pictures.h"

#include <QTest>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

using namespace Qt::StringLiterals;

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
    void ourOwnPictureIsSharedAndNotCopied();
    void aWrittenPictureBecomesAFrameWithoutACopy();
    void whoeverWritesToASharedPictureGetsACopy();
    void aPartOfOurOwnPictureIsCopiedLikeAnyOther();
    void anImageOnTheBareAddressOfAPictureIsUsableToo();
    void anAddressThatIsUsedAgainIsAnotherPicture();
    void framesAreHandedBetweenThreads();
};

void StreamFrameTest::aNullImageGivesANullFrame() {
    const StreamFrame frame{QImage()};
    QVERIFY(frame.isNull());
    QVERIFY(frame.image().isNull());
    QVERIFY(frame.cropped(QRect(0, 0, 10, 10)).isNull());
    QCOMPARE(frame.size(), QSize(0, 0));
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

void StreamFrameTest::ourOwnPictureIsSharedAndNotCopied() {
    const StreamFrame frame(patternedImage(QSize(41, 23), QImage::Format_RGB888));
    const QImage sent = frame.image();
    const QImage received = sent; // as a signal hands it over
    const StreamFrame again(received);
    QCOMPARE(again.image().constBits(), frame.image().constBits());
    QVERIFY(again.identity() == frame.identity());
}

void StreamFrameTest::aWrittenPictureBecomesAFrameWithoutACopy() {
    QImage written = PicturePool::shared().take(QSize(64, 48), QImage::Format_RGB888);
    written.fill(Qt::blue);
    const uchar* const bytes = written.constBits();
    const StreamFrame frame = StreamFrame::fromWritten(std::move(written));
    QCOMPARE(frame.image().constBits(), bytes);
    QCOMPARE(frame.image().pixelColor(63, 47), QColor(Qt::blue));
    QVERIFY(StreamFrame::fromWritten(QImage()).isNull());
}

void StreamFrameTest::whoeverWritesToASharedPictureGetsACopy() {
    const StreamFrame frame(patternedImage(QSize(41, 23), QImage::Format_RGB888));
    const QImage before = frame.image().copy();
    QImage received = frame.image();
    received.fill(Qt::red);
    QCOMPARE(frame.image(), before);
    // What was written is another's picture by now.
    const StreamFrame other(received);
    QVERIFY(other.image().constBits() != frame.image().constBits());
    QVERIFY(other.image().constBits() != received.constBits());
}

void StreamFrameTest::aPartOfOurOwnPictureIsCopiedLikeAnyOther() {
    const StreamFrame frame(patternedImage(QSize(41, 23), QImage::Format_RGB888));
    for (const QRect& area : {QRect(0, 0, 20, 23), QRect(0, 0, 41, 10), QRect(5, 3, 17, 9)}) {
        const QImage part = frame.cropped(area).image();
        const StreamFrame copy(part);
        QCOMPARE(copy.image(), part);
        QVERIFY(copy.image().constBits() != part.constBits());
    }
}

void StreamFrameTest::anImageOnTheBareAddressOfAPictureIsUsableToo() {
    auto frame =
        std::make_unique<StreamFrame>(patternedImage(QSize(41, 23), QImage::Format_RGB888));
    const QImage view = frame->image();
    const QImage before = view.copy();
    // Keeps nothing alive, as an image on a foreign buffer does not.
    const QImage bare(view.constBits(), 41, 23, view.bytesPerLine(), view.format());
    const StreamFrame taken(bare);
    frame.reset();
    QCOMPARE(taken.image(), before);
}

void StreamFrameTest::anAddressThatIsUsedAgainIsAnotherPicture() {
    const uchar* address = nullptr;
    StreamFrame::Identity identity;
    for (int turn = 0; turn < 2; ++turn) {
        const StreamFrame frame(patternedImage(QSize(64, 48), QImage::Format_RGB888, turn));
        const StreamFrame again(frame.image());
        if (turn == 1) {
            QCOMPARE(frame.image().constBits(), address); // else this tests nothing
            QVERIFY(!(frame.identity() == identity));
        }
        QVERIFY(again.identity() == frame.identity());
        address = frame.image().constBits();
        identity = frame.identity();
    }
}

void StreamFrameTest::framesAreHandedBetweenThreads() {
    // One thread makes pictures, another takes them as they come and lets them go.
    std::mutex mutex;
    std::deque<QImage> sent;
    std::thread sender([&] {
        for (int shade = 0; shade < 400; ++shade) {
            QImage picture = PicturePool::shared().take(QSize(32, 16), QImage::Format_RGB888);
            picture.fill(qRgb(shade & 255, 0, 0));
            const StreamFrame frame = StreamFrame::fromWritten(std::move(picture));
            const std::lock_guard lock(mutex);
            sent.push_back(frame.image());
        }
    });
    int received = 0;
    StreamFrame newest;
    while (received < 400) {
        QImage image;
        {
            const std::lock_guard lock(mutex);
            if (sent.empty())
                continue;
            image = std::move(sent.front());
            sent.pop_front();
        }
        newest = StreamFrame(image);
        QCOMPARE(newest.image().constBits(), image.constBits());
        QCOMPARE(newest.image().pixel(31, 15), qRgb(received & 255, 0, 0));
        ++received;
    }
    sender.join();
}

QTEST_APPLESS_MAIN(StreamFrameTest)

#include "stream_frame_test.moc"
