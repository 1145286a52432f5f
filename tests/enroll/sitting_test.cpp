#include "enroll/hints.h"
#include "enroll/sitting.h"
#include "face/owner_samples.h"
#include "face/synthetic_face.h"

#include <QTest>
#include <map>
#include <opencv2/core.hpp>

using namespace enroll;
using namespace Qt::StringLiterals;

namespace {

constexpr qint64 frameMs = 250;

/// What the recogniser sees of a drawn face; two textures are more than a copy's distance apart,
/// and still the same person to it.
cv::Mat pictureOf(unsigned texture) {
    static std::map<unsigned, cv::Mat> pictures;
    cv::Mat& picture = pictures[texture];
    if (picture.empty())
        picture = recognizerInput(syntheticFace(180, texture));
    return picture;
}

/// A picture that is nothing like a drawn face.
cv::Mat otherPicture() {
    cv::Mat picture(160, 160, CV_8U);
    cv::RNG(7).fill(picture, cv::RNG::UNIFORM, 0, 256);
    return picture;
}

/// A good face of that side.
FaceLook faceLook(int side, unsigned texture, int x = 500,
                  const std::string& detector = "frontal") {
    return {cv::Rect(x, 300, side, side),
            detector,
            {side, 120.0, 50.0, 400.0, 0.0, 0.1},
            pictureOf(texture),
            std::nullopt};
}

/// Shows frames to a sitting and keeps its time.
struct Room {
    Sitting sitting;
    qint64 nowMs = 0;

    Flaw show(std::vector<FaceLook> faces, qint64 laterMs = frameMs) {
        nowMs += laterMs;
        return sitting.offer({std::move(faces), nowMs});
    }
    /// The same face until it is kept, for as long as it takes to be steady.
    Flaw showSteady(const FaceLook& face) {
        Flaw flaw = show({face});
        for (int more = 0; more < 2 && flaw != Flaw::None; ++more)
            flaw = show({face});
        return flaw;
    }
};

Room guided() {
    return {Sitting(SittingMode::Guided, face::Options(), 0)};
}

Room walkingAbout() {
    return {Sitting(SittingMode::Auto, face::Options(), 0)};
}

} // namespace

class SittingTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void framesThatGiveNoSample_data();
    void framesThatGiveNoSample();
    void aSteadyGoodFaceIsKept();
    void theSamePictureIsKeptOnce();
    void aFaceBelowTheWishesWaitsHalfTheStationsTime();
    void aStationTakesOnlyWhatItAsksFor();
    void theSecondLightHasToDiffer();
    void repeatingDropsTheStationsSamples();
    void walkingAboutKeepsWhateverComes();
    void walkingAboutEndsAtSixtySamples();
    void somebodyElseIsNotKept();
    void theOwnerIsKnownAgainAfterThreeLooks();
    void theOwnerIsFollowedBesideAnother();
    void everyLookIsCounted();
    void hintsTellTheCure_data();
    void hintsTellTheCure();
};

void SittingTest::framesThatGiveNoSample_data() {
    QTest::addColumn<int>("faces"); // of the side
    QTest::addColumn<int>("side");
    QTest::addColumn<double>("mean");
    QTest::addColumn<double>("sharpness");
    QTest::addColumn<int>("flaw");
    QTest::newRow("nobody") << 0 << 0 << 0.0 << 0.0 << int(Flaw::NoFace);
    QTest::newRow("two people") << 2 << 200 << 120.0 << 400.0 << int(Flaw::SeveralFaces);
    QTest::newRow("far away") << 1 << 79 << 120.0 << 400.0 << int(Flaw::TooSmall);
    QTest::newRow("two far away") << 2 << 79 << 120.0 << 400.0 << int(Flaw::TooSmall);
    QTest::newRow("dark") << 1 << 200 << 20.0 << 400.0 << int(Flaw::TooDark);
    QTest::newRow("blurred") << 1 << 200 << 120.0 << 30.0 << int(Flaw::TooBlurry);
}

