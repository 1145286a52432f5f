#include "enroll/explanation.h"
#include "enroll/frame_look.h"
#include "enroll/sample_index.h"
#include "face/face_pass.h"
#include "face/owner_model.h"
#include "face/synthetic_face.h"
#include "room_frame.h"
#include "support/temporary_place.h"

#include <QDir>
#include <QTest>
#include <opencv2/imgcodecs.hpp>

using namespace enroll;
using namespace Qt::StringLiterals;

namespace {

WhyFacts factsOf(FaceLook face, int samples, double distance) {
    return {samples, std::move(face), 1, {{u"mon/near-front-01.png"_s, distance}}, 0};
}

} // namespace

class FrameLookTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void aSampleAndTheFaceOfTheSameFrameAreAtDistanceZero_data();
    void aSampleAndTheFaceOfTheSameFrameAreAtDistanceZero();
    void missingCascades();
    void distancesComeFromDepth();
    void whyNamesTheFirstCause_data();
    void whyNamesTheFirstCause();
    void whyGivesTheFigures();

private:
    std::optional<Detectors> detectors;
};

void FrameLookTest::initTestCase() {
    detectors = loadDetectors(face::Options());
    QVERIFY(detectors.has_value());
}

void FrameLookTest::aSampleAndTheFaceOfTheSameFrameAreAtDistanceZero_data() {
    QTest::addColumn<cv::Mat>("frame");
    QTest::newRow("drawn face") << frameWithFace();
    QTest::newRow("room, frontal") << roomFrame(9.0);
    QTest::newRow("room, very close") << roomFrame(18.0);
    QTest::newRow("room, profile") << roomFrame(25.0);
}

void FrameLookTest::aSampleAndTheFaceOfTheSameFrameAreAtDistanceZero() {
    QFETCH(cv::Mat, frame);
    const TemporaryPlace place;
    cv::Mat gray = frame.clone();
    const FrameLook look = lookAtFrame(gray, *detectors, {}, 0);
    const auto large = largeFaces(look, detectors->options);
    QCOMPARE(large.size(), 1U);

    // What was cut is saved, scanned and learnt as the Control Center does it.
    QVERIFY(QDir().mkpath(u"faces/tavin/mon"_s));
    QVERIFY(cv::imwrite("faces/tavin/mon/near-front-01.png", large.front()->input));
    std::vector<TrainingSample> samples;
    QVERIFY(loadTavinSamples("faces/tavin", samples));
    FaceTools tools;
    tools.recognizer = trainOwnerModel(samples);
    QVERIFY(loadCascade(tools.frontal, detectors->options.frontalCascadePath));
    QVERIFY(loadCascade(tools.profile, detectors->options.profileCascadePath));
    gray = frame.clone();
    int recognized = 0;
    const FacePass pass = findFaces(gray, tools, detectors->options, {}).value();
    for (const FaceObservation& face : pass.faces) {
        if (face.rect != large.front()->box)
            continue;
        ++recognized;
        QVERIFY(face.owner);
        QCOMPARE(face.distance, 0.0);
    }
    QCOMPARE(recognized, 1);
}

void FrameLookTest::missingCascades() {
    face::Options options;
    options.profileCascadePath = "nowhere.xml";
    const auto frontalOnly = loadDetectors(options);
    QVERIFY(frontalOnly.has_value());
    QCOMPARE(frontalOnly->options.detector, face::DetectorMode::Frontal);
    options.frontalCascadePath = "nowhere.xml";
    QVERIFY(!loadDetectors(options).has_value());
}

void FrameLookTest::distancesComeFromDepth() {
    FrameLook look;
    look.faces.push_back({cv::Rect(900, 400, 100, 100), "frontal", {}, {}, std::nullopt});
    measureDistances(look, {}, QSize(1920, 1080));
    QVERIFY(!look.faces[0].meters.has_value());
    const DepthFrame depth{QList<float>(512 * 424, 1950.0F), 512, 424};
    measureDistances(look, depth, QSize(1920, 1080));
    QCOMPARE(*look.faces[0].meters, 1.95);
    FrameLook blind = look;
    blind.faces[0].meters.reset();
    measureDistances(blind, {QList<float>(512 * 424, 0.0F), 512, 424}, QSize(1920, 1080));
    QVERIFY(!blind.faces[0].meters.has_value());
}

