#include "app/identity.h"
#include "face/face_tracks.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

constexpr int lostMs = 5000;
constexpr qint64 start = 1'700'000'000'000;

FaceObservation stranger(cv::Rect rect, const char* detector = "frontal", double distance = 90.0) {
    return {rect, detector, false, distance};
}

FaceObservation owner(cv::Rect rect, double distance = 50.0) {
    return {rect, "frontal", true, distance};
}

const cv::Rect face90(400, 200, 90, 90);

/// Tracks over simulated time.
struct Scene {
    FaceTracks state;
    qint64 now = start;
    int lostTimeoutMs = lostMs;

    QList<FaceOverlay> see(const std::vector<FaceObservation>& faces, qint64 afterMs = 0) {
        now += afterMs;
        state = updateFaceTracks(std::move(state), faces, now, lostTimeoutMs);
        return faceOverlays(state, now, lostTimeoutMs);
    }
    const face::Track& only() const {
        Q_ASSERT(state.tracks.size() == 1);
        return state.tracks.front();
    }
};

} // namespace

class FaceTracksTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aFaceSeenOnceIsNeverShownAndGoesAfter900Ms();
    void anUnknownFaceIsShownAfterEnoughMatchesAndTime_data();
    void anUnknownFaceIsShownAfterEnoughMatchesAndTime();
    void anUnknownFaceIsShownNoEarlierThan1200Ms();
    void aSmallUnknownFaceIsNeverShown_data();
    void aSmallUnknownFaceIsNeverShown();
    void aConfirmedFaceStaysConfirmed();
    void oneRecognitionMakesTheOwner_data();
    void oneRecognitionMakesTheOwner();
    void theOwnerSurvivesSevenDenials();
    void theOwnerIsForgottenAfterTheLostTime();
    void aRecognitionEndsTheDenials();
    void facesAreMatchedByOverlap_data();
    void facesAreMatchedByOverlap();
    void facesAreMatchedByNearness_data();
    void facesAreMatchedByNearness();
    void theBestOverlapWinsAndEachTrackTakesOneFace();
    void theNearestTrackWins();
    void votesCountOneByOne();
    void countersAreBounded();
    void newTracksStartFromNothing();
    void unknownColoursTakeTurns();
    void theColourFollowsTheLabel();
    void shownFacesAgeOnTheScreen_data();
    void shownFacesAgeOnTheScreen();
    void lostIsSaidOnlyForTracksThatWereNotPruned();
    void tiers_data();
    void tiers();
    void overlaysCarryTheTrackAndTheDefaults();
    void theLogLineNamesEveryOverlay();
    void theLogLineOfNothing();
    void aPersonWalksThroughTheRoom();
};

void FaceTracksTest::aFaceSeenOnceIsNeverShownAndGoesAfter900Ms() {
    Scene scene;
    QVERIFY(scene.see({stranger(face90)}).isEmpty());
    QVERIFY(scene.see({}, 900).isEmpty());
    QCOMPARE(scene.state.tracks.size(), 1U);
    QVERIFY(scene.see({}, 1).isEmpty());
    QVERIFY(scene.state.tracks.empty());
}

void FaceTracksTest::anUnknownFaceIsShownAfterEnoughMatchesAndTime_data() {
    QTest::addColumn<QString>("detector");
    QTest::addColumn<int>("needed");
    QTest::newRow("frontal") << u"frontal"_s << 5;
    QTest::newRow("profile_left") << u"profile_left"_s << 8;
    QTest::newRow("profile_right") << u"profile_right"_s << 8;
    QTest::newRow("frontal in a body") << u"frontal+far_crop"_s << 8;
}

void FaceTracksTest::anUnknownFaceIsShownAfterEnoughMatchesAndTime() {
    QFETCH(QString, detector);
    QFETCH(int, needed);
    Scene scene;
    const QByteArray name = detector.toLatin1();
    for (int match = 1; match < needed; ++match)
        QVERIFY(scene.see({stranger(face90, name.constData())}, 300).isEmpty());
    const QList<FaceOverlay> shown = scene.see({stranger(face90, name.constData())}, 300);
    QCOMPARE(shown.size(), 1);
    QCOMPARE(shown[0].label, u"Unknown"_s);
    QCOMPARE(shown[0].detector, detector);
}

void FaceTracksTest::anUnknownFaceIsShownNoEarlierThan1200Ms() {
    Scene scene;
    scene.see({stranger(face90)});
    for (int match = 2; match <= 8; ++match)
        QVERIFY(scene.see({stranger(face90)}, 149).isEmpty());
    QCOMPARE(scene.now, start + 7 * 149);
    QVERIFY(scene.see({stranger(face90)}, 1199 - 7 * 149).isEmpty());
    QCOMPARE(scene.see({stranger(face90)}, 1).size(), 1);
}