void SittingTest::framesThatGiveNoSample() {
    QFETCH(int, faces);
    QFETCH(int, side);
    QFETCH(double, mean);
    QFETCH(double, sharpness);
    QFETCH(int, flaw);
    Room room = walkingAbout();
    for (int frame = 0; frame < 10; ++frame) {
        std::vector<FaceLook> looks;
        for (int i = 0; i < faces; ++i) {
            looks.push_back(faceLook(side, 1, 300 + 500 * i));
            looks.back().measures.mean = mean;
            looks.back().measures.sharpness = sharpness;
        }
        QCOMPARE(int(room.show(looks)), flaw);
    }
    QVERIFY(room.sitting.kept().empty());
    QCOMPARE(room.sitting.tally()[std::size_t(flaw)], 10);
}

void SittingTest::aSteadyGoodFaceIsKept() {
    Room room = guided();
    const FaceLook face = faceLook(200, 1);
    QCOMPARE(room.show({face}), Flaw::Unsteady);
    QCOMPARE(room.show({face}), Flaw::Unsteady);
    QCOMPARE(room.show({face}), Flaw::None);
    QCOMPARE(room.sitting.kept().size(), 1U);
    const KeptSample& kept = room.sitting.kept().front();
    QCOMPARE(kept.distance, Distance::Near);
    QCOMPARE(kept.pose, Pose::Front);
    QCOMPARE(kept.timeMs, 3 * frameMs);
    QCOMPARE(cv::norm(kept.face.input, face.input, cv::NORM_INF), 0.0);
}

void SittingTest::theSamePictureIsKeptOnce() {
    Room room = guided();
    QCOMPARE(room.showSteady(faceLook(200, 1)), Flaw::None);
    QCOMPARE(room.show({faceLook(200, 1)}), Flaw::Copy);
    QCOMPARE(room.show({faceLook(200, 2)}), Flaw::None);
}

void SittingTest::aFaceBelowTheWishesWaitsHalfTheStationsTime() {
    Room room = guided();
    FaceLook face = faceLook(200, 1);
    face.measures.mean = 50.0;
    QCOMPARE(room.showSteady(face), Flaw::BelowWish);
    room.nowMs = stationTimeoutMs / 2 - 2 * frameMs;
    QCOMPARE(room.show({face}), Flaw::BelowWish);
    QCOMPARE(room.show({face}), Flaw::None);
    // Who walks about gets no second chance.
    Room other = walkingAbout();
    QCOMPARE(other.showSteady(face), Flaw::None);
}

void SittingTest::aStationTakesOnlyWhatItAsksFor() {
    Room room = guided();
    QCOMPARE(room.showSteady(faceLook(140, 1)), Flaw::WrongDistance);
    QCOMPARE(room.showSteady(faceLook(200, 1, 500, "profile_left")), Flaw::WrongPose);
    for (int i = 0; i < 5; ++i)
        room.sitting.skip(room.nowMs);
    QCOMPARE(room.sitting.asked()->pose, Pose::ProfileLeft);
    QCOMPARE(room.showSteady(faceLook(200, 1)), Flaw::WrongPose);
    QCOMPARE(room.showSteady(faceLook(200, 2, 500, "profile_left")), Flaw::None);
}

void SittingTest::theSecondLightHasToDiffer() {
    Room room = guided();
    QCOMPARE(room.showSteady(faceLook(200, 1)), Flaw::None);
    while (room.sitting.asked()->light == 1 || room.sitting.asked()->distance != Distance::Near)
        room.sitting.skip(room.nowMs);
    FaceLook face = faceLook(200, 2);
    QCOMPARE(room.showSteady(face), Flaw::SameLight);
    face.measures.mean = 131.0; // 9 % brighter
    QCOMPARE(room.show({face}), Flaw::SameLight);
    face.measures.mean = 136.0;
    QCOMPARE(room.show({face}), Flaw::None);
    face = faceLook(200, 3);
    face.measures.halvesDiffer = 0.25; // lit from one side
    QCOMPARE(room.show({face}), Flaw::None);
    QCOMPARE(room.sitting.kept().back().light, 2);
    QVERIFY(room.sitting.isOver());
}

void SittingTest::repeatingDropsTheStationsSamples() {
    Room room = guided();
    room.showSteady(faceLook(200, 1));
    room.show({faceLook(200, 2)}); // fills the first
    room.show({faceLook(200, 3)}); // and the second
    QCOMPARE(room.sitting.kept().size(), 3U);
    room.sitting.repeat(room.nowMs);
    QCOMPARE(room.sitting.kept().size(), 2U);
    QCOMPARE(room.sitting.asked()->pose, Pose::ChinUp);
    room.sitting.repeat(room.nowMs);
    QCOMPARE(room.sitting.kept().size(), 0U);
    QCOMPARE(room.show({faceLook(200, 1)}), Flaw::None); // no copy any more
}

