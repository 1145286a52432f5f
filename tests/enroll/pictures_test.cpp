#include "enroll/picture_import.h"
#include "enroll/sample_folder.h"
#include "enroll/sitting_files.h"
#include "face/face_detection.h"
#include "face/owner_samples.h"
#include "face/synthetic_face.h"
#include "room_frame.h"
#include "support/shared_pictures.h"
#include "support/temporary_place.h"

#include <QDir>
#include <QFile>
#include <QTest>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

using namespace enroll;
using namespace Qt::StringLiterals;

namespace {

/// A frame with drawn faces side by side.
cv::Mat frameWithFaces(int count) {
    cv::Mat frame(360, 60 + 240 * count, CV_8U, cv::Scalar(70));
    for (int i = 0; i < count; ++i)
        syntheticFace(180, unsigned(i) + 1).copyTo(frame(cv::Rect(60 + 240 * i, 80, 180, 180)));
    return frame;
}

void writePicture(const QString& name, const cv::Mat& picture) {
    QVERIFY(cv::imwrite(name.toStdString(), picture));
}

void writeFile(const QString& name, const QByteArray& content) {
    QFile file(name);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
}

/// A face cut `share` of the box's side wider on every side, as a sample.
cv::Mat cutWider(const cv::Mat& frame, const cv::Rect& box, double share) {
    const int margin = int(share * box.width);
    const cv::Rect cut(box.x - margin, box.y - margin, box.width + 2 * margin,
                       box.height + 2 * margin);
    return recognizerInput(frame(cut & cv::Rect(0, 0, frame.cols, frame.rows)));
}

} // namespace

class PicturesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { place.emplace(); }
    void cleanup() { place.reset(); }
    void aPhotographGivesASample();
    void theSampleIsAtDistanceZeroOfTheFaceInThePicture();
    void picturesThatGiveNone_data();
    void picturesThatGiveNone();
    void aLargePhotographIsShrunkToTheSensorsSize();
    void theSensorsTurnIsUndone();
    void cropsThatAreFramedOtherwiseAreNamed_data();
    void cropsThatAreFramedOtherwiseAreNamed();
    void anEmptyPictureHoldsNoFace();
    void aChangedFileIsNotTheManifestsAnyMore();

private:
    std::optional<TemporaryPlace> place;
    std::optional<Detectors> detectors;
};

void PicturesTest::initTestCase() {
    detectors = loadDetectors(face::Options());
    QVERIFY(detectors.has_value());
}

void PicturesTest::aPhotographGivesASample() {
    writePicture(u"owner.png"_s, frameWithFace());
    const auto result = sampleFromPicture(u"owner.png"_s, *detectors, 5);
    QVERIFY2(std::holds_alternative<KeptSample>(result),
             qPrintable(std::get_if<QString>(&result) ? std::get<QString>(result) : QString()));
    const KeptSample& sample = std::get<KeptSample>(result);
    QCOMPARE(sample.face.detector, std::string("frontal"));
    QCOMPARE(sample.face.input.size(), cv::Size(160, 160));
    QCOMPARE(sample.timeMs, 5);
}

void PicturesTest::theSampleIsAtDistanceZeroOfTheFaceInThePicture() {
    writePicture(u"owner.png"_s, frameWithFace());
    const KeptSample sample =
        std::get<KeptSample>(sampleFromPicture(u"owner.png"_s, *detectors, 0));
    cv::Mat gray = frameWithFace();
    const FrameLook look = lookAtFrame(gray, *detectors, {}, 0);
    SampleIndex index;
    index.add(sample.face.input);
    QCOMPARE(*index.nearestTo(largestFace(look)->input), 0.0);
}

void PicturesTest::picturesThatGiveNone_data() {
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("sentence"); // its beginning
    const auto row = [](const char* file, const QString& sentence) {
        QTest::newRow(file) << QString::fromLatin1(file) << QLatin1StringView(file) + sentence;
    };
    row("missing.png", u" does not exist: check its name."_s);
    row("folder", u" is no file: name the pictures themselves."_s);
    row("text.jpg", u" is not a picture that can be read ("_s);
    row("empty.png", u" is not a picture that can be read ("_s);
    row("huge.pgm", u" is too large (30000 x 30000): shrink it to 64 megapixels at most."_s);
    row("wall.png", u" shows no face that the program finds: "_s);
    row("three.png", u" shows 3 faces: "_s);
    row("dim.png", u": The face is too dark (brightness "_s);
    row("soft.png", u": The face is blurred (sharpness "_s);
}

