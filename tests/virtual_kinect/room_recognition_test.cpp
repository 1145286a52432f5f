#include "face/face_pass.h"
#include "face/owner_model.h"
#include "frame_source.h"
#include "room_background.h"
#include "room_optics.h"
#include "room_person.h"
#include "room_samples.h"
#include "room_story.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <opencv2/imgproc.hpp>

#include <cmath>
#include <vector>

using namespace virtual_kinect;
using namespace virtual_kinect::room;

namespace {

struct Looked {
    double seconds = 0;
    std::vector<FaceObservation> faces;
    std::vector<PersonMoment> people;
};

cv::Point2d headOf(const PersonMoment& moment) {
    return project({moment.x_m, headHeight_m(moment.who) + moment.lift_m, moment.z_m});
}

bool shows(const cv::Rect& box, const cv::Point2d& point) {
    return box.contains(cv::Point(point));
}

/// What the program's own detectors and recogniser say about `who` at a moment.
const FaceObservation* faceOf(const Looked& looked, Person who, const std::string& detector) {
    for (const PersonMoment& moment : looked.people)
        if (moment.who == who)
            for (const FaceObservation& face : looked.faces)
                if (face.detector == detector && shows(face.rect, headOf(moment)))
                    return &face;
    return nullptr;
}

QByteArrayList filesIn(const QString& folder) {
    QByteArrayList contents;
    const QDir dir(folder);
    for (const QString& name : dir.entryList(QDir::Files, QDir::Name)) {
        QFile file(dir.filePath(name));
        if (file.open(QIODevice::ReadOnly))
            contents.append(file.readAll());
    }
    return contents;
}

/// Whether the long versions were asked for, by scripts/test.sh --long.
bool longTests() {
    return qEnvironmentVariableIsSet("LUMENO_LONG_TESTS");
}

} // namespace

/// Everything here runs the chain that the program runs, on frames of the built-in room and on the
/// sample images that its tool writes.
class RoomRecognitionTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void samplesAreGraySquaresAndTheSameAtEveryRunAlsoInANewFolder();
    void aFolderThatCannotBeMadeIsAnError();
    void theOwnerIsKnown_data();
    void theOwnerIsKnown();
    void theStrangerIsFoundAndNeverTheOwner();
    void thePosterNeverLooksLikeTheOwner();
    void profilesAreFound_data();
    void profilesAreFound();
    void anEmptyRoomShowsOnlyThePoster();

private:
    Looked lookAt(double seconds, face::DetectorMode mode = face::DetectorMode::Frontal);

    QTemporaryDir folder;
    face::Options options;
    FaceTools tools;
    std::unique_ptr<FrameSource> room;
    FrameSet set;
    cv::Mat gray; ///< of the last frame looked at
};

void RoomRecognitionTest::initTestCase() {
    if (!QFile::exists(QString::fromStdString(options.frontalCascadePath)))
        QSKIP("OpenCV's cascades are not installed");
    QVERIFY(folder.isValid());
    QVERIFY(writeOwnerSamples(folder.path().toStdString()) >= 20);
    std::vector<TrainingSample> samples;
    QVERIFY(loadTavinSamples(folder.path().toStdString(), samples));
    tools.recognizer = trainOwnerModel(samples);
    QVERIFY(loadCascade(tools.frontal, options.frontalCascadePath));
    QVERIFY(loadCascade(tools.profile, options.profileCascadePath));
    room = makeRoomSource();
}

Looked RoomRecognitionTest::lookAt(double seconds, face::DetectorMode mode) {
    const auto number = static_cast<std::uint64_t>(std::lround(seconds * framesPerSecond));
    room->render(number, set);
    const cv::Mat color(set.colorHeight, set.colorWidth, CV_8UC4, set.bgrx.data());
    cv::cvtColor(color, gray, cv::COLOR_BGRA2GRAY);
    Looked looked{storySeconds(number), {}, peopleAt(storySeconds(number))};
    options.detector = mode;
    looked.faces = findFaces(gray, tools, options, {}).value().faces;
    return looked;
}

void RoomRecognitionTest::samplesAreGraySquaresAndTheSameAtEveryRunAlsoInANewFolder() {
    const QDir dir(folder.path());
    const QStringList names = dir.entryList(QDir::Files);
    QVERIFY(names.size() >= 20 && names.size() <= 60);
    for (const QString& name : names) {
        const QImage image(dir.filePath(name));
        QCOMPARE(image.size(), QSize(sampleSidePx, sampleSidePx));
        QVERIFY(image.isGrayscale());
    }
    const QTemporaryDir place;
    const QString again = place.filePath(QStringLiteral("faces/tavin")); // was not there before
    QCOMPARE(writeOwnerSamples(again.toStdString()), names.size());
    QVERIFY(filesIn(again) == filesIn(folder.path()));
}

