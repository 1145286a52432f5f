#include "face/owner_samples.h"
#include "support/temporary_place.h"
#include "synthetic_face.h"

#include <QDir>
#include <QFile>
#include <QTest>
#include <chrono>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <stop_token>
#include <sys/stat.h>
#include <thread>

using namespace Qt::StringLiterals;

namespace {

/// Writes a flat grey image; the level tells samples apart.
void writeImage(const QString& path, int level, cv::Size size = {160, 160}) {
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QVERIFY(cv::imwrite(path.toStdString(), cv::Mat(size, CV_8U, cv::Scalar(level))));
}

void writeBytes(const QString& path, const QByteArray& content) {
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
}

QByteArray readBytes(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QList<int> levels(const std::vector<TrainingSample>& samples) {
    QList<int> list;
    for (const TrainingSample& sample : samples)
        list.append(sample.image.at<uchar>(80, 80));
    return list;
}

} // namespace

class OwnerSamplesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { place.emplace(); }
    void cleanup() { place.reset(); }
    void aMissingFolderHoldsNoSamples();
    void aFileInTheFoldersPlaceHoldsNoSamples();
    void onlyTheFourLowerCaseExtensionsCount();
    void manifestAndUpperCaseExtensionsAloneAreNoSamples();
    void nestedFilesComeInTheOrderOfPathComponents();
    void everySampleIsSqueezedTo160Grey();
    void samplesAreNotEqualised();
    void theRecognizersInputIsEqualizedBeforeItIsScaled();
    void linksToFilesAreFollowed();
    void damagedFilesAreSkipped_data();
    void damagedFilesAreSkipped();
    void whateverTheLibraryDecodesIsRead_data();
    void whateverTheLibraryDecodesIsRead();
    void picturesThatComeOutInColourAreSkipped_data();
    void picturesThatComeOutInColourAreSkipped();
    void picturesAboveTheLargestSizeAreSkipped_data();
    void picturesAboveTheLargestSizeAreSkipped();
    void mislabelledImagesAreReadByTheirContent();
    void foldersPipesAndDevicesAreNotRead();
    void aStopEndsTheScanBetweenFiles();
    void samplesAreAppended();

private:
    std::optional<TemporaryPlace> place;
};

void OwnerSamplesTest::aMissingFolderHoldsNoSamples() {
    std::vector<TrainingSample> samples;
    QVERIFY(!loadTavinSamples("faces/tavin", samples));
    QVERIFY(!loadTavinSamples("", samples));
    QVERIFY(QDir().mkpath(u"faces/tavin"_s));
    QVERIFY(!loadTavinSamples("faces/tavin", samples));
    QVERIFY(QFile::link(u"nowhere"_s, u"dangling"_s));
    QVERIFY(!loadTavinSamples("dangling", samples));
}

void OwnerSamplesTest::aFileInTheFoldersPlaceHoldsNoSamples() {
    writeImage(u"faces/tavin.png"_s, 10);
    std::vector<TrainingSample> samples;
    QVERIFY(!loadTavinSamples("faces/tavin.png", samples));
}

void OwnerSamplesTest::onlyTheFourLowerCaseExtensionsCount() {
    writeImage(u"s/1.png"_s, 10);
    writeImage(u"s/2.jpg"_s, 20);
    writeImage(u"s/3.jpeg"_s, 30);
    writeImage(u"s/4.pgm"_s, 40);
    for (const char* name : {"s/5.PNG", "s/6.JPG", "s/7.bmp", "s/8", "s/.png", "s/9.png.txt"}) {
        writeImage(u"whole.png"_s, 99);
        QVERIFY(QFile::copy(u"whole.png"_s, QString::fromLatin1(name)));
    }
    std::vector<TrainingSample> samples;
    QVERIFY(loadTavinSamples("s", samples));
    QCOMPARE(levels(samples), (QList<int>{10, 20, 30, 40}));
}

void OwnerSamplesTest::manifestAndUpperCaseExtensionsAloneAreNoSamples() {
    writeBytes(u"s/manifest.json"_s, "{}");
    writeImage(u"1.jpeg"_s, 10);
    QVERIFY(QFile::copy(u"1.jpeg"_s, u"s/1.JPEG"_s));
    std::vector<TrainingSample> samples;
    QVERIFY(!loadTavinSamples("s", samples));
    QVERIFY(samples.empty());
}

void OwnerSamplesTest::nestedFilesComeInTheOrderOfPathComponents() {
    writeImage(u"faces/tavin/b/1.png"_s, 40);
    writeImage(u"faces/tavin/a/9.png"_s, 20);
    writeImage(u"faces/tavin/a/10.png"_s, 10);
    // As text "a-b/…" sorts before "a/…", as components it comes after.
    writeImage(u"faces/tavin/a-b/1.png"_s, 30);
    writeImage(u"faces/tavin/c.png"_s, 50);
    std::vector<TrainingSample> samples;
    QVERIFY(loadTavinSamples("faces/tavin", samples));
    QCOMPARE(levels(samples), (QList<int>{10, 20, 30, 40, 50}));
}

