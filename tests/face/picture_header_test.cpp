#include "face/picture_header.h"

#include <QBuffer>
#include <QTest>
#include <opencv2/imgcodecs.hpp>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

QSize sizeOf(const QByteArray& bytes) {
    QBuffer file;
    file.setData(bytes);
    file.open(QIODevice::ReadOnly);
    return promisedSize(file);
}

/// Bytes from hexadecimal digits, blanks between them ignored.
QByteArray fromHex(const char* digits) {
    return QByteArray::fromHex(digits);
}

} // namespace

class PictureHeaderTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whatIsWrittenIsTold_data();
    void whatIsWrittenIsTold();
    void tiffFiles_data();
    void tiffFiles();
    void jpeg2000Codestreams_data();
    void jpeg2000Codestreams();
    void otherBytesTellNothing_data();
    void otherBytesTellNothing();
};

void PictureHeaderTest::whatIsWrittenIsTold_data() {
    QTest::addColumn<QString>("ending");
    for (const char* ending : {".png", ".jpg", ".pgm", ".ppm", ".bmp", ".tiff", ".jp2"})
        QTest::newRow(ending) << QString::fromLatin1(ending);
}

void PictureHeaderTest::whatIsWrittenIsTold() {
    QFETCH(QString, ending);
    std::vector<uchar> bytes;
    const cv::Mat picture(83, 161, ending == ".ppm"_L1 ? CV_8UC3 : CV_8UC1, cv::Scalar::all(70));
    QVERIFY(cv::imencode(ending.toStdString(), picture, bytes));
    QCOMPARE(sizeOf(QByteArray(reinterpret_cast<const char*>(bytes.data()),
                               static_cast<qsizetype>(bytes.size()))),
             QSize(161, 83));
}

void PictureHeaderTest::tiffFiles_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QSize>("size");
    // Order and 42, offset of the list, its count, then 256 and 257 with type, number and value.
    QTest::newRow("big-endian, 16 and 32 bits")
        << fromHex("4d4d002a 00000008 0002 0100 0003 00000001 01200000 0101 0004 00000001 00012345")
        << QSize(0x120, 0x12345);
    QTest::newRow("little-endian, 16 and 32 bits")
        << fromHex("49492a00 08000000 0200 0001 0300 01000000 20010000 0101 0400 01000000 45230100")
        << QSize(0x120, 0x12345);
    QTest::newRow("the list lies further on, among other values")
        << fromHex("4d4d002a 0000000a ffff 0003 00fe 0004 00000001 00000000 "
                   "0100 0003 00000001 00070000 0101 0003 00000001 00090000")
        << QSize(7, 9);
    QTest::newRow("more than a picture can have")
        << fromHex("4d4d002a 00000008 0002 0100 0004 00000001 ffffffff 0101 0004 00000001 ffffffff")
        << QSize(INT_MAX, INT_MAX);
    QTest::newRow("no height") << fromHex("4d4d002a 00000008 0001 0100 0003 00000001 01200000")
                               << QSize();
    QTest::newRow("cut within the list")
        << fromHex("4d4d002a 00000008 0002 0100 0003 0000") << QSize();
    QTest::newRow("a list beyond the end") << fromHex("4d4d002a ffffffff 0002") << QSize();
    QTest::newRow("only the start") << fromHex("49492a00") << QSize();
}

void PictureHeaderTest::tiffFiles() {
    QFETCH(QByteArray, bytes);
    QFETCH(QSize, size);
    if (size.isEmpty())
        QVERIFY(sizeOf(bytes).isEmpty());
    else
        QCOMPARE(sizeOf(bytes), size);
}

void PictureHeaderTest::jpeg2000Codestreams_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QSize>("size");
    // SOC, SIZ, length, capabilities, right, lower, left, upper.
    QTest::newRow("bare") << fromHex("ff4f ff51 0029 0000 00000120 00000100 00000000 00000000")
                          << QSize(0x120, 0x100);
    QTest::newRow("with a margin")
        << fromHex("ff4f ff51 0029 0000 00000120 00000100 00000020 00000010") << QSize(0x100, 0xf0);
    QTest::newRow("in boxes") << QByteArray(1000, 'b') +
                                     fromHex("ff4f ff51 0029 0000 00000120 00000100 00000000 "
                                             "00000000")
                              << QSize(0x120, 0x100);
    QTest::newRow("more than a picture can have")
        << fromHex("ff4f ff51 0029 0000 ffffffff ffffffff 00000000 00000000")
        << QSize(INT_MAX, INT_MAX);
    QTest::newRow("starts after its end")
        << fromHex("ff4f ff51 0029 0000 00000010 00000010 00000020 00000020") << QSize();
    QTest::newRow("cut") << fromHex("ff4f ff51 0029 0000 00000120 00000100 00000000 000000")
                         << QSize();
}

void PictureHeaderTest::jpeg2000Codestreams() {
    tiffFiles();
}

void PictureHeaderTest::otherBytesTellNothing_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("one byte") << QByteArray("I");
    QTest::newRow("zeros") << QByteArray(100'000, '\0');
    QTest::newRow("noise") << QByteArray(100'000, '\xa7');
    QTest::newRow("text") << QByteArray("this is not a picture");
}

void PictureHeaderTest::otherBytesTellNothing() {
    QFETCH(QByteArray, bytes);
    QVERIFY(sizeOf(bytes).isEmpty());
}

QTEST_GUILESS_MAIN(PictureHeaderTest)
#include "picture_header_test.moc"
