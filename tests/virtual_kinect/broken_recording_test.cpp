#include "virtual_kinect/recording_folder.h"
#include "virtual_kinect/virtual_kinect_probe.h"

#include <libfreenect2/libfreenect2.hpp>

#include <QDir>
#include <QFile>
#include <QTest>
#include <QtEndian>

#include <functional>

using namespace Qt::StringLiterals;
using libfreenect2::Frame;
using libfreenect2::Freenect2;

using Damage = std::function<void(const RecordingFolder&)>;
Q_DECLARE_METATYPE(Damage)

class BrokenRecordingTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aBrokenRecordingIsNoDeviceAndOneLine_data();
    void aBrokenRecordingIsNoDeviceAndOneLine();
    void brokenTimesAreNoDeviceAndOneLine_data();
    void brokenTimesAreNoDeviceAndOneLine();
    void aFolderThatIsNotThereIsNoDeviceAndOneLine();
    void aFrameThatCannotBeDecodedIsLeftOut();
};

namespace {

/// Overwrites bytes in the middle of a file.
void overwrite(const RecordingFolder& folder, const QString& relative, qint64 at,
               const QByteArray& bytes) {
    QFile file(folder.file(relative));
    if (!file.open(QIODevice::ReadWrite) || !file.seek(at) || file.write(bytes) != bytes.size())
        qFatal("cannot overwrite %s", qPrintable(relative));
}

QByteArray bigEndian(quint32 number) {
    QByteArray bytes(4, '\0');
    qToBigEndian(number, bytes.data());
    return bytes;
}

/// Where a PNG file has its width; the height is the next four bytes.
constexpr qint64 pngWidthAt = 16;
/// Inside the pixels of the small pictures.
constexpr qint64 pngPixelsAt = 45;

void verifyNoDevice(const QString& what, const QString& reason) {
    const SensorLog log;
    const AttachedDevice attached(what);
    Freenect2 context;
    QCOMPARE(context.enumerateDevices(), 0);
    QCOMPARE(context.getDefaultDeviceSerialNumber(), std::string());
    QCOMPARE(log.errors().size(), 1);
    const QString line = log.errors().front();
    QVERIFY2(line.startsWith(u"[virtual kinect] \""_s + what + u"\" cannot be shown: "_s),
             qPrintable(line));
    QVERIFY2(line.contains(reason), qPrintable(line));
    QVERIFY(!line.contains(u'\n'));
}

void addDamage(const char* name, const QString& reason, const Damage& damage) {
    QTest::newRow(name) << reason << damage;
}

void addFolderDamages() {
    const auto removing = [](const QString& what) {
        return [what](const RecordingFolder& folder) { folder.remove(what); };
    };
    addDamage("no depth folder", u"depth is missing"_s, removing(u"depth"_s));
    addDamage("a colour picture less", u"color has no image for"_s, removing(u"color/2.png"_s));
    addDamage("a depth picture less", u"depth has no image for"_s, removing(u"depth/0.png"_s));
    addDamage("an infrared picture less", u"ir has no image for"_s, removing(u"ir/3.png"_s));
    for (const QString& part : {u"color"_s, u"depth"_s, u"ir"_s}) {
        addDamage(qPrintable(u"nothing in "_s + part), part + u" has no images"_s,
                  [part](const RecordingFolder& folder) {
                      folder.remove(part);
                      QDir(folder.path()).mkdir(part);
                  });
        addDamage(qPrintable(u"a file in place of the folder "_s + part), part,
                  [part](const RecordingFolder& folder) {
                      folder.remove(part);
                      folder.writeText(part, "x");
                  });
    }
    addDamage("a name that is no number", u"has no number as its name"_s,
              [](const RecordingFolder& folder) {
                  folder.write(u"color/first.png"_s, RecordingFolder::color(0));
              });
    addDamage("a number beyond counting", u"has no number as its name"_s,
              [](const RecordingFolder& folder) {
                  folder.write(u"color/99999999999999999999.png"_s, RecordingFolder::color(0));
              });
    addDamage("a number twice", u"two images with the number 1"_s,
              [](const RecordingFolder& folder) {
                  folder.write(u"color/01.png"_s, RecordingFolder::color(0));
              });
    addDamage("a folder with a picture's name", u"color/4.png"_s,
              [](const RecordingFolder& folder) {
                  QDir(folder.path()).mkdir(u"color/4.png"_s);
                  folder.write(u"depth/4.png"_s, RecordingFolder::depth(4));
                  folder.write(u"ir/4.png"_s, RecordingFolder::infrared(4));
              });
}

void addPictureDamages() {
    const auto writing = [](const QString& where, const cv::Mat& image) {
        return [where, image](const RecordingFolder& folder) { folder.write(where, image); };
    };
    const cv::Mat wide(3, 5, CV_16UC1, cv::Scalar(1000));
    addDamage("a depth picture of another size", u"depth/2.png has another size"_s,
              writing(u"depth/2.png"_s, wide));
    addDamage("an infrared picture of another size", u"ir/0.png has another size"_s,
              writing(u"ir/0.png"_s, wide));
    addDamage("a colour picture of another size", u"color/1.png has another size"_s,
              writing(u"color/1.png"_s, cv::Mat(3, 5, CV_8UC3, cv::Scalar(1, 2, 3))));
    addDamage("depth in 8 bits", u"depth/1.png is not a PNG with one channel of 16 bits"_s,
              writing(u"depth/1.png"_s, cv::Mat(3, 4, CV_8UC1, cv::Scalar(7))));
    addDamage("infrared in colour", u"ir/1.png is not a PNG with one channel of 16 bits"_s,
              writing(u"ir/1.png"_s, cv::Mat(3, 4, CV_16UC3, cv::Scalar(7, 8, 9))));
    addDamage("depth as JPEG", u"depth/1.jpg is not a PNG with one channel of 16 bits"_s,
              [](const RecordingFolder& folder) {
                  folder.remove(u"depth/1.png"_s);
                  folder.write(u"depth/1.jpg"_s, cv::Mat(3, 4, CV_8UC1, cv::Scalar(7)));
              });
    for (const int kept : {0, 5, 20, 40, 60})
        addDamage(qPrintable(u"depth cut after %1 bytes"_s.arg(kept)), u"depth/3.png is cut off"_s,
                  [kept](const RecordingFolder& folder) { folder.cut(u"depth/3.png"_s, kept); });
    addDamage("a JPEG cut off", u"color/1.jpg is cut off"_s, [](const RecordingFolder& folder) {
        folder.remove(u"color/1.png"_s);
        folder.write(u"color/1.jpg"_s, RecordingFolder::color(1));
        folder.cut(u"color/1.jpg"_s, 600);
    });
    addDamage("a JPEG cut off in its header", u"color/1.jpg is cut off"_s,
              [](const RecordingFolder& folder) {
                  folder.remove(u"color/1.png"_s);
                  folder.write(u"color/1.jpg"_s, RecordingFolder::color(1));
                  folder.cut(u"color/1.jpg"_s, 30);
              });
}

void addHeaderDamages() {
    const auto setting = [](const QString& where, qint64 at, const QByteArray& bytes) {
        return [=](const RecordingFolder& folder) { overwrite(folder, where, at, bytes); };
    };
    addDamage("neither PNG nor JPEG", u"color/0.png is neither PNG nor JPEG"_s,
              [](const RecordingFolder& folder) {
                  folder.writeText(u"color/0.png"_s, "just some words");
              });
    addDamage("enormous", u"color/0.png is larger than 8192 pixels"_s,
              setting(u"color/0.png"_s, pngWidthAt, bigEndian(2'000'000'000)));
    addDamage("no columns", u"depth/0.png has no pixels"_s,
              setting(u"depth/0.png"_s, pngWidthAt, bigEndian(0)));
    addDamage("no rows", u"depth/0.png has no pixels"_s,
              setting(u"depth/0.png"_s, pngWidthAt + 4, bigEndian(0)));
    addDamage("a chunk longer than the file", u"color/0.png is cut off"_s,
              setting(u"color/0.png"_s, 33, bigEndian(0xffffffff)));
    addDamage("wrong pixels in the first picture", u"color/0.png cannot be decoded"_s,
              setting(u"color/0.png"_s, pngPixelsAt, QByteArray(6, '\x55')));
}

void addCalibrationDamages() {
    const auto calibrated = [](const QByteArray& text) {
        return [text](const RecordingFolder& folder) {
            folder.writeText(u"calibration.json"_s, text);
        };
    };
    addDamage("a calibration that is no JSON", u"calibration.json cannot be read"_s,
              calibrated("some words"));
    addDamage("an empty calibration", u"calibration.json cannot be read"_s, calibrated(""));
    addDamage("a calibration without a camera", u"it has no values of the infrared camera"_s,
              calibrated("{\"color\": {\"fx\": 1, \"fy\": 1}}"));
    addDamage("a camera without a focal length", u"fy of the colour camera is no focal length"_s,
              calibrated("{\"ir\": {\"fx\": 1, \"fy\": 1}, \"color\": {\"fx\": 1}}"));
}

} // namespace

void BrokenRecordingTest::aBrokenRecordingIsNoDeviceAndOneLine_data() {
    QTest::addColumn<QString>("reason");
    QTest::addColumn<Damage>("damage");
    addFolderDamages();
    addPictureDamages();
    addHeaderDamages();
    addCalibrationDamages();
}

void BrokenRecordingTest::aBrokenRecordingIsNoDeviceAndOneLine() {
    QFETCH(QString, reason);
    QFETCH(Damage, damage);
    const RecordingFolder folder(4);
    damage(folder);
    verifyNoDevice(folder.path(), reason);
}

void BrokenRecordingTest::brokenTimesAreNoDeviceAndOneLine_data() {
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("reason");
    const QString noNumbers = u"has no usable number and time in line "_s;
    QTest::newRow("empty") << QByteArray() << u"does not have one time for each image"_s;
    QTest::newRow("one less") << QByteArray("0,0\n") << u"does not have one time"_s;
    QTest::newRow("one more") << QByteArray("0,0\n1,5\n2,9\n") << u"does not have one time"_s;
    QTest::newRow("another image") << QByteArray("0,0\n5,5\n") << u"time without an image: 5"_s;
    QTest::newRow("a number twice") << QByteArray("0,0\n0,5\n") << noNumbers + u'2';
    QTest::newRow("a word") << QByteArray("0,0\n1,soon\n") << noNumbers + u'2';
    QTest::newRow("no time") << QByteArray("0,0\n1\n") << noNumbers + u'2';
    QTest::newRow("an empty time") << QByteArray("0,\n1,5\n") << noNumbers + u'1';
    QTest::newRow("two headings") << QByteArray("a\nb\n0,0\n1,5\n") << noNumbers + u'2';
    QTest::newRow("not a number") << QByteArray("0,0\n1,nan\n") << noNumbers + u'2';
    QTest::newRow("infinite") << QByteArray("0,0\n1,inf\n") << noNumbers + u'2';
    QTest::newRow("too large for a number") << QByteArray("0,0\n1,1e999\n") << noNumbers + u'2';
    QTest::newRow("a negative number") << QByteArray("-1,0\n0,5\n") << noNumbers + u'1';
    QTest::newRow("null bytes") << QByteArray("0,0\n1,5\0\n", 9) << noNumbers + u'2';
    QTest::newRow("an age") << QByteArray("0,0\n1,1e300\n") << u"more than four months"_s;
    QTest::newRow("falling") << QByteArray("0,5\n1,0\n") << u"times that do not rise, at 1"_s;
    QTest::newRow("standing still") << QByteArray("0,5\n1,5\n") << u"times that do not rise"_s;
    QTest::newRow("hardly rising") << QByteArray("0,5\n1,5.0001\n") << u"do not rise"_s;
}

void BrokenRecordingTest::brokenTimesAreNoDeviceAndOneLine() {
    QFETCH(QByteArray, text);
    QFETCH(QString, reason);
    const RecordingFolder folder(2);
    folder.writeText(u"timestamps.csv"_s, text);
    verifyNoDevice(folder.path(), reason);
    folder.remove(u"timestamps.csv"_s);
    QDir(folder.path()).mkdir(u"timestamps.csv"_s);
    verifyNoDevice(folder.path(), u"timestamps.csv cannot be read"_s);
}

void BrokenRecordingTest::aFolderThatIsNotThereIsNoDeviceAndOneLine() {
    const RecordingFolder folder;
    verifyNoDevice(folder.file(u"nowhere"_s), u"there is no such folder"_s);
    verifyNoDevice(folder.file(u"color/0.png"_s), u"there is no such folder"_s);
    verifyNoDevice(u"ROOM"_s, u"there is no such folder"_s);
    verifyNoDevice(u"x"_s.repeated(5000), QString());
}

void BrokenRecordingTest::aFrameThatCannotBeDecodedIsLeftOut() {
    const SensorLog log;
    const RecordingFolder folder(4, 2);
    overwrite(folder, u"depth/2.png"_s, pngPixelsAt, QByteArray(6, '\x55'));
    const AttachedDevice attached(folder.path());
    FrameNotes notes;
    Freenect2 context;
    QCOMPARE(context.enumerateDevices(), 1);
    auto* device = context.openDefaultDevice();
    QVERIFY(device != nullptr);
    device->setIrAndDepthFrameListener(&notes);
    device->setColorFrameListener(&notes);
    QVERIFY(device->start());
    QVERIFY(notes.waitFor(Frame::Depth, 15));
    QVERIFY(device->stop());
    for (const SeenFrame& note : notes.seen())
        QVERIFY(note.number % 4 != 2);
    // Three of these frames came by within a second.
    QCOMPARE(log.errors().size(), 1);
    QVERIFY2(log.errors().front().contains(u"depth/2.png cannot be decoded"_s),
             qPrintable(log.errors().front()));
}

QTEST_GUILESS_MAIN(BrokenRecordingTest)
#include "broken_recording_test.moc"