void OwnerSamplesTest::everySampleIsSqueezedTo160Grey() {
    cv::Mat wide(240, 320, CV_8UC3);
    cv::RNG(1).fill(wide, cv::RNG::UNIFORM, 0, 256);
    QVERIFY(QDir().mkpath(u"s"_s));
    QVERIFY(cv::imwrite("s/wide.png", wide));
    std::vector<TrainingSample> samples;
    QVERIFY(loadTavinSamples("s", samples));
    QCOMPARE(samples.size(), 1U);
    QCOMPARE(samples[0].image.size(), cv::Size(160, 160));
    QCOMPARE(samples[0].image.type(), CV_8UC1);
    QCOMPARE(samples[0].label, 1);
    cv::Mat expected;
    cv::resize(cv::imread("s/wide.png", cv::IMREAD_GRAYSCALE), expected, cv::Size(160, 160), 0, 0,
               cv::INTER_AREA);
    QCOMPARE(cv::norm(samples[0].image, expected, cv::NORM_INF), 0.0);
}

void OwnerSamplesTest::samplesAreNotEqualised() {
    QVERIFY(QDir().mkpath(u"s"_s));
    const cv::Mat face = syntheticFace(160);
    QVERIFY(cv::imwrite("s/face.png", face));
    std::vector<TrainingSample> samples;
    QVERIFY(loadTavinSamples("s", samples));
    QCOMPARE(cv::norm(samples[0].image, face, cv::NORM_INF), 0.0);
}

void OwnerSamplesTest::theRecognizersInputIsEqualizedBeforeItIsScaled() {
    const cv::Mat frame = frameWithFace();
    const cv::Mat before = frame.clone();
    const cv::Mat crop = frame(cv::Rect(150, 60, 180, 180));
    const cv::Size side(sampleSidePx, sampleSidePx);
    const auto resized = [&side](const cv::Mat& image) {
        cv::Mat result;
        cv::resize(image, result, side, 0.0, 0.0, cv::INTER_AREA);
        return result;
    };
    const auto equalized = [](const cv::Mat& image) {
        cv::Mat result;
        cv::equalizeHist(image, result);
        return result;
    };
    const cv::Mat input = recognizerInput(crop);
    QCOMPARE(cv::norm(input, resized(equalized(crop)), cv::NORM_INF), 0.0);
    QVERIFY(cv::norm(input, equalized(resized(crop)), cv::NORM_INF) > 0.0);
    QCOMPARE(cv::norm(frame, before, cv::NORM_INF), 0.0);
}

void OwnerSamplesTest::linksToFilesAreFollowed() {
    writeImage(u"elsewhere/x.png"_s, 70);
    QVERIFY(QDir().mkpath(u"s/loop"_s));
    QVERIFY(QFile::link(QDir::current().filePath(u"elsewhere/x.png"_s), u"s/link.png"_s));
    QVERIFY(QFile::link(u"nowhere"_s, u"s/dangling.png"_s));
    QVERIFY(QFile::link(QDir::current().filePath(u"s"_s), u"s/loop/again"_s));
    std::vector<TrainingSample> samples;
    QVERIFY(loadTavinSamples("s", samples));
    QCOMPARE(levels(samples), QList<int>{70});
}

void OwnerSamplesTest::damagedFilesAreSkipped_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content");
    cv::Mat noise(64, 64, CV_8U);
    cv::RNG(1).fill(noise, cv::RNG::UNIFORM, 0, 256);
    std::vector<uchar> encoded;
    cv::imencode(".png", noise, encoded);
    const QByteArray png(reinterpret_cast<const char*>(encoded.data()),
                         static_cast<qsizetype>(encoded.size()));
    QByteArray hugePng = png;
    hugePng.replace(16, 8, QByteArray::fromHex("7fffffff7fffffff"));
    QByteArray largePng = png; // 30000 x 30000, with a header that is true to itself or not.
    largePng.replace(16, 8, QByteArray::fromHex("0000753000007530"));
    QTest::newRow("empty") << u"a.png"_s << QByteArray();
    QTest::newRow("text") << u"a.jpg"_s << QByteArray("this is not an image");
    QTest::newRow("signature only") << u"a.png"_s << png.left(8);
    QTest::newRow("header only") << u"a.png"_s << png.left(40);
    QTest::newRow("enormous width and height") << u"a.png"_s << hugePng;
    QTest::newRow("30000 x 30000") << u"a.png"_s << largePng;
    QTest::newRow("enormous pgm") << u"a.pgm"_s << QByteArray("P5 100000 100000 255\n0123");
    QTest::newRow("negative pgm") << u"a.pgm"_s << QByteArray("P5 -5 -5 255\n0123");
    QTest::newRow("pgm without pixels") << u"a.pgm"_s << QByteArray("P5 64 64 255\n");
    QTest::newRow("jpeg signature") << u"a.jpeg"_s << QByteArray::fromHex("ffd8ffe000104a464946");
    QTest::newRow("webp signature") << u"a.png"_s << QByteArray("RIFF\x20\0\0\0WEBPVP8 ", 16);
    QTest::newRow("tiff without its list") << u"a.jpg"_s << QByteArray::fromHex("49492a00ffffffff");
    QTest::newRow("jpeg 2000 without its size")
        << u"a.jpg"_s << QByteArray::fromHex("ff4fff510029");
    QTest::newRow("zeros") << u"a.png"_s << QByteArray(100000, '\0');
    QTest::newRow("noise") << u"a.jpg"_s << QByteArray(50000, '\xa7');
}