void SittingTest::walkingAboutKeepsWhateverComes() {
    Room room = walkingAbout();
    QVERIFY(!room.sitting.asked());
    QCOMPARE(room.showSteady(faceLook(100, 1)), Flaw::None);
    QCOMPARE(room.showSteady(faceLook(112, 2)), Flaw::WrongDistance);
    QCOMPARE(room.showSteady(faceLook(140, 3)), Flaw::None);
    QCOMPARE(room.showSteady(faceLook(140, 4, 500, "profile_right")), Flaw::None);
    QCOMPARE(room.showSteady(faceLook(100, 5, 500, "profile_right")), Flaw::WrongPose);
    QCOMPARE(room.sitting.kept().back().pose, Pose::ProfileRight);
    for (unsigned texture = 10; texture < 27; ++texture)
        QCOMPARE(room.showSteady(faceLook(100, texture)), Flaw::None);
    QCOMPARE(room.showSteady(faceLook(100, 30)), Flaw::Enough);
}

void SittingTest::walkingAboutEndsAtSixtySamples() {
    Room room = walkingAbout();
    unsigned texture = 1;
    for (const int side : {100, 140, 200})
        for (int i = 0; i < 18; ++i)
            room.showSteady(faceLook(side, texture++));
    QCOMPARE(room.sitting.kept().size(), 54U);
    for (const int side : {140, 200})
        for (const char* detector : {"profile_left", "profile_right"})
            for (int i = 0; i < 3; ++i)
                room.showSteady(faceLook(side, texture++, 500, detector));
    QCOMPARE(room.sitting.kept().size(), 60U);
    QVERIFY(room.sitting.isOver());
}

void SittingTest::somebodyElseIsNotKept() {
    Room room = walkingAbout();
    QCOMPARE(room.showSteady(faceLook(200, 1, 200)), Flaw::None);
    // Another picture at another place, and nothing like the first.
    FaceLook stranger = faceLook(200, 1, 1200);
    stranger.input = otherPicture();
    for (int i = 0; i < 20; ++i)
        QVERIFY(room.show({stranger}) != Flaw::None);
    QCOMPARE(room.show({stranger}), Flaw::SomebodyElse);
}

void SittingTest::theOwnerIsKnownAgainAfterThreeLooks() {
    Room room = walkingAbout();
    QCOMPARE(room.showSteady(faceLook(200, 1, 200)), Flaw::None);
    QCOMPARE(room.show({}, 10000), Flaw::NoFace);
    QCOMPARE(room.showSteady(faceLook(200, 2, 1200)), Flaw::SomebodyElse);
    QCOMPARE(room.show({faceLook(200, 2, 1200)}), Flaw::SomebodyElse);
    QCOMPARE(room.show({faceLook(200, 2, 1200)}), Flaw::None);
    // From here the face is followed, and need not look like the first any more.
    FaceLook turned = faceLook(200, 3, 1200, "profile_left");
    turned.input = otherPicture();
    QCOMPARE(room.show({turned}), Flaw::None);
}

void SittingTest::theOwnerIsFollowedBesideAnother() {
    Room room = walkingAbout();
    QCOMPARE(room.showSteady(faceLook(200, 1, 200)), Flaw::None);
    FaceLook stranger = faceLook(200, 1, 1200);
    stranger.input = otherPicture();
    for (int i = 0; i < 20; ++i)
        QCOMPARE(room.show({faceLook(200, 1, 200), stranger}), Flaw::SeveralFaces);
    // The other one leaves: no recognition is needed.
    FaceLook turned = faceLook(200, 2, 200);
    turned.input = otherPicture();
    QCOMPARE(room.showSteady(turned), Flaw::None);
}

void SittingTest::everyLookIsCounted() {
    Room room = guided();
    room.show({});
    room.showSteady(faceLook(200, 1));
    QCOMPARE(room.sitting.framesLookedAt(), 4);
    QCOMPARE(room.sitting.tally()[std::size_t(Flaw::NoFace)], 1);
    QCOMPARE(room.sitting.tally()[std::size_t(Flaw::Unsteady)], 2);
    QCOMPARE(room.sitting.tally()[std::size_t(Flaw::None)], 1);
}

