#include "awareness/awareness_pass.h"
#include "awareness/awareness_report.h"
#include "awareness/room_player.h"

#include <QTest>

#include <limits>
#include <random>

using namespace Qt::StringLiterals;

class AwarenessPassTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aStandingPersonIsFollowedOnceStable();
    void repeatedPassesDoNotPileUpBodies();
    void anOldSpeakerNoteDoesNotOutliveItsReading();
    void withoutDepthFacesKeepTheirDistances_data();
    void withoutDepthFacesKeepTheirDistances();
    void withoutDepthTracksStillExpire();
    void aPhotographIsRejected();
    void withLayoutDebugEverythingIsShown();
    void theRenamedBodyIsInTheListThatIsShown();
    void theOwnersFaceHidesTheBodyBelowIt();
    void regionsAreTheCropThenTheCandidates();
    void withoutATargetRegionsAreTheCandidatesAlone();
    void theVoiceNeverChangesWhoIsFollowed();
    void rejectedOverlaysAreNoSpeakers();
    void theInversionSwitchMirrorsTheVoice();
    void theClockIsReadOnce();
    void theReportHasEveryFieldInItsOrder();
    void theReportDescribesOverlaysAndCandidates();
    void hostileDepthIsSurvived();
};

namespace {

constexpr qint64 now = RoomPlayer::start;

void playFor(RoomPlayer& player, double seconds, const QList<Actor>& actors) {
    for (int frame = 0; frame < seconds * RoomPlayer::fps; ++frame)
        player.play(actors);
}

QStringList labels(const QList<FaceOverlay>& overlays) {
    QStringList names;
    for (const FaceOverlay& overlay : overlays)
        names.append(overlay.label);
    return names;
}

AwarenessResult pass(AwarenessState& state, const AwarenessInput& input, qint64 time = now) {
    return runAwarenessPass(state, input, [time] { return time; });
}

} // namespace

void AwarenessPassTest::aStandingPersonIsFollowedOnceStable() {
    RoomPlayer player;
    playFor(player, 0.5, {{0.5, 2.5, QString()}});
    QVERIFY(player.result.faceOverlays.isEmpty());
    QCOMPARE(player.result.bodyCandidates.size(), 1);
    playFor(player, 0.5, {{0.5, 2.5, QString()}});
    QCOMPARE(labels(player.result.faceOverlays), QStringList(identity::person));
    QVERIFY(player.status().startsWith(u"Following person | "_s));
    QVERIFY(player.state.followView.followZoom > 1.0);
    QVERIFY(player.state.followView.followCrop.contains(
        RoomPlayer::faceBox({0.5, 2.5, QString()}).center()));
}

void AwarenessPassTest::repeatedPassesDoNotPileUpBodies() {
    RoomPlayer player;
    playFor(player, 5.0, {{0.3, 2.5, QString()}, {0.7, 2.0, QString()}});
    QCOMPARE(labels(player.result.faceOverlays), QStringList({identity::person, identity::person}));
}

void AwarenessPassTest::anOldSpeakerNoteDoesNotOutliveItsReading() {
    RoomPlayer player;
    player.input.voiceStatus.hasDirection = player.input.voiceStatus.fresh = true;
    player.input.voiceStatus.lowConfidence = false;
    playFor(player, 1.0, {{0.5, 1.8, identity::unknown}});
    QCOMPARE(player.result.faceOverlays.size(), 2);
    QCOMPARE(player.result.faceOverlays[0].speakerNote, u"speaker ambiguous"_s);
    player.input.voiceStatus.fresh = false;
    player.play({{0.5, 1.8, identity::unknown}});
    for (const FaceOverlay& overlay : player.result.faceOverlays)
        QVERIFY(overlay.speakerNote.isEmpty());
}

