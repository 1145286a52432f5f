#include "frames/depth_frame.h"

#include <QTest>
#include <limits>

/// When a depth frame may be read.
class DepthFrameTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void isValidWithAValueForEveryPixel_data();
    void isValidWithAValueForEveryPixel();
};

void DepthFrameTest::isValidWithAValueForEveryPixel_data() {
    constexpr int most = std::numeric_limits<int>::max();
    QTest::addColumn<qsizetype>("values");
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<bool>("valid");
    QTest::newRow("nothing") << qsizetype(0) << 0 << 0 << false;
    QTest::newRow("one pixel") << qsizetype(1) << 1 << 1 << true;
    QTest::newRow("complete") << qsizetype(12) << 4 << 3 << true;
    QTest::newRow("one value short") << qsizetype(11) << 4 << 3 << false;
    QTest::newRow("values left over") << qsizetype(13) << 4 << 3 << true;
    QTest::newRow("no width") << qsizetype(12) << 0 << 3 << false;
    QTest::newRow("no height") << qsizetype(12) << 4 << 0 << false;
    QTest::newRow("both sides negative") << qsizetype(12) << -4 << -3 << false;
    QTest::newRow("more pixels than an int can count") << qsizetype(12) << most << most << false;
}

void DepthFrameTest::isValidWithAValueForEveryPixel() {
    QFETCH(qsizetype, values);
    QFETCH(int, width);
    QFETCH(int, height);
    const DepthFrame frame{QList<float>(values), width, height};
    QTEST(frame.isValid(), "valid");
}

QTEST_APPLESS_MAIN(DepthFrameTest)
#include "depth_frame_test.moc"
