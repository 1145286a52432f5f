#include "frames/picture_pool.h"

#include <QTest>
#include <algorithm>
#include <array>
#include <limits>
#include <thread>
#include <vector>

/// Memory for pictures, used again.
class PicturePoolTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aPictureHasTheSizeAndFormatAskedFor_data();
    void aPictureHasTheSizeAndFormatAskedFor();
    void memoryIsUsedAgainOnceNobodyHoldsIt();
    void memoryOfAnotherSizeIsNotUsed();
    void memoryIsFoundBehindThatOfAnotherSize();
    void onlySomeIdleMemoryIsKept();
    void memoryThatIsNotUsedIsSoonForgotten();
    void picturesOutliveTheirPool();
    void sizesAndFormatsWithoutPixelsAreRefused();
    void picturesMayEndOnAnyThread();
    void listsAreCopies();
    void aListThatSomebodyHoldsIsNotWrittenAgain();
    void listsAreUsedAgain();
    void theNewestListsAreKept();
};

void PicturePoolTest::aPictureHasTheSizeAndFormatAskedFor_data() {
    QTest::addColumn<QImage::Format>("format");
    QTest::newRow("RGB888") << QImage::Format_RGB888;
    QTest::newRow("RGB32") << QImage::Format_RGB32;
    QTest::newRow("ARGB32 premultiplied") << QImage::Format_ARGB32_Premultiplied;
}

void PicturePoolTest::aPictureHasTheSizeAndFormatAskedFor() {
    QFETCH(QImage::Format, format);
    PicturePool pool;
    QImage picture = pool.take(QSize(7, 3), format);
    QCOMPARE(picture.size(), QSize(7, 3));
    QCOMPARE(picture.format(), format);
    QCOMPARE(picture.bytesPerLine(), QImage(7, 3, format).bytesPerLine());
    const uchar* const bytes = picture.constBits();
    picture.fill(Qt::red); // every byte of it is there
    QCOMPARE(picture.pixelColor(6, 2), QColor(Qt::red));
    QCOMPARE(picture.constBits(), bytes); // and its own
}

void PicturePoolTest::memoryIsUsedAgainOnceNobodyHoldsIt() {
    PicturePool pool;
    QImage first = pool.take(QSize(100, 100), QImage::Format_RGB888);
    QImage copy = first;
    const uchar* const bytes = first.constBits();
    first = QImage();
    QCOMPARE(pool.idle(), 0);
    QImage second = pool.take(QSize(100, 100), QImage::Format_RGB888);
    QVERIFY(second.constBits() != bytes); // the copy still holds them
    copy = QImage();
    QCOMPARE(pool.idle(), 1);
    QCOMPARE(pool.take(QSize(100, 100), QImage::Format_RGB888).constBits(), bytes);
}

void PicturePoolTest::memoryOfAnotherSizeIsNotUsed() {
    PicturePool pool;
    pool.take(QSize(100, 100), QImage::Format_RGB888);
    const QImage other = pool.take(QSize(50, 100), QImage::Format_RGB888);
    QCOMPARE(other.size(), QSize(50, 100));
    QCOMPARE(pool.idle(), 1);
    const QImage wider = pool.take(QSize(100, 100), QImage::Format_RGB32);
    QCOMPARE(pool.idle(), 1);
}

void PicturePoolTest::memoryIsFoundBehindThatOfAnotherSize() {
    PicturePool pool;
    QImage small = pool.take(QSize(10, 10), QImage::Format_RGB888);
    QImage large = pool.take(QSize(100, 100), QImage::Format_RGB888);
    const uchar* const bytes = small.constBits();
    small = QImage();
    large = QImage(); // is the newest now
    QCOMPARE(pool.take(QSize(10, 10), QImage::Format_RGB888).constBits(), bytes);
    QCOMPARE(pool.idle(), 2);
}

void PicturePoolTest::onlySomeIdleMemoryIsKept() {
    PicturePool pool;
    {
        QList<QImage> pictures;
        for (int i = 0; i < 3 * PicturePool::maxIdle; ++i)
            pictures.append(pool.take(QSize(64, 48), QImage::Format_RGB888));
    }
    QCOMPARE(pool.idle(), PicturePool::maxIdle);
}