void FaceTracksTest::aSmallUnknownFaceIsNeverShown_data() {
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<int>("shown");
    QTest::newRow("84 wide") << 84 << 100 << 0;
    QTest::newRow("84 high") << 100 << 84 << 0;
    QTest::newRow("85 both") << 85 << 85 << 1;
}

void FaceTracksTest::aSmallUnknownFaceIsNeverShown() {
    QFETCH(int, width);
    QFETCH(int, height);
    QFETCH(int, shown);
    Scene scene;
    QList<FaceOverlay> overlays;
    for (int i = 0; i < 20; ++i)
        overlays = scene.see({stranger(cv::Rect(400, 200, width, height))}, 200);
    QCOMPARE(overlays.size(), shown);
}

void FaceTracksTest::aConfirmedFaceStaysConfirmed() {
    Scene scene;
    for (int i = 0; i < 6; ++i)
        scene.see({stranger(face90)}, 300);
    QVERIFY(scene.only().confirmed);
    QCOMPARE(scene.see({stranger(cv::Rect(400, 200, 60, 60), "profile_left")}, 300).size(), 1);
    QCOMPARE(scene.see({}, lostMs).size(), 1);
    QCOMPARE(scene.see({}, 1).size(), 0);
}

void FaceTracksTest::oneRecognitionMakesTheOwner_data() {
    QTest::addColumn<double>("distance");
    QTest::newRow("30") << 30.0;
    QTest::newRow("55") << 55.0;
    QTest::newRow("56") << 56.0;
    QTest::newRow("60") << 60.0;
}

void FaceTracksTest::oneRecognitionMakesTheOwner() {
    QFETCH(double, distance);
    Scene scene;
    const QList<FaceOverlay> shown = scene.see({owner(face90, distance)});
    QCOMPARE(shown.size(), 1);
    QCOMPARE(shown[0].label, u"Tavin"_s);
    QCOMPARE(shown[0].confidence, distance);
    QVERIFY(!scene.only().confirmed);
}

void FaceTracksTest::theOwnerSurvivesSevenDenials() {
    Scene scene;
    scene.see({owner(face90)});
    for (int denial = 1; denial <= 7; ++denial)
        QCOMPARE(scene.see({stranger(face90)}, 180).value(0).label, u"Tavin"_s);
    QCOMPARE(scene.only().nonOwnerStreak, 7);
    const QList<FaceOverlay> after = scene.see({stranger(face90)}, 180);
    QCOMPARE(scene.only().label, u"Unknown"_s);
    QCOMPARE(after.value(0).label, u"Unknown"_s); // Seen often enough by now to be shown.
    QCOMPARE(after.value(0).color, unknownColor(1));
}

void FaceTracksTest::theOwnerIsForgottenAfterTheLostTime() {
    Scene scene;
    scene.see({owner(face90)});
    scene.see({stranger(face90)}, 2500);
    QCOMPARE(scene.see({stranger(face90)}, 2500).value(0).label, u"Tavin"_s);
    QVERIFY(scene.see({stranger(face90)}, 1).isEmpty());
    QCOMPARE(scene.only().label, u"Unknown"_s);
}

void FaceTracksTest::aRecognitionEndsTheDenials() {
    Scene scene;
    scene.see({owner(face90)});
    for (int round = 0; round < 4; ++round) {
        for (int denial = 0; denial < 7; ++denial)
            QCOMPARE(scene.see({stranger(face90)}, 180).value(0).label, u"Tavin"_s);
        QCOMPARE(scene.see({owner(face90, 59.0)}, 180).value(0).label, u"Tavin"_s);
        QCOMPARE(scene.only().nonOwnerStreak, 0);
    }
}

void FaceTracksTest::facesAreMatchedByOverlap_data() {
    QTest::addColumn<int>("offset"); // Of two boxes of 100 x 100, in both directions.
    QTest::addColumn<int>("height"); // Of the second box.
    QTest::addColumn<int>("tracks");
    // 100 x 100 against 100 x 25 within it: overlap 0.25, but far too different in size otherwise.
    // Both boxes are ten times as large where a hundredth is not fine enough.
    QTest::newRow("overlap 0.25") << 0 << 25 << 1;
    QTest::newRow("overlap 0.24") << 0 << 24 << 2;
    QTest::newRow("overlap 0.249") << 0 << 249 << 2;
    QTest::newRow("the same") << 0 << 100 << 1;
    QTest::newRow("moved by half") << 50 << 100 << 1;
}