void AwarenessPassTest::withoutDepthFacesKeepTheirDistances_data() {
    QTest::addColumn<QSize>("image");
    QTest::addColumn<int>("length");
    QTest::addColumn<QSize>("depth");
    QTest::newRow("no list") << QSize(1920, 1080) << 0 << QSize(512, 424);
    QTest::newRow("no width") << QSize(1920, 1080) << 512 * 424 << QSize(0, 424);
    QTest::newRow("no height") << QSize(1920, 1080) << 512 * 424 << QSize(512, 0);
    QTest::newRow("no image") << QSize(0, 0) << 512 * 424 << QSize(512, 424);
}

void AwarenessPassTest::withoutDepthFacesKeepTheirDistances() {
    QFETCH(QSize, image);
    QFETCH(int, length);
    QFETCH(QSize, depth);
    AwarenessInput input;
    input.imageSize = image;
    input.depth = {QList<float>(length, 2000.0F), depth.width(), depth.height()};
    input.faceOverlays = {overlays::faceAt(identity::unknown, QRect(900, 300, 90, 90), 1.7)};
    AwarenessState state;
    const AwarenessResult result = pass(state, input);
    QCOMPARE(result.faceOverlays.size(), 1);
    QCOMPARE(result.faceOverlays[0].distanceMeters, 1.7);
    QVERIFY(result.bodyCandidates.isEmpty());
}

void AwarenessPassTest::withoutDepthTracksStillExpire() {
    RoomPlayer player(2000);
    playFor(player, 1.0, {{0.5, 2.5, QString()}});
    QCOMPARE(player.state.bodyTracks.size(), 1);
    player.input.depth.depth_mm.clear();
    const qint64 seen = player.now;
    QCOMPARE(labels(pass(player.state, player.input, seen + 2000).faceOverlays),
             QStringList(identity::person));
    QVERIFY(pass(player.state, player.input, seen + 2001).faceOverlays.isEmpty());
    QVERIFY(player.state.bodyTracks.isEmpty());
}

void AwarenessPassTest::aPhotographIsRejected() {
    DepthScene wall(512, 424, 0.0F);
    AwarenessInput input;
    input.imageSize = QSize(1920, 1080);
    input.depth = wall.frame();
    input.faceOverlays = {overlays::face(identity::unknown, QRect(900, 300, 90, 90))};
    AwarenessState state;
    const AwarenessResult result = pass(state, input);
    QVERIFY(result.faceOverlays.isEmpty());
    QCOMPARE(result.rejections.size(), 1);
    QCOMPARE(rejectionDescription(result.rejections[0]),
             u"reject Unknown box=900,300 90x90 distance=none reason=no valid depth/photo-like"_s);
    QCOMPARE(result.follow.choice.selectedFollowTarget, FollowStatus::NoTarget);
}

void AwarenessPassTest::withLayoutDebugEverythingIsShown() {
    RoomPlayer player;
    player.input.layoutDebug = true;
    playFor(player, 1.0,
            {{0.5, 3.5, identity::unknown}, {0.6, 1.9, identity::owner}, {0.45, 2.0, u"Guest"_s}});
    QVERIFY(player.result.rejections.isEmpty());
    const QStringList shown = labels(player.result.faceOverlays);
    for (const QString& name : {identity::unknown, identity::owner, u"Guest"_s})
        QVERIFY(shown.contains(name));
    player.input.layoutDebug = false;
    player.play({{0.5, 3.5, identity::unknown}, {0.6, 1.9, identity::owner}});
    QVERIFY(!labels(player.result.faceOverlays).contains(identity::unknown));
}

void AwarenessPassTest::theRenamedBodyIsInTheListThatIsShown() {
    RoomPlayer player;
    playFor(player, 1.0, {{0.5, 2.0, QString()}});
    player.state.followTarget.lastTavinSeenMs = player.now - 1000;
    player.play({{0.5, 2.0, QString()}});
    QCOMPARE(labels(player.result.faceOverlays), QStringList(identity::possibleOwner));
    QVERIFY(player.status().startsWith(u"Reacquiring Tavin face | "_s));
}