void OwnerSamplesTest::damagedFilesAreSkipped() {
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    writeBytes(u"s/"_s + name, content);
    writeImage(u"s/z.png"_s, 77);
    std::vector<TrainingSample> samples;
    QVERIFY(loadTavinSamples("s", samples));
    QCOMPARE(levels(samples), QList<int>{77});
}

void OwnerSamplesTest::whateverTheLibraryDecodesIsRead_data() {
    QTest::addColumn<QString>("kind");
    QTest::addColumn<int>("type");
    for (const char* kind :
         {"png", "jpg", "pgm", "bmp", "webp", "tiff", "jp2", "pnm", "pam", "pfm"}) {
        QTest::addRow("%s, gray", kind) << QString::fromLatin1(kind) << int{CV_8UC1};
        if (qstrcmp(kind, "pgm") != 0 && qstrcmp(kind, "pfm") != 0)
            QTest::addRow("%s, colour", kind) << QString::fromLatin1(kind) << int{CV_8UC3};
    }
    QTest::newRow("ppm, colour") << u"ppm"_s << int{CV_8UC3};
    QTest::newRow("sr, colour") << u"sr"_s << int{CV_8UC3};
    QTest::newRow("tiff, 16 bits") << u"tiff"_s << int{CV_16UC1};
    QTest::newRow("png, 16 bits") << u"png"_s << int{CV_16UC1};
}

void OwnerSamplesTest::whateverTheLibraryDecodesIsRead() {
    QFETCH(QString, kind);
    QFETCH(int, type);
    const double level = CV_MAT_DEPTH(type) == CV_16U ? 77 * 257.0 : 77.0;
    const std::string written = "whole." + kind.toStdString();
    QVERIFY(cv::imwrite(written, cv::Mat(200, 170, type, cv::Scalar::all(level))));
    QVERIFY(QDir().mkpath(u"s"_s));
    for (const char* name : {"s/1.png", "s/2.jpg", "s/3.jpeg", "s/4.pgm"})
        QVERIFY(QFile::copy(QString::fromStdString(written), QString::fromLatin1(name)));
    std::vector<TrainingSample> samples;
    QVERIFY(loadTavinSamples("s", samples));
    QCOMPARE(levels(samples), QList<int>(4, 77));
    QCOMPARE(samples[0].image.size(), cv::Size(160, 160));
    QCOMPARE(samples[0].image.type(), CV_8UC1);
}

void OwnerSamplesTest::picturesThatComeOutInColourAreSkipped_data() {
    QTest::addColumn<QString>("kind");
    QTest::newRow("Radiance") << u"hdr"_s;
    QTest::newRow("colour PFM") << u"pfm"_s;
}

/// The library gives three channels for these although it was asked for grey.
void OwnerSamplesTest::picturesThatComeOutInColourAreSkipped() {
    QFETCH(QString, kind);
    const std::string written = "whole." + kind.toStdString();
    QVERIFY(cv::imwrite(written, cv::Mat(160, 160, CV_32FC3, cv::Scalar::all(77.0))));
    QCOMPARE(cv::imread(written, cv::IMREAD_GRAYSCALE).channels(), 3);
    QVERIFY(QDir().mkpath(u"s"_s));
    QVERIFY(QFile::copy(QString::fromStdString(written), u"s/1.png"_s));
    std::vector<TrainingSample> samples;
    QVERIFY(!loadTavinSamples("s", samples));
}