void FaceTracksTest::facesAreMatchedByOverlap() {
    QFETCH(int, offset);
    QFETCH(int, height);
    QFETCH(int, tracks);
    const int side = height > 100 ? 1000 : 100;
    Scene scene;
    scene.see({stranger(cv::Rect(300, 300, side, side))});
    scene.see({stranger(cv::Rect(300 + offset, 300 + offset, side, height))}, 180);
    QCOMPARE(scene.state.tracks.size(), std::size_t(tracks));
}

void FaceTracksTest::facesAreMatchedByNearness_data() {
    QTest::addColumn<QRect>("before");
    QTest::addColumn<QRect>("after");
    QTest::addColumn<int>("tracks");
    const QRect box(300, 300, 100, 100);
    QTest::newRow("0.75 aside") << box << box.translated(75, 0) << 1;
    QTest::newRow("0.76 aside") << box << box.translated(76, 0) << 2;
    QTest::newRow("0.85 below") << box << box.translated(0, 85) << 1;
    QTest::newRow("0.86 below") << box << box.translated(0, -86) << 2;
    const QRect large(300, 300, 1000, 1000);
    QTest::newRow("0.751 aside") << large << large.translated(751, 0) << 2;
    QTest::newRow("0.851 below") << large << large.translated(0, 851) << 2;
    QTest::newRow("small faces") << QRect(0, 0, 20, 20) << QRect(15, 0, 20, 20) << 1;
    QTest::newRow("single pixels") << QRect(0, 0, 1, 1) << QRect(1, 0, 1, 1) << 2;
    QTest::newRow("both at once") << box << box.translated(-75, 85) << 1;
    // Shifted by 70, the overlap of these is below 0.25.
    QTest::newRow("area 2.2 times") << box << QRect(370, 310, 110, 200) << 1;
    QTest::newRow("area 2.21 times") << QRect(300, 300, 100, 100) << QRect(370, 320, 85, 260) << 2;
    QTest::newRow("area 0.45 times") << box << QRect(375, 300, 45, 100) << 1;
    QTest::newRow("area 0.44 times") << box << QRect(375, 300, 44, 100) << 2;
    // Half pixels count: centres are 45.5 apart, the mean width is 60.5.
    QTest::newRow("odd widths") << QRect(0, 0, 60, 100) << QRect(45, 0, 61, 100) << 2;
    QTest::newRow("odd widths, one less") << QRect(0, 0, 60, 100) << QRect(44, 0, 61, 100) << 1;
}

void FaceTracksTest::facesAreMatchedByNearness() {
    QFETCH(QRect, before);
    QFETCH(QRect, after);
    QFETCH(int, tracks);
    const auto box = [](const QRect& rect) {
        return cv::Rect(rect.x(), rect.y(), rect.width(), rect.height());
    };
    Scene scene;
    scene.see({stranger(box(before))});
    scene.see({stranger(box(after))}, 180);
    QCOMPARE(scene.state.tracks.size(), std::size_t(tracks));
}

void FaceTracksTest::theBestOverlapWinsAndEachTrackTakesOneFace() {
    Scene scene;
    scene.see({stranger(cv::Rect(100, 100, 100, 100)), stranger(cv::Rect(140, 300, 100, 100)),
               stranger(cv::Rect(600, 100, 100, 100))});
    QCOMPARE(scene.state.tracks.size(), 3U);
    // The first face overlaps track 1 best and takes it; the second has to start anew.
    scene.see({stranger(cv::Rect(105, 100, 100, 100)), stranger(cv::Rect(100, 105, 100, 100))},
              180);
    QCOMPARE(scene.state.tracks.size(), 4U);
    QCOMPARE(scene.state.tracks[0].rect, cv::Rect(105, 100, 100, 100));
    QCOMPARE(scene.state.tracks[3].rect, cv::Rect(100, 105, 100, 100));
    QCOMPARE(scene.state.tracks[3].id, 4);
    QCOMPARE(scene.state.tracks[1].hits, 1);
}