void AwarenessPassTest::theOwnersFaceHidesTheBodyBelowIt() {
    RoomPlayer player;
    playFor(player, 2.0, {{0.5, 2.0, identity::owner}});
    QCOMPARE(labels(player.result.faceOverlays), QStringList(identity::owner));
    QVERIFY(player.state.bodyTracks[0].tavin);
}

void AwarenessPassTest::regionsAreTheCropThenTheCandidates() {
    RoomPlayer player;
    playFor(player, 2.0, {{0.3, 3.0, QString()}, {0.7, 2.0, QString()}});
    QCOMPARE(player.result.bodyCandidates.size(), 2);
    QVERIFY(player.result.bodyCandidates[0].rect.height() >
            player.result.bodyCandidates[1].rect.height());
    QCOMPARE(player.result.bodyRegions,
             QList<QRect>({player.state.followView.followCrop, player.result.bodyCandidates[0].rect,
                           player.result.bodyCandidates[1].rect}));
}

void AwarenessPassTest::withoutATargetRegionsAreTheCandidatesAlone() {
    RoomPlayer player;
    player.play({{0.5, 2.0, QString()}});
    QCOMPARE(player.result.bodyRegions, QList<QRect>({player.result.bodyCandidates[0].rect}));
    playFor(player, 3.0, {});
    QVERIFY(player.result.bodyRegions.isEmpty());
}

void AwarenessPassTest::theVoiceNeverChangesWhoIsFollowed() {
    RoomPlayer silent;
    RoomPlayer talking;
    talking.input.voiceStatus.hasDirection = talking.input.voiceStatus.fresh = true;
    talking.input.voiceStatus.lowConfidence = false;
    talking.input.voiceStatus.angleDegrees = 50.0;
    const QList<Actor> room{{0.2, 2.0, identity::owner}, {0.85, 2.0, identity::unknown}};
    playFor(silent, 2.0, room);
    playFor(talking, 2.0, room);
    for (const FaceOverlay& overlay : talking.result.faceOverlays)
        QCOMPARE(overlay.speakerNote.isEmpty(), overlay.label == identity::owner);
    QCOMPARE(labels(talking.result.faceOverlays), labels(silent.result.faceOverlays));
    QCOMPARE(talking.state.followView.followCrop, silent.state.followView.followCrop);
    QCOMPARE(talking.status(), silent.status());
}

void AwarenessPassTest::rejectedOverlaysAreNoSpeakers() {
    AwarenessInput input;
    input.imageSize = QSize(1920, 1080);
    input.voiceStatus.hasDirection = input.voiceStatus.fresh = true;
    input.voiceStatus.lowConfidence = false;
    FaceOverlay photograph = overlays::face(identity::unknown, QRect(1000, 300, 90, 90));
    photograph.depthMissing = true;
    input.faceOverlays = {photograph,
                          overlays::faceAt(identity::unknown, QRect(850, 300, 90, 90), 1.7)};
    AwarenessState state;
    const AwarenessResult result = pass(state, input);
    QCOMPARE(result.faceOverlays.size(), 1);
    QCOMPARE(result.faceOverlays[0].speakerNote, u"possible speaker"_s);
}

void AwarenessPassTest::theInversionSwitchMirrorsTheVoice() {
    AwarenessInput input;
    input.imageSize = QSize(1920, 1080);
    input.voiceStatus.hasDirection = input.voiceStatus.fresh = true;
    input.voiceStatus.lowConfidence = false;
    input.voiceStatus.angleDegrees = 50.0;
    input.faceOverlays = {overlays::faceAt(identity::unknown, QRect(100, 300, 90, 90), 1.7)};
    AwarenessState state;
    QCOMPARE(pass(state, input).faceOverlays[0].speakerNote, u"voice unmatched"_s);
    input.invertAudioDirection = true;
    QCOMPARE(pass(state, input).faceOverlays[0].speakerNote, u"possible speaker"_s);
}