void PicturePoolTest::memoryThatIsNotUsedIsSoonForgotten() {
    PicturePool pool;
    pool.take(QSize(10, 10), QImage::Format_RGB888);
    for (int i = 0; i < PicturePool::maxTakesUnused; ++i)
        pool.take(QSize(20, 20), QImage::Format_RGB888);
    QCOMPARE(pool.idle(), 2);
    pool.take(QSize(20, 20), QImage::Format_RGB888);
    QCOMPARE(pool.idle(), 1); // the one that is used all the time
}

void PicturePoolTest::picturesOutliveTheirPool() {
    QImage picture;
    {
        PicturePool pool;
        picture = pool.take(QSize(10, 10), QImage::Format_RGB888);
    }
    picture.fill(Qt::red);
    QCOMPARE(picture.pixelColor(9, 9), QColor(Qt::red));
}

void PicturePoolTest::sizesAndFormatsWithoutPixelsAreRefused() {
    constexpr int most = std::numeric_limits<int>::max();
    PicturePool pool;
    for (const QSize size : {QSize(0, 10), QSize(10, 0), QSize(-1, 10), QSize(10, -1),
                             QSize(most, 1), QSize(most, most)})
        QVERIFY(pool.take(size, QImage::Format_RGB888).isNull());
    for (const auto format : {QImage::Format_Invalid, QImage::Format_Mono, QImage::Format_Indexed8})
        QVERIFY(pool.take(QSize(8, 8), format).isNull());
    QCOMPARE(pool.idle(), 0);
}

void PicturePoolTest::picturesMayEndOnAnyThread() {
    PicturePool pool;
    const auto use = [&pool](uchar shade) {
        for (int i = 0; i < 500; ++i) {
            QImage picture = pool.take(QSize(32, 32), QImage::Format_RGB888);
            picture.fill(qRgb(shade, shade, shade));
            std::thread([copy = picture] {
                QCOMPARE(copy.pixel(0, 0), copy.pixel(31, 31));
            }).join();
            QCOMPARE(picture.pixel(31, 31), qRgb(shade, shade, shade));
        }
    };
    std::thread other(use, uchar(10));
    use(20);
    other.join();
    QVERIFY(pool.idle() >= 1);
}

void PicturePoolTest::listsAreCopies() {
    PicturePool pool;
    const std::array<float, 3> values{1.0F, 2.0F, 3.0F};
    const auto* bytes = reinterpret_cast<const char*>(values.data());
    std::vector<char> unaligned(1 + sizeof(values));
    std::copy_n(bytes, sizeof(values), unaligned.data() + 1);
    QCOMPARE(pool.listOf(unaligned.data() + 1, 3), (QList<float>{1.0F, 2.0F, 3.0F}));
    QCOMPARE(pool.listOf(values.data(), 2), (QList<float>{1.0F, 2.0F}));
}

void PicturePoolTest::aListThatSomebodyHoldsIsNotWrittenAgain() {
    PicturePool pool;
    QList<QList<float>> held;
    QList<QList<float>> expected;
    for (int i = 0; i < 20; ++i) {
        expected.append(QList<float>{float(i), 2.0F});
        held.append(pool.listOf(expected.last().constData(), 2));
    }
    QCOMPARE(held, expected);
    // Nor one whose holder writes to it: it gets a copy.
    QList<float> written = pool.listOf(expected.first().constData(), 2);
    const QList<float> seen = written;
    written[0] = 99.0F;
    QCOMPARE(seen, expected.first());
}

void PicturePoolTest::listsAreUsedAgain() {
    PicturePool pool;
    const std::vector<float> values(100, 1.0F);
    QList<float> list = pool.listOf(values.data(), 100);
    QList<float> copy = list;
    const float* const first = list.constData();
    list = pool.listOf(values.data(), 100);
    QVERIFY(list.constData() != first); // the copy still holds it
    copy.clear();
    QCOMPARE(pool.listOf(values.data(), 100).constData(), first);
    QCOMPARE(pool.listOf(values.data(), 50).size(), 50);
}

void PicturePoolTest::theNewestListsAreKept() {
    PicturePool pool;
    const std::array<float, 20> values{};
    // Not detached: somebody else holds it, too, which is the pool.
    const QList<float> list = pool.listOf(values.data(), 20);
    for (std::size_t others = 1; others < PicturePool::maxLists; ++others) {
        pool.listOf(values.data(), static_cast<qsizetype>(others));
        QVERIFY(!list.isDetached());
    }
    pool.listOf(values.data(), 19);
    QVERIFY(list.isDetached());
}

QTEST_APPLESS_MAIN(PicturePoolTest)
#include "picture_pool_test.moc"