void FaceTracksTest::theNearestTrackWins() {
    Scene scene;
    scene.see({stranger(cv::Rect(100, 100, 100, 100)), stranger(cv::Rect(240, 100, 100, 100))});
    QCOMPARE(scene.state.tracks.size(), 2U);
    // 72 from the first, 68 from the second; both overlap by less than a quarter.
    scene.see({stranger(cv::Rect(172, 100, 100, 100))}, 180);
    QCOMPARE(scene.state.tracks.size(), 2U);
    QCOMPARE(scene.state.tracks[0].hits, 1);
    QCOMPARE(scene.state.tracks[1].hits, 2);
    Scene tie;
    tie.see({stranger(cv::Rect(100, 100, 100, 100)), stranger(cv::Rect(240, 100, 100, 100))});
    tie.see({stranger(cv::Rect(170, 100, 100, 100))}, 180);
    QCOMPARE(tie.state.tracks[0].hits, 2);
}

void FaceTracksTest::votesCountOneByOne() {
    Scene scene;
    scene.see({owner(face90)});
    QCOMPARE(scene.only().ownerHits, 1);
    scene.see({owner(face90)}, 100);
    scene.see({owner(face90)}, 100);
    QCOMPARE(scene.only().ownerHits, 3);
    scene.see({stranger(face90)}, 100);
    QCOMPARE(scene.only().ownerHits, 2);
    QCOMPARE(scene.only().nonOwnerStreak, 1);
    QCOMPARE(scene.only().hits, 4);
}

void FaceTracksTest::countersAreBounded() {
    Scene scene;
    for (int i = 0; i < 30; ++i)
        scene.see({owner(face90)}, 100);
    QCOMPARE(scene.only().hits, 12);
    QCOMPARE(scene.only().ownerHits, 8);
    QCOMPARE(scene.only().nonOwnerStreak, 0);
    for (int i = 0; i < 30; ++i)
        scene.see({stranger(face90)}, 100);
    QCOMPARE(scene.only().ownerHits, 0);
    QCOMPARE(scene.only().nonOwnerStreak, 8);
}

void FaceTracksTest::newTracksStartFromNothing() {
    const face::Track track;
    QCOMPARE(track.color, QColor(64, 156, 255));
    QVERIFY(track.rect.empty() && !track.confirmed);
    Scene scene;
    scene.see({stranger(face90, "profile_left", 71.5)});
    QCOMPARE(scene.only().id, 1);
    QCOMPARE(scene.only().label, u"Unknown"_s);
    QCOMPARE(scene.only().firstSeenMs, start);
    QCOMPARE(scene.only().lastSeenMs, start);
    QCOMPARE(scene.only().lastOwnerMs, 0);
    QCOMPARE(scene.only().detector, u"profile_left"_s);
    QCOMPARE(scene.only().confidence, 71.5);
}

void FaceTracksTest::unknownColoursTakeTurns() {
    const QList<QColor> palette{QColor(255, 159, 67), QColor(80, 170, 255), QColor(169, 112, 255),
                                QColor(255, 99, 132)};
    for (int id = 1; id <= 9; ++id)
        QCOMPARE(unknownColor(id), palette[(id - 1) % 4]);
    QCOMPARE(unknownColor(0), palette[0]);
    QCOMPARE(unknownColor(-7), palette[0]);
}

void FaceTracksTest::theColourFollowsTheLabel() {
    Scene scene;
    scene.see({owner(face90)});
    QCOMPARE(scene.only().color, QColor(91, 232, 134));
    for (int denial = 0; denial < 8; ++denial)
        scene.see({stranger(face90)}, 180);
    QCOMPARE(scene.only().color, QColor(255, 159, 67));
    // The owner is green whatever colour a track brings along.
    scene.state.tracks[0].label = identity::owner;
    QCOMPARE(faceOverlays(scene.state, scene.now, lostMs).value(0).color, QColor(91, 232, 134));
}

void FaceTracksTest::shownFacesAgeOnTheScreen_data() {
    QTest::addColumn<int>("age");
    QTest::addColumn<bool>("stale");
    QTest::addColumn<QString>("status");
    QTest::newRow("now") << 0 << false << u"tracked"_s;
    QTest::newRow("500") << 500 << false << u"tracked"_s;
    QTest::newRow("501") << 501 << true << u"last seen 0.5s"_s;
    QTest::newRow("1260") << 1260 << true << u"last seen 1.3s"_s;
    QTest::newRow("5000") << 5000 << true << u"last seen 5.0s"_s;
}

void FaceTracksTest::shownFacesAgeOnTheScreen() {
    QFETCH(int, age);
    Scene scene;
    scene.see({owner(face90)});
    const QList<FaceOverlay> shown = scene.see({}, age);
    QCOMPARE(shown.size(), 1);
    QTEST(shown[0].stale, "stale");
    QTEST(shown[0].status, "status");
}