void AwarenessPassTest::theClockIsReadOnce() {
    AwarenessInput input;
    input.imageSize = QSize(1920, 1080);
    input.faceOverlays = {overlays::faceAt(identity::owner, QRect(850, 300, 90, 90), 1.7)};
    AwarenessState state;
    int readings = 0;
    runAwarenessPass(state, input, [&readings] { return now + readings++; });
    QCOMPARE(readings, 1);
    QCOMPARE(state.followTarget.lastTavinSeenMs, now);
}

void AwarenessPassTest::theReportHasEveryFieldInItsOrder() {
    AwarenessState state;
    state.followTarget.zoomHoldUntilMs = 17;
    state.followTarget.lastTavinSeenMs = 12;
    state.followView.followZoom = 2.5;
    state.followView.smoothedCropCenter = QPointF(5.5, 6);
    state.followView.followCrop = QRect(1, 2, 3, 4);
    state.followView.targetHeadRegion = QRect(5, 6, 7, 8);
    AwarenessResult result;
    result.rejections = {
        {overlays::faceAt(u"a\"%1\""_s, QRect(1, 2, 3, 4), 2.345), RejectionReason::FarWithoutBody},
        {overlays::face(u"b"_s, QRect()), RejectionReason::DuplicateOfOwner}};
    result.follow.choice.selectedFollowTarget = FollowStatus::OwnerLost;
    result.follow.choice.reacquireMode = true;
    result.follow.targetDistance = 1.25;
    QString line;
    writeAwarenessReport(QDebug(&line), state, result);
    QCOMPARE(line.trimmed(),
             u"Qt awareness overlays: \"\" ignored_background= 2 body_candidates= \"\" "
             "rejections= \"reject a\\\"%1\\\" box=1,2 3x4 distance=2.35m "
             "reason=far face without body evidence | reject b box=0,0 0x0 "
             "reason=duplicate near Tavin\" "
             "selected_follow_target= \"Tavin lost, holding last position\" follow_zoom= 2.5 "
             "target_distance= 1.25 zoom_hold_remaining= 17 close_no_zoom_active= false "
             "reacquire_mode= true max_zoom_active= false zoom_reason= \"no target\" "
             "selected_follow_target= \"Tavin lost, holding last position\" "
             "follow_target_reason= \"none\" "
             "target_center= QPoint(0,0) smoothed_crop_center= QPointF(5.5,6) "
             "target_in_safe_zone= true edge_protection_active= false zoom_snap_prevented= false "
             "zoom_smoothing_state= \"idle\" crop_center_smoothing_state= \"idle\" "
             "last_tavin_seen_ms= 12 follow_crop= QRect(1,2 3x4) "
             "estimated_head_region= QRect(5,6 7x8)"_s);

    // What only a moving view has to say, by the same names.
    FollowPass& pass = result.follow;
    pass.zoom = {8.0, ZoomReason::Reacquire, true};
    pass.zoomSnapPrevented = true;
    pass.zoomStep = ZoomStep{2.5, ZoomDirection::In, 0.1, 8.0};
    pass.cropStep = CropStep{QRect(1, 2, 3, 4), QPointF(5.5, 6), QPoint(3, 4), 0.52, false};
    pass.choice.followTargetReason = FollowStatus::Person;
    line.clear();
    writeAwarenessReport(QDebug(&line), state, result);
    QVERIFY(line.contains(
        u"max_zoom_active= true "
        "zoom_reason= \"recent Tavin lost/weak, holding aggressive reacquire zoom\" "_s));
    QVERIFY(line.contains(
        u"follow_target_reason= \"Following person\" target_center= QPoint(3,4) "
        "smoothed_crop_center= QPointF(5.5,6) target_in_safe_zone= false "
        "edge_protection_active= true zoom_snap_prevented= true "
        "zoom_smoothing_state= \"zoom-in slow alpha 0.10 target 8.0\" "
        "crop_center_smoothing_state= \"center alpha 0.52 safe_zone false edge true\" "_s));
}