void SittingTest::hintsTellTheCure_data() {
    QTest::addColumn<int>("flaw");
    QTest::addColumn<int>("side");
    QTest::addColumn<double>("meters");
    QTest::addColumn<QString>("hint");
    QTest::addColumn<bool>("guided"); // to the near station
    const auto row = [](const char* name, Flaw flaw, int side, double meters, const QString& hint,
                        bool guided = true) {
        QTest::newRow(name) << int(flaw) << side << meters << hint << guided;
    };
    row("nobody", Flaw::NoFace, 0, 0, u"Nobody is to be seen: look at the sensor."_s);
    row("two", Flaw::SeveralFaces, 200, 0,
        u"Two people are in the picture: only the owner may be."_s);
    row("far", Flaw::TooSmall, 74, 0,
        u"The face is 74 px wide and needs 80: come within about 2.4 m."_s, false);
    row("far, measured", Flaw::TooSmall, 60, 2.8,
        u"The face is 60 px wide and needs 80: come within about 2.1 m."_s, false);
    row("far, rounded down", Flaw::TooSmall, 76, 2.9,
        u"The face is 76 px wide and needs 80: come within about 2.7 m."_s, false);
    row("far from the station", Flaw::TooSmall, 60, 2.8, u"Come closer."_s);
    row("dark", Flaw::TooDark, 100, 0,
        u"The face is too dark (brightness 120, needs 35): switch on a light in front of you."_s);
    row("blurred", Flaw::TooBlurry, 100, 0,
        u"The face is blurred (sharpness 400, needs 60): hold still and give it more light."_s);
    row("moving", Flaw::Unsteady, 100, 0, u"Hold still."_s);
    row("bright", Flaw::TooBright, 100, 0,
        u"The face is too bright (brightness 120, at most 220): move out of the light."_s);
    row("flat", Flaw::LowContrast, 100, 0,
        u"The face shows too little contrast (50, needs 20): let light fall from one side."_s);
    row("clipped", Flaw::Clipped, 100, 0,
        u"0 % of the face is black or white, at most 25 % may be: soften the light."_s);
    row("another pose", Flaw::WrongPose, 200, 0,
        u"Stand about 1 m from the sensor and look straight at it."_s);
    row("another pose, walking about", Flaw::WrongPose, 100, 0, u"Look at the sensor."_s, false);
    row("same light", Flaw::SameLight, 200, 0,
        u"The light is still the same: switch a lamp on or off."_s);
    row("somebody else", Flaw::SomebodyElse, 200, 0,
        u"This may be somebody else: let the owner look at the sensor for a moment."_s);
    row("not as good as wished", Flaw::BelowWish, 200, 0,
        u"More and softer light would help: stay where you are."_s);
    row("a copy", Flaw::Copy, 200, 0, u"This picture is kept already: move a little."_s);
    row("enough", Flaw::Enough, 200, 0,
        u"There are enough of these: change your distance or turn your head."_s, false);
    row("kept", Flaw::None, 200, 0, u"Kept."_s);
    row("too far for near", Flaw::WrongDistance, 140, 0, u"Come closer."_s);
    row("too near for near", Flaw::WrongDistance, 260, 0, u"Step back."_s);
    row("between two distances", Flaw::WrongDistance, 112, 0,
        u"Take half a step forwards or back."_s, false);
    row("nearer than near", Flaw::WrongDistance, 241, 0, u"Step back a little."_s, false);
}

void SittingTest::hintsTellTheCure() {
    QFETCH(int, flaw);
    QFETCH(int, side);
    QFETCH(double, meters);
    QFETCH(QString, hint);
    QFETCH(bool, guided);
    FaceLook face = faceLook(std::max(side, 80), 1);
    face.measures.sidePx = side;
    if (meters > 0.0)
        face.meters = meters;
    const Station* asked = guided ? &allStations().front() : nullptr;
    QCOMPARE(hintFor(Flaw(flaw), side > 0 ? &face : nullptr, asked, face::Options()), hint);
}

QTEST_APPLESS_MAIN(SittingTest)
#include "sitting_test.moc"