void OwnerSamplesTest::picturesAboveTheLargestSizeAreSkipped_data() {
    QTest::addColumn<QByteArray>("header");
    QTest::addColumn<qint64>("pixels");
    QTest::addColumn<bool>("read");
    const auto addRow = [](const char* name, const char* header, int width, int height, bool read) {
        QTest::newRow(name) << QString::asprintf(header, width, height).toLatin1()
                            << qint64{width} * height << read;
    };
    addRow("64 megapixels", "P5 %d %d 255\n", 8192, 8192, true);
    addRow("a row more", "P5 %d %d 255\n", 8192, 8193, false);
    // The header of this kind is not looked into, so that the file's size counts.
    const char* const pam = "P7\nWIDTH %d\nHEIGHT %d\nDEPTH 1\nMAXVAL 255\n"
                            "TUPLTYPE GRAYSCALE\nENDHDR\n";
    addRow("less than 16 MiB", pam, 4096, 4095, true);
    addRow("more than 16 MiB", pam, 4096, 4096, false);
}

void OwnerSamplesTest::picturesAboveTheLargestSizeAreSkipped() {
    QFETCH(QByteArray, header);
    QFETCH(qint64, pixels);
    writeBytes(u"s/1.png"_s, header);
    QVERIFY(QFile::resize(u"s/1.png"_s, header.size() + pixels)); // a hole, which reads as black
    QCOMPARE(cv::imread("s/1.png", cv::IMREAD_GRAYSCALE).empty(), false);
    std::vector<TrainingSample> samples;
    QTEST(loadTavinSamples("s", samples), "read");
}

void OwnerSamplesTest::mislabelledImagesAreReadByTheirContent() {
    writeImage(u"1.png"_s, 10);
    writeImage(u"2.bmp"_s, 20);
    writeImage(u"3.webp"_s, 30);
    QVERIFY(QDir().mkpath(u"s"_s));
    QVERIFY(QFile::copy(u"1.png"_s, u"s/1.jpg"_s));
    QVERIFY(QFile::copy(u"2.bmp"_s, u"s/2.png"_s));
    QVERIFY(QFile::copy(u"3.webp"_s, u"s/3.jpg"_s));
    // A truncated image may be decoded as far as it goes, or be skipped; it must not end anything.
    writeBytes(u"s/4.jpg"_s, readBytes(u"s/1.jpg"_s).left(60));
    std::vector<TrainingSample> samples;
    QVERIFY(loadTavinSamples("s", samples));
    QCOMPARE(levels(samples).first(3), (QList<int>{10, 20, 30}));
}

void OwnerSamplesTest::foldersPipesAndDevicesAreNotRead() {
    QVERIFY(QDir().mkpath(u"s/folder.png"_s));
    QCOMPARE(mkfifo("s/pipe.png", 0600), 0);
    QVERIFY(QFile::link(u"/dev/zero"_s, u"s/zero.png"_s));
    std::vector<TrainingSample> samples;
    QVERIFY(!loadTavinSamples("s", samples));
}

void OwnerSamplesTest::aStopEndsTheScanBetweenFiles() {
    // Listing these files takes no time, reading each of them some.
    constexpr std::size_t files = 30;
    QVERIFY(QDir().mkpath(u"s"_s));
    cv::Mat large(1200, 1200, CV_8U);
    cv::randu(large, 0, 255);
    QVERIFY(cv::imwrite("s/0.png", large));
    for (std::size_t i = 1; i < files; ++i)
        QVERIFY(QFile::copy(u"s/0.png"_s, u"s/%1.png"_s.arg(i)));
    std::vector<TrainingSample> samples;
    const auto stoppedAfter = [&samples](std::chrono::milliseconds delay) {
        std::stop_source stop;
        const std::jthread stopper([&stop, delay] {
            std::this_thread::sleep_for(delay);
            stop.request_stop();
        });
        samples.clear();
        loadTavinSamples("s", samples, stop.get_token());
        return samples.size();
    };
    bool partly = false; // with one of the delays, however busy the machine is
    for (int delayMs = 20; delayMs < 20'000 && !partly; delayMs += delayMs / 2) {
        const std::size_t read = stoppedAfter(std::chrono::milliseconds(delayMs));
        partly = read > 0 && read < files;
    }
    QVERIFY(partly);

    samples.clear();
    std::stop_source stop;
    stop.request_stop();
    QVERIFY(!loadTavinSamples("s", samples, stop.get_token()));
    QVERIFY(samples.empty());
}

void OwnerSamplesTest::samplesAreAppended() {
    writeImage(u"s/1.png"_s, 10);
    std::vector<TrainingSample> samples;
    QVERIFY(loadTavinSamples("s", samples));
    QVERIFY(loadTavinSamples("s", samples));
    QCOMPARE(levels(samples), (QList<int>{10, 10}));
}

QTEST_APPLESS_MAIN(OwnerSamplesTest)
#include "owner_samples_test.moc"