void FrameLookTest::whyNamesTheFirstCause_data() {
    QTest::addColumn<WhyFacts>("facts");
    QTest::addColumn<QString>("sentence");
    QTest::addColumn<bool>("recognized");
    const FaceLook good{
        cv::Rect(0, 0, 120, 120), "frontal", {120, 120, 50, 400, 0, 0.1}, {}, std::nullopt};
    QTest::newRow("no samples") << WhyFacts()
                                << u"There are no samples: make some with `lumeno-enroll take`, "
                                   "then restart the Control Center."_s
                                << false;
    QTest::newRow("no face") << WhyFacts{24, std::nullopt, 0, {}, 0}
                             << u"No face was found: look straight at the sensor, from 2.4 m or "
                                "nearer, with light on your face."_s
                             << false;
    FaceLook face = good;
    face.measures.sidePx = 74;
    QTest::newRow("too small") << factsOf(face, 24, 40)
                               << u"The face is 74 px wide and needs 80: come within about 2.4 m."_s
                               << false;
    face = good;
    face.measures.sharpness = 31.0;
    QTest::newRow("blurred") << factsOf(face, 24, 40)
                             << u"The face is blurred (sharpness 31, needs 60): hold still and "
                                "give it more light."_s
                             << false;
    QTest::newRow("unlike") << factsOf(good, 24, 71.4)
                            << u"The face is unlike the samples (distance 71, at most 60): take "
                               "another sitting here, in this light, with `lumeno-enroll take`."_s
                            << false;
    face = good;
    face.detector = "profile_left";
    QTest::newRow("from the side") << factsOf(face, 24, 71.4)
                                   << u"The face is seen from the side and is unlike the samples "
                                      "(distance 71, at most 60): look at the sensor."_s
                                   << false;
    WhyFacts wide = factsOf(good, 24, 71.4);
    wide.misframed = 13;
    QTest::newRow("hand-cut samples") << wide
                                      << u"Most samples are not framed as the program frames a "
                                         "face (distance 71, at most 60): make new ones with "
                                         "`lumeno-enroll take`."_s
                                      << false;
    QTest::newRow("recognised") << factsOf(good, 24, 60.0)
                                << u"This face is recognised (distance 60, at most 60): if the "
                                   "Control Center says otherwise, restart it, since it learns at "
                                   "its start."_s
                                << true;
    // Recognition does not mind black and white patches, samples do.
    face = good;
    face.measures.clippedShare = 0.4;
    QTest::newRow("clipped") << factsOf(face, 24, 40)
                             << u"This face is recognised (distance 40, at most 60): if the "
                                "Control Center says otherwise, restart it, since it learns at "
                                "its start."_s
                             << true;
}

void FrameLookTest::whyNamesTheFirstCause() {
    QFETCH(WhyFacts, facts);
    QFETCH(bool, recognized);
    QTEST(whySentence(facts, face::Options()), "sentence");
    QCOMPARE(isRecognized(facts, face::Options()), recognized);
}

void FrameLookTest::whyGivesTheFigures() {
    FaceLook face{
        cv::Rect(0, 0, 120, 120), "frontal+far_crop", {120, 121.6, 50, 400, 0, 0.1}, {}, 1.62};
    WhyFacts facts = factsOf(face, 4, 41.2);
    facts.nearest = {{u"a"_s, 41.2}, {u"b"_s, 42}, {u"c"_s, 43}, {u"d"_s, 44}};
    facts.largeFaces = 2;
    QCOMPARE(whyDetails(facts, face::Options()),
             (QStringList{u"Found by: frontal+far_crop"_s,
                          u"Faces that are large enough: 2; this is the largest"_s,
                          u"Side: 120 px, needs 80, at 1.6 m"_s,
                          u"Brightness: 122, from 35 to 220"_s, u"Contrast: 50, needs 20"_s,
                          u"Sharpness: 400, needs 60"_s, u"Nearest sample: a at 41.2, at most 60"_s,
                          u"Nearest sample: b at 42.0, at most 60"_s,
                          u"Nearest sample: c at 43.0, at most 60"_s}));
    QCOMPARE(whyDetails(WhyFacts(), face::Options()), QStringList{u"Found by: no detector"_s});
}

QTEST_APPLESS_MAIN(FrameLookTest)
#include "frame_look_test.moc"