void AwarenessPassTest::theReportDescribesOverlaysAndCandidates() {
    FaceOverlay overlay = overlays::faceAt(identity::owner, QRect(), 1.987);
    QCOMPARE(overlayDescription(overlay), u"Tavin distance=1.99m"_s);
    overlay.speakerNote = u"possible speaker"_s;
    QCOMPARE(overlayDescription(overlay), u"Tavin distance=1.99m possible speaker"_s);
    overlay.hasDistance = false;
    QCOMPARE(overlayDescription(overlay), u"Tavin possible speaker"_s);
    overlay.depthMissing = true;
    QCOMPARE(overlayDescription(overlay), u"Tavin distance=unavailable possible speaker"_s);
    QCOMPARE(candidateDescription({QRect(1, 2, 3, 4), 2.345, 77, u"far body"_s}),
             u"far body box=1,2 3x4 distance=2.35m cells=77"_s);

    AwarenessResult result;
    result.faceOverlays = {overlay, overlays::face(identity::unknown, QRect())};
    result.bodyCandidates = {{QRect(1, 2, 3, 4), 2.0, 50, u"mid body"_s},
                             {QRect(5, 6, 7, 8), 2.5, 60, u"far body"_s}};
    QString line;
    writeAwarenessReport(QDebug(&line), AwarenessState(), result);
    QVERIFY(line.startsWith(u"Qt awareness overlays: \"Tavin distance=unavailable possible speaker "
                            "| Unknown\" ignored_background= 0 body_candidates= \"mid body box=1,2 "
                            "3x4 distance=2.00m cells=50 | far body box=5,6 7x8 distance=2.50m "
                            "cells=60\" rejections= \"\" "_s));
}

void AwarenessPassTest::hostileDepthIsSurvived() {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    const QList<float> values{0.0F,    -1.0F,   infinity, std::numeric_limits<float>::quiet_NaN(),
                              2000.0F, 2500.0F, 3.0e38F,  1600.0F};
    std::mt19937 random(11);
    AwarenessState state;
    for (int round = 0; round < 200; ++round) {
        AwarenessInput input;
        input.imageSize = QSize(int(random() % 3000), int(random() % 2000));
        input.depth.width = int(random() % 300) - 5;
        input.depth.height = int(random() % 300) - 5;
        DepthScene scene(std::max(input.depth.width, 1), std::max(input.depth.height, 1));
        const int block = 1 + int(random() % 60);
        for (int y = 0; y < scene.height; y += block) {
            for (int x = 0; x < scene.width; x += block)
                scene.fill(QRect(x, y, block, block), values[qsizetype(random() % 8)]);
        }
        input.depth.depth_mm = scene.mm;
        if (round % 4 == 0)
            input.depth.depth_mm.resize(scene.mm.size() / 2);
        for (int i = 0; i < 3; ++i)
            input.faceOverlays.append(
                overlays::face(i == 0 ? identity::owner : identity::unknown,
                               QRect(int(random() % 4000) - 1000, int(random() % 4000) - 1000,
                                     int(random() % 500) - 20, int(random() % 500) - 20)));
        const AwarenessResult result = pass(state, input, now + round * 33);
        const QRect image(QPoint(0, 0), input.imageSize);
        for (const BodyCandidate& candidate : result.bodyCandidates)
            QVERIFY(image.contains(candidate.rect));
        const FollowView& view = state.followView;
        QVERIFY(view.followZoom >= 1.0 && view.followZoom <= 8.0);
    }
}

QTEST_APPLESS_MAIN(AwarenessPassTest)
#include "awareness_pass_test.moc"