void RoomRecognitionTest::aFolderThatCannotBeMadeIsAnError() {
    const QTemporaryDir place;
    QFile file(place.filePath(QStringLiteral("file")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    const QString below = place.filePath(QStringLiteral("file/faces"));
    QVERIFY_THROWS_EXCEPTION(std::exception, writeOwnerSamples(below.toStdString()));
}

void RoomRecognitionTest::theOwnerIsKnown_data() {
    QTest::addColumn<double>("from");
    QTest::addColumn<double>("to");
    const auto row = [](const char* name, Span span) {
        QTest::newRow(name) << span.from << span.to;
    };
    row("frontal", ownerFrontal);
    row("coming closer", {ownerFrontal.to, ownerVeryClose.from});
    row("very close", ownerVeryClose);
    row("after the profiles", ownerFrontalThird);
    row("returned", ownerReturned);
}

void RoomRecognitionTest::theOwnerIsKnown() {
    QFETCH(double, from);
    QFETCH(double, to);
    const int looks = longTests() ? 5 : 2;
    int found = 0;
    for (int i = 0; i < looks; ++i) {
        const Looked looked = lookAt(from + (to - from) * (i + 0.37) / looks);
        const FaceObservation* face = faceOf(looked, Person::Owner, "frontal");
        if (face == nullptr)
            continue;
        ++found;
        QVERIFY(face->owner);
        QVERIFY2(face->distance <= 55, qPrintable(QString::number(face->distance)));
        QVERIFY2(face->rect.width > 84, qPrintable(QString::number(face->rect.width)));
    }
    QCOMPARE(found, looks);
}

void RoomRecognitionTest::theStrangerIsFoundAndNeverTheOwner() {
    int found = 0, looks = 0;
    for (double seconds = bothFrontal.from + 0.2; seconds < strangerAlone.to;
         seconds += longTests() ? 2.3 : 4.6) {
        const Looked looked = lookAt(seconds);
        ++looks;
        if (const FaceObservation* face = faceOf(looked, Person::Stranger, "frontal")) {
            ++found;
            QVERIFY(!face->owner);
            QVERIFY2(face->distance >= 65, qPrintable(QString::number(face->distance)));
            // Large enough to be shown as somebody unknown.
            QVERIFY(face->rect.width > 84 && face->rect.height > 84);
        }
    }
    QVERIFY2(found >= 0.9 * looks, qPrintable(QStringLiteral("%1 of %2").arg(found).arg(looks)));
}

void RoomRecognitionTest::thePosterNeverLooksLikeTheOwner() {
    int found = 0;
    for (const double seconds : {1.0, 10.3, 39.0, 60.7}) {
        const Looked looked = lookAt(seconds);
        for (const FaceObservation& face : looked.faces) {
            if (!shows(face.rect, project(posterFacePlace)))
                continue;
            ++found;
            QVERIFY(!face.owner);
            // It is too small for the program to ask; this is what the answer would be.
            cv::Mat print = gray(face.rect).clone();
            cv::equalizeHist(print, print);
            cv::resize(print, print, {sampleSidePx, sampleSidePx}, 0, 0, cv::INTER_AREA);
            int label = 0;
            double distance = 0;
            tools.recognizer->predict(print, label, distance);
            QVERIFY2(distance >= 65, qPrintable(QString::number(distance)));
        }
    }
    QVERIFY(found >= 3);
}

void RoomRecognitionTest::profilesAreFound_data() {
    QTest::addColumn<double>("from");
    QTest::addColumn<double>("to");
    QTest::addColumn<std::string>("detector");
    QTest::newRow("left") << ownerProfileLeft.from << ownerProfileLeft.to
                          << std::string("profile_left");
    QTest::newRow("right") << ownerProfileRight.from << ownerProfileRight.to
                           << std::string("profile_right");
}

void RoomRecognitionTest::profilesAreFound() {
    QFETCH(double, from);
    QFETCH(double, to);
    QFETCH(std::string, detector);
    constexpr int looks = 4;
    int found = 0;
    for (int i = 0; i < looks; ++i) {
        const Looked looked =
            lookAt(from + (to - from) * (i + 0.41) / looks, face::DetectorMode::FrontalOrProfile);
        found += faceOf(looked, Person::Owner, detector) != nullptr;
    }
    QVERIFY2(found >= 3, qPrintable(QStringLiteral("%1 of %2").arg(found).arg(looks)));
}

void RoomRecognitionTest::anEmptyRoomShowsOnlyThePoster() {
    for (const double seconds : {1.0, 39.0}) {
        const Looked looked = lookAt(seconds, face::DetectorMode::FrontalOrProfile);
        for (const FaceObservation& face : looked.faces)
            QVERIFY2(shows(face.rect, project(posterFacePlace)),
                     qPrintable(QStringLiteral("%1, %2").arg(face.rect.x).arg(face.rect.y)));
    }
}

QTEST_GUILESS_MAIN(RoomRecognitionTest)
#include "room_recognition_test.moc"
