#include "face/face_pass.h"
#include "face/owner_model.h"
#include "support/shared_pictures.h"

#include <QTest>
#include <opencv2/imgproc.hpp>

using namespace Qt::StringLiterals;

/// Photographs beside the checkout; every test skips where they are missing. The portrait's person
/// is enrolled as the owner.
class RealPicturesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void thePortraitsPersonIsFoundAndKnown();
    void nobodyElseIsTakenForTheOwner_data();
    void nobodyElseIsTakenForTheOwner();

private:
    FacePass look(const QImage& picture) {
        cv::Mat grey = grayFrame(picture);
        const QRect all(0, 0, grey.cols, grey.rows);
        return findFaces(grey, tools, options, {all}).value();
    }

    face::Options options;
    FaceTools tools;
    QImage portrait;
};

void RealPicturesTest::initTestCase() {
    const QString path = sharedPicture(u"faces/portrait.png"_s);
    if (path.isEmpty())
        QSKIP("no real pictures beside the checkout");
    QVERIFY(portrait.load(path));
    QVERIFY(loadCascade(tools.frontal, options.frontalCascadePath));
    QVERIFY(loadCascade(tools.profile, options.profileCascadePath));
    cv::Mat grey = grayFrame(portrait);
    const auto found = detectFacesMulti(tools.frontal, nullptr, grey, options);
    QCOMPARE(found.size(), 1U);
    // Slightly other crops than the detector will find.
    std::vector<TrainingSample> samples;
    for (const int wider : {-6, 6}) {
        const cv::Rect box = found[0].rect;
        cv::Mat face;
        cv::equalizeHist(grey(cv::Rect(box.x - wider / 2, box.y - wider / 2, box.width + wider,
                                       box.height + wider)),
                         face);
        cv::resize(face, face, cv::Size(sampleSidePx, sampleSidePx), 0.0, 0.0, cv::INTER_AREA);
        samples.push_back({face, ownerClass});
    }
    tools.recognizer = trainOwnerModel(samples);
}

void RealPicturesTest::thePortraitsPersonIsFoundAndKnown() {
    if (portrait.isNull())
        QSKIP("no real portrait beside the checkout");
    const FacePass pass = look(portrait);
    int known = 0;
    for (const FaceObservation& face : pass.faces) {
        qInfo() << face.detector.c_str() << face.rect.x << face.rect.y << face.rect.width
                << "distance" << face.distance;
        known += face.owner;
    }
    QCOMPARE(known, 1);
}

void RealPicturesTest::nobodyElseIsTakenForTheOwner_data() {
    QTest::addColumn<QString>("picture");
    for (const char* picture : {"recordings/five-people/color/000000.png",
                                "recordings/empty-living-room/color/000000.png",
                                "recordings/kinect-colour-empty-room/000000.jpg"})
        QTest::newRow(picture) << QString::fromLatin1(picture);
}

void RealPicturesTest::nobodyElseIsTakenForTheOwner() {
    QFETCH(QString, picture);
    const QString path = sharedPicture(picture);
    if (path.isEmpty() || portrait.isNull())
        QSKIP("no such picture beside the checkout");
    const QImage image(path);
    QVERIFY(!image.isNull());
    for (const FaceObservation& face : look(image).faces) {
        qInfo() << face.detector.c_str() << face.rect.x << face.rect.y << face.rect.width
                << "distance" << face.distance;
        QVERIFY(!face.owner);
        QVERIFY((face.rect & cv::Rect(0, 0, image.width(), image.height())) == face.rect);
    }
}

QTEST_APPLESS_MAIN(RealPicturesTest)
#include "real_pictures_test.moc"