void FaceTracksTest::lostIsSaidOnlyForTracksThatWereNotPruned() {
    Scene scene;
    scene.see({owner(face90)});
    const FaceOverlay lost = faceOverlays(scene.state, start + lostMs + 1, lostMs).value(0);
    QCOMPARE(lost.status, u"lost"_s);
    QVERIFY(lost.stale);
    // Not older than half a second is tracked, even where the lost time is shorter than that.
    QCOMPARE(faceOverlays(scene.state, start + 400, 100).value(0).status, u"tracked"_s);
    QVERIFY(scene.see({}, lostMs + 1).isEmpty());
}

void FaceTracksTest::tiers_data() {
    QTest::addColumn<QString>("detector");
    QTest::addColumn<int>("height");
    QTest::addColumn<QString>("tier");
    QTest::newRow("89") << u"frontal"_s << 89 << u"mid face"_s;
    QTest::newRow("90") << u"frontal"_s << 90 << u"near face"_s;
    QTest::newRow("far 89") << u"frontal+far_crop"_s << 89 << u"far face"_s;
    QTest::newRow("far 300") << u"profile_left+far_crop"_s << 300 << u"far face"_s;
}

void FaceTracksTest::tiers() {
    QFETCH(QString, detector);
    QFETCH(int, height);
    Scene scene;
    FaceObservation face = owner(cv::Rect(0, 0, 100, height));
    face.detector = detector.toStdString();
    QTEST(scene.see({face}).value(0).tier, "tier");
}

void FaceTracksTest::overlaysCarryTheTrackAndTheDefaults() {
    Scene scene;
    const FaceOverlay shown = scene.see({owner(cv::Rect(10, 20, 100, 120), 41.25)}).value(0);
    QCOMPARE(shown.rect, QRect(10, 20, 100, 120));
    QCOMPARE(shown.confidence, 41.25);
    QCOMPARE(shown.detector, u"frontal"_s);
    QVERIFY(!shown.hasDistance && !shown.depthMissing && !shown.bodyOnly && shown.faceEvidence);
    QVERIFY(shown.speakerNote.isEmpty() && shown.reason.isEmpty());
    QCOMPARE(shown.distanceMeters, 0.0);
}

void FaceTracksTest::theLogLineNamesEveryOverlay() {
    Scene scene;
    FaceObservation far = owner(cv::Rect(700, 100, 81, 82), 58.0);
    far.detector = "frontal+far_crop";
    const QList<FaceOverlay> shown = scene.see({owner(cv::Rect(10, 20, 100, 120), 41.2), far});
    QCOMPARE(faceOverlaysLogLine(shown),
             u"Qt face overlays: count= 2 \"Tavin conf=41.2 detector=frontal tier=near face "
             "face_px=100x120 status=tracked | Tavin conf=58.0 detector=frontal+far_crop tier=far "
             "face face_px=81x82 status=tracked\" follow_assist_identity_result= \"Tavin conf=58.0 "
             "box=700,100 81x82\""_s);
}

void FaceTracksTest::theLogLineOfNothing() {
    QCOMPARE(faceOverlaysLogLine({}),
             u"Qt face overlays: count= 0 \"\" follow_assist_identity_result= \"\""_s);
}

/// Six seconds at five frames a second: the owner walks to the right and turns away for a while, a
/// stranger stands still, a false hit flashes up. Neither takes the other's name or number.
void FaceTracksTest::aPersonWalksThroughTheRoom() {
    Scene scene;
    for (int frame = 0; frame < 30; ++frame) {
        std::vector<FaceObservation> faces;
        const int steps = frame < 12 ? frame : std::max(12, frame - 6);
        const bool turnedAway = frame >= 12 && frame < 18;
        if (!turnedAway)
            faces.push_back(
                owner(cv::Rect(100 + 20 * steps, 200, 120, 120), frame % 3 ? 70.0 : 50.0));
        if (!turnedAway && frame % 3)
            faces.back().owner = false;
        faces.push_back(stranger(cv::Rect(1400, 220, 100, 100)));
        if (frame == 7)
            faces.push_back(stranger(cv::Rect(900, 800, 95, 95)));
        const QList<FaceOverlay> shown = scene.see(faces, 200);
        QCOMPARE(shown.value(0).label, u"Tavin"_s);
        QCOMPARE(shown.value(0).stale, frame >= 14 && frame < 18);
        QCOMPARE(shown.size(), frame < 6 ? 1 : 2);
        if (shown.size() == 2) {
            QCOMPARE(shown[1].label, u"Unknown"_s);
            QCOMPARE(shown[1].color, unknownColor(2));
        }
    }
}

QTEST_APPLESS_MAIN(FaceTracksTest)
#include "face_tracks_test.moc"