void PicturesTest::picturesThatGiveNone() {
    QFETCH(QString, file);
    QFETCH(QString, sentence);
    QVERIFY(QDir().mkpath(u"folder"_s));
    writeFile(u"text.jpg"_s, "not a picture");
    writeFile(u"empty.png"_s, "");
    writeFile(u"huge.pgm"_s, "P5\n30000 30000\n255\n");
    writePicture(u"wall.png"_s, cv::Mat(360, 480, CV_8U, cv::Scalar(120)));
    writePicture(u"three.png"_s, frameWithFaces(3));
    writePicture(u"dim.png"_s, frameWithFace() * 0.15);
    cv::Mat soft;
    cv::GaussianBlur(frameWithFace(), soft, {}, 7.0);
    writePicture(u"soft.png"_s, soft);
    const auto result = sampleFromPicture(file, *detectors, 0);
    const QString* problem = std::get_if<QString>(&result);
    QVERIFY(problem);
    QVERIFY2(problem->startsWith(sentence), qPrintable(*problem));
    QVERIFY(problem->endsWith(u'.'));
}

void PicturesTest::aLargePhotographIsShrunkToTheSensorsSize() {
    cv::Mat large(2880, 3840, CV_8U, cv::Scalar(70));
    writePicture(u"large.png"_s, large);
    const auto gray = readPhotograph(u"large.png"_s);
    QCOMPARE(std::get<cv::Mat>(gray).size(), cv::Size(1440, 1080));
}

void PicturesTest::theSensorsTurnIsUndone() {
    // A camera held upright stores the picture lying, and says so.
    cv::Mat lying;
    cv::rotate(frameWithFace(), lying, cv::ROTATE_90_COUNTERCLOCKWISE);
    std::vector<uchar> bytes;
    QVERIFY(cv::imencode(".jpg", lying, bytes));
    QByteArray jpeg(reinterpret_cast<const char*>(bytes.data()), qsizetype(bytes.size()));
    const QByteArray turned = QByteArray::fromHex("ffe1002245786966000049492a000800000001001201"
                                                  "03000100000006000000000000000000");
    jpeg.insert(2, turned.left(36));
    writeFile(u"upright.jpg"_s, jpeg);
    const auto gray = readPhotograph(u"upright.jpg"_s);
    QVERIFY(std::holds_alternative<cv::Mat>(gray));
    QCOMPARE(std::get<cv::Mat>(gray).size(), cv::Size(480, 360));
}

void PicturesTest::cropsThatAreFramedOtherwiseAreNamed_data() {
    QTest::addColumn<QString>("picture");
    QTest::addColumn<double>("wider");
    QTest::addColumn<int>("framing");
    for (const char* picture : {"room", "faces/portrait.png"}) {
        const auto row = [picture](const char* how, double wider, Framing framing) {
            QTest::addRow("%s, %s", picture, how)
                << QString::fromLatin1(picture) << wider << int(framing);
        };
        row("the detector's box", 0.0, Framing::Own);
        row("10 % wider", 0.1, Framing::TooWide);
        row("20 % wider", 0.2, Framing::TooWide);
        row("10 % tighter", -0.1, Framing::TooTight);
    }
}

void PicturesTest::cropsThatAreFramedOtherwiseAreNamed() {
    QFETCH(QString, picture);
    QFETCH(double, wider);
    QFETCH(int, framing);
    cv::Mat frame = roomFrame(10.0);
    if (picture != u"room"_s) {
        if (sharedPicture(picture).isEmpty())
            QSKIP("no real portrait beside the checkout");
        frame = std::get<cv::Mat>(readPhotograph(sharedPicture(picture)));
    }
    cv::Mat searched = frame.clone();
    const FrameLook look = lookAtFrame(searched, *detectors, {}, 0);
    QVERIFY(largestFace(look));
    const cv::Mat cut = cutWider(frame, largestFace(look)->box, wider);
    QCOMPARE(int(framingOf(cut, *detectors)), framing);
}

void PicturesTest::anEmptyPictureHoldsNoFace() {
    QCOMPARE(framingOf(cv::Mat(160, 160, CV_8U, cv::Scalar(100)), *detectors), Framing::NoFace);
}

void PicturesTest::aChangedFileIsNotTheManifestsAnyMore() {
    writePicture(u"owner.png"_s, frameWithFace());
    SittingWriter writer(u"faces/tavin"_s, u"mon"_s);
    const auto sample = std::get<KeptSample>(sampleFromPicture(u"owner.png"_s, *detectors, 0));
    QCOMPARE(writer.write(sample, u"owner.png"_s), QString());
    QVERIFY(readSamples(u"faces/tavin"_s).front().entry.has_value());
    writePicture(writer.files().first(), frameWithFace());
    QVERIFY(!readSamples(u"faces/tavin"_s).front().entry.has_value());
    writeFile(u"faces/tavin/broken.png"_s, "x");
    const auto files = readSamples(u"faces/tavin"_s);
    QCOMPARE(files.size(), 2U);
    QVERIFY(files.front().picture.empty());
    QCOMPARE(readableSamples(files).names.size(), 1);
}

QTEST_GUILESS_MAIN(PicturesTest)
#include "pictures_test.moc"
