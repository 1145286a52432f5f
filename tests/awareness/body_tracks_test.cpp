#include "awareness/body_overlays.h"
#include "awareness/body_tracks.h"
#include "awareness/overlays.h"

#include <QTest>

using namespace Qt::StringLiterals;

class BodyTracksTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aCandidateStartsATrack();
    void twoMatchesDoNotMakeATrackStable();
    void threeMatchesWithinSixHundredMillisecondsAreNotEnough_data();
    void threeMatchesWithinSixHundredMillisecondsAreNotEnough();
    void hitsEndAtTwenty();
    void anUnconfirmedTrackLastsTwelveHundredMilliseconds_data();
    void anUnconfirmedTrackLastsTwelveHundredMilliseconds();
    void aStableTrackLastsThePersonLostTime();
    void expiryKeepsTheOrder();
    void theLargestOverlapWins();
    void theEarlierTrackWinsTies();
    void aCandidateBesideATrackJoinsIt_data();
    void aCandidateBesideATrackJoinsIt();
    void anOverlapOfMoreThanEightPercentJoins_data();
    void anOverlapOfMoreThanEightPercentJoins();
    void besideATrackScoresLessTheFartherAway_data();
    void besideATrackScoresLessTheFartherAway();
    void oneTrackTakesOneCandidate();
    void numbersAreNeverReused();
    void theOwnersFaceMakesTheBodyTheOwners();
    void aFaceBesideTheBodyDoesNot();
    void theOwnersFaceMustOverlapByTwoPercent_data();
    void theOwnersFaceMustOverlapByTwoPercent();
    void theOwnersFaceCoversABodyFromFourPercentOn_data();
    void theOwnersFaceCoversABodyFromFourPercentOn();
    void aStableTrackBecomesABodyOverlay();
    void anUnstableTrackDoesNot();
    void aBodyUnderTheOwnersFaceHasNoOverlay();
    void theOwnersBodyIsAPossibleOwner();
    void aBodyNotSeenForMoreThanHalfASecondIsStale_data();
    void aBodyNotSeenForMoreThanHalfASecondIsStale();
    void onlyFacesWithoutNotesAreKept();
};

namespace {

constexpr qint64 start = 1'700'000'000'000;
constexpr int imageWidth = 1920;
constexpr int lostMs = 5000;
const QRect place(800, 200, 200, 600);

BodyCandidate candidate(const QRect& rect, double distance_m = 2.0) {
    return {rect, distance_m, 300, bodyTier(distance_m)};
}

struct Tracks {
    QList<BodyTrack> list;
    int nextId = 0;

    void match(const QList<BodyCandidate>& candidates, qint64 now,
               const QList<FaceOverlay>& faces = {}) {
        matchBodyTracks(list, nextId, candidates, faces, imageWidth, now, lostMs);
    }
};

/// One stable track at `place`, last seen at `start` + 700.
Tracks stableTrack(const QList<FaceOverlay>& faces = {}) {
    Tracks tracks;
    for (const qint64 time : {0, 350, 700})
        tracks.match({candidate(place)}, start + time, faces);
    return tracks;
}

} // namespace

void BodyTracksTest::aCandidateStartsATrack() {
    Tracks tracks;
    tracks.match({candidate(place, 2.5)}, start);
    QCOMPARE(tracks.list.size(), 1);
    const BodyTrack& track = tracks.list[0];
    QCOMPARE(track.id, 0);
    QCOMPARE(track.rect, place);
    QCOMPARE(track.distance_m, 2.5);
    QCOMPARE(track.hits, 1);
    QCOMPARE(track.first_seen_ms, start);
    QCOMPARE(track.last_seen_ms, start);
    QCOMPARE(track.last_tavin_seen_ms, 0);
    QVERIFY(!track.stable && !track.tavin);
    QCOMPARE(track.color, QColor(80, 170, 255));
}

void BodyTracksTest::twoMatchesDoNotMakeATrackStable() {
    Tracks tracks;
    tracks.match({candidate(place)}, start);
    tracks.match({candidate(place)}, start + 700);
    QVERIFY(!tracks.list[0].stable);
    tracks.match({candidate(place)}, start + 710);
    QVERIFY(tracks.list[0].stable);
}

void BodyTracksTest::threeMatchesWithinSixHundredMillisecondsAreNotEnough_data() {
    QTest::addColumn<qint64>("third");
    QTest::addColumn<bool>("stable");
    QTest::newRow("599 ms") << qint64(599) << false;
    QTest::newRow("600 ms") << qint64(600) << true;
}

void BodyTracksTest::threeMatchesWithinSixHundredMillisecondsAreNotEnough() {
    QFETCH(qint64, third);
    Tracks tracks;
    for (const qint64 time : {qint64(0), qint64(33), third})
        tracks.match({candidate(place)}, start + time);
    QTEST(tracks.list[0].stable, "stable");
}

void BodyTracksTest::hitsEndAtTwenty() {
    Tracks tracks;
    for (int i = 0; i < 30; ++i)
        tracks.match({candidate(place)}, start + i);
    QCOMPARE(tracks.list[0].hits, 20);
}

void BodyTracksTest::anUnconfirmedTrackLastsTwelveHundredMilliseconds_data() {
    QTest::addColumn<qint64>("age");
    QTest::addColumn<int>("left");
    QTest::newRow("1200 ms") << qint64(1200) << 1;
    QTest::newRow("1201 ms") << qint64(1201) << 0;
}

void BodyTracksTest::anUnconfirmedTrackLastsTwelveHundredMilliseconds() {
    QFETCH(qint64, age);
    Tracks tracks;
    tracks.match({candidate(place)}, start);
    expireBodyTracks(tracks.list, start + age, lostMs);
    QTEST(int(tracks.list.size()), "left");
}

void BodyTracksTest::aStableTrackLastsThePersonLostTime() {
    Tracks tracks = stableTrack();
    expireBodyTracks(tracks.list, start + 700 + lostMs, lostMs);
    QCOMPARE(tracks.list.size(), 1);
    expireBodyTracks(tracks.list, start + 700 + lostMs + 1, lostMs);
    QVERIFY(tracks.list.isEmpty());
    tracks = stableTrack();
    expireBodyTracks(tracks.list, start + 701, 0);
    QVERIFY(tracks.list.isEmpty());
}

void BodyTracksTest::expiryKeepsTheOrder() {
    Tracks tracks;
    tracks.match({candidate(QRect(0, 0, 100, 300))}, start + 500);
    tracks.match({candidate(QRect(900, 0, 100, 300))}, start);
    tracks.match({candidate(QRect(1800, 0, 100, 300))}, start + 500);
    expireBodyTracks(tracks.list, start + 1300, lostMs);
    QCOMPARE(tracks.list.size(), 2);
    QCOMPARE(tracks.list[0].id, 0);
    QCOMPARE(tracks.list[1].id, 2);
}

void BodyTracksTest::theLargestOverlapWins() {
    Tracks tracks;
    tracks.match({candidate(QRect(0, 0, 100, 300)), candidate(QRect(80, 400, 100, 300))}, start);
    QCOMPARE(tracks.list.size(), 2);
    tracks.match({candidate(QRect(60, 350, 100, 300))}, start + 33);
    QCOMPARE(tracks.list.size(), 2);
    QCOMPARE(tracks.list[0].hits, 1);
    QCOMPARE(tracks.list[1].hits, 2);
}

void BodyTracksTest::theEarlierTrackWinsTies() {
    Tracks tracks;
    tracks.match({candidate(QRect(100, 0, 100, 300)), candidate(QRect(300, 0, 100, 300))}, start);
    tracks.match({candidate(QRect(200, 0, 100, 300))},
                 start + 33); // as far from the one as the other
    QCOMPARE(tracks.list[0].hits, 2);
    QCOMPARE(tracks.list[1].hits, 1);
}

void BodyTracksTest::aCandidateBesideATrackJoinsIt_data() {
    QTest::addColumn<int>("offset");
    QTest::addColumn<int>("expectedTracks");
    // In an image that is 1000 pixels wide, 0.18 of it is 180.
    QTest::newRow("179") << 179 << 1;
    QTest::newRow("180") << 180 << 2;
    QTest::newRow("-179") << -179 << 1;
    QTest::newRow("-180") << -180 << 2;
}

void BodyTracksTest::aCandidateBesideATrackJoinsIt() {
    QFETCH(int, offset);
    QFETCH(int, expectedTracks);
    const QRect first(500, 0, 60, 200);
    QList<BodyTrack> tracks;
    int nextId = 0;
    matchBodyTracks(tracks, nextId, {candidate(first)}, {}, 1000, start, lostMs);
    const QRect second = first.translated(offset, 400);
    matchBodyTracks(tracks, nextId, {candidate(second)}, {}, 1000, start + 33, lostMs);
    QCOMPARE(tracks.size(), expectedTracks);
    QCOMPARE(tracks.last().rect, second);
}

void BodyTracksTest::anOverlapOfMoreThanEightPercentJoins_data() {
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("offset");
    QTest::addColumn<int>("expectedTracks");
    // Boxes of the same height whose centres are farther apart than a track's side by side reach.
    QTest::newRow("60 of 740") << 400 << 340 << 1;
    QTest::newRow("401 of 4999") << 2700 << 2299 << 1;
    QTest::newRow("exactly 40 of 500") << 270 << 230 << 2;
    QTest::newRow("59 of 741") << 400 << 341 << 2;
}

void BodyTracksTest::anOverlapOfMoreThanEightPercentJoins() {
    QFETCH(int, width);
    QFETCH(int, offset);
    QFETCH(int, expectedTracks);
    const QRect first(0, 0, width, 300);
    QList<BodyTrack> tracks;
    int nextId = 0;
    matchBodyTracks(tracks, nextId, {candidate(first)}, {}, 1000, start, lostMs);
    matchBodyTracks(tracks, nextId, {candidate(first.translated(offset, 0))}, {}, 1000, start + 33,
                    lostMs);
    QCOMPARE(tracks.size(), expectedTracks);
}

void BodyTracksTest::besideATrackScoresLessTheFartherAway_data() {
    QTest::addColumn<int>("offset");  // from the track that is not overlapped
    QTest::addColumn<int>("overlap"); // with the other, in columns of 400
    QTest::addColumn<bool>("besideWins");
    // 0.09 less 0.2 times the distance in widths of the image, against the overlap's share.
    QTest::newRow("0.0900 and 66 of 734") << 0 << 66 << true;
    QTest::newRow("0.0898 and 66 of 734") << 1 << 66 << false;
    QTest::newRow("0.0900 and 67 of 733") << 0 << 67 << false;
    QTest::newRow("0.0820 and 60 of 740") << 40 << 60 << true;
    QTest::newRow("0.0812 and 60 of 740") << 44 << 60 << true;
    QTest::newRow("0.0810 and 60 of 740") << 45 << 60 << false;
    QTest::newRow("0.0808 and 60 of 740") << 46 << 60 << false;
}

void BodyTracksTest::besideATrackScoresLessTheFartherAway() {
    QFETCH(int, offset);
    QFETCH(int, overlap);
    QFETCH(bool, besideWins);
    const QRect seen(500, 400, 400, 300);
    const QRect beside = seen.translated(-offset, -350);
    const QRect overlapped = seen.translated(400 - overlap, 0);
    QList<BodyTrack> tracks;
    int nextId = 0;
    matchBodyTracks(tracks, nextId, {candidate(overlapped), candidate(beside)}, {}, 1000, start,
                    lostMs);
    QCOMPARE(tracks.size(), 2);
    matchBodyTracks(tracks, nextId, {candidate(seen)}, {}, 1000, start + 33, lostMs);
    QCOMPARE(tracks.size(), 2);
    QCOMPARE(tracks[besideWins ? 1 : 0].rect, seen);
}

void BodyTracksTest::oneTrackTakesOneCandidate() {
    Tracks tracks;
    tracks.match({candidate(place)}, start);
    tracks.match({candidate(place), candidate(place.translated(10, 0))}, start + 33);
    QCOMPARE(tracks.list.size(), 2);
    QCOMPARE(tracks.list[0].hits, 2);
    QCOMPARE(tracks.list[1].hits, 1);
}

void BodyTracksTest::numbersAreNeverReused() {
    Tracks tracks;
    tracks.match({candidate(place)}, start);
    expireBodyTracks(tracks.list, start + 2000, lostMs);
    QVERIFY(tracks.list.isEmpty());
    tracks.match({candidate(place)}, start + 2000);
    QCOMPARE(tracks.list[0].id, 1);
}

void BodyTracksTest::theOwnersFaceMakesTheBodyTheOwners() {
    const FaceOverlay owner = overlays::face(identity::owner, QRect(850, 200, 100, 100));
    Tracks tracks;
    tracks.match({candidate(place)}, start, {owner});
    QVERIFY(tracks.list[0].tavin);
    QCOMPARE(tracks.list[0].last_tavin_seen_ms, start);
    tracks.match({candidate(place)}, start + 60'000);
    QVERIFY2(tracks.list[0].tavin, "as long as the track lives");
    QCOMPARE(tracks.list[0].last_tavin_seen_ms, start);
}

void BodyTracksTest::aFaceBesideTheBodyDoesNot() {
    Tracks tracks;
    tracks.match({candidate(place)}, start,
                 {overlays::face(identity::owner, QRect(300, 200, 100, 100)),
                  overlays::face(identity::unknown, QRect(850, 200, 100, 100)),
                  overlays::face(u"tavin"_s, QRect(850, 200, 100, 100))});
    QVERIFY(!tracks.list[0].tavin);
}

void BodyTracksTest::theOwnersFaceMustOverlapByTwoPercent_data() {
    QTest::addColumn<int>("columns");
    QTest::addColumn<bool>("linked");
    QTest::newRow("exactly 1200 of 60000") << 1200 << false;
    QTest::newRow("1201 of 59999") << 1201 << true;
}

void BodyTracksTest::theOwnersFaceMustOverlapByTwoPercent() {
    QFETCH(int, columns);
    // The body of a face of 10200x100 is expected in a box of 30600x500.
    const FaceOverlay owner = overlays::face(identity::owner, QRect(10900, 300, 10200, 100));
    const QRect expected(700, 200, 30600, 500);
    Tracks tracks;
    tracks.match({candidate(expected.translated(30600 - columns, 0))}, start, {owner});
    QTEST(tracks.list[0].tavin, "linked");
}

void BodyTracksTest::theOwnersFaceCoversABodyFromFourPercentOn_data() {
    QTest::addColumn<int>("columns");
    QTest::addColumn<bool>("covered");
    QTest::newRow("exactly 600 of 15000") << 600 << false;
    QTest::newRow("601 of 14999") << 601 << true;
}

void BodyTracksTest::theOwnersFaceCoversABodyFromFourPercentOn() {
    QFETCH(int, columns);
    QFETCH(bool, covered);
    // The body of a face of 2600x100 is expected in a box of 7800x500.
    const FaceOverlay owner = overlays::face(identity::owner, QRect(3300, 300, 2600, 100));
    BodyTrack track;
    track.rect = QRect(700, 200, 7800, 500).translated(7800 - columns, 0);
    track.stable = true;
    QList<FaceOverlay> list{owner};
    appendBodyOverlays(list, {track}, start);
    QCOMPARE(list.size(), covered ? 1 : 2);
}

void BodyTracksTest::aStableTrackBecomesABodyOverlay() {
    QList<FaceOverlay> list;
    appendBodyOverlays(list, stableTrack().list, start + 700);
    QCOMPARE(list.size(), 1);
    const FaceOverlay& overlay = list[0];
    QCOMPARE(overlay.rect, place);
    QCOMPARE(overlay.label, u"Person"_s);
    QCOMPARE(overlay.color, QColor(80, 170, 255));
    QCOMPARE(overlay.confidence, 0.0);
    QCOMPARE(overlay.detector, u"depth_body"_s);
    QCOMPARE(overlay.status, u"body tracked"_s);
    QVERIFY(overlay.hasDistance && !overlay.depthMissing && !overlay.stale);
    QCOMPARE(overlay.distanceMeters, 2.0);
    QVERIFY(overlay.bodyOnly && !overlay.faceEvidence);
    QCOMPARE(overlay.tier, u"mid body"_s);
    QCOMPARE(overlay.reason, u"accepted body/person evidence"_s);
    QVERIFY(overlay.speakerNote.isEmpty());
}

void BodyTracksTest::anUnstableTrackDoesNot() {
    Tracks tracks;
    tracks.match({candidate(place)}, start);
    QList<FaceOverlay> list;
    appendBodyOverlays(list, tracks.list, start);
    QVERIFY(list.isEmpty());
}

void BodyTracksTest::aBodyUnderTheOwnersFaceHasNoOverlay() {
    const FaceOverlay owner = overlays::face(identity::owner, QRect(850, 200, 100, 100));
    QList<FaceOverlay> list{owner};
    appendBodyOverlays(list, stableTrack({owner}).list, start + 700);
    QCOMPARE(list.size(), 1);
    list = {overlays::face(identity::unknown, owner.rect)};
    appendBodyOverlays(list, stableTrack().list, start + 700);
    QCOMPARE(list.size(), 2);
}

void BodyTracksTest::theOwnersBodyIsAPossibleOwner() {
    const Tracks tracks = stableTrack({overlays::face(identity::owner, QRect(850, 200, 100, 100))});
    QList<FaceOverlay> list;
    appendBodyOverlays(list, tracks.list, start + 700);
    QCOMPARE(list.size(), 1);
    QCOMPARE(list[0].label, u"Possible Tavin"_s);
    QCOMPARE(list[0].color, QColor(91, 232, 134));
    QCOMPARE(list[0].reason, u"Tavin face lost, holding body track"_s);
}

void BodyTracksTest::aBodyNotSeenForMoreThanHalfASecondIsStale_data() {
    QTest::addColumn<qint64>("age");
    QTest::addColumn<bool>("stale");
    QTest::addColumn<QString>("status");
    QTest::newRow("500 ms") << qint64(500) << false << u"body tracked"_s;
    QTest::newRow("501 ms") << qint64(501) << true << u"body last seen 0.5s"_s;
    QTest::newRow("3.26 s") << qint64(3260) << true << u"body last seen 3.3s"_s;
}

void BodyTracksTest::aBodyNotSeenForMoreThanHalfASecondIsStale() {
    QFETCH(qint64, age);
    QList<FaceOverlay> list;
    appendBodyOverlays(list, stableTrack().list, start + 700 + age);
    QTEST(list[0].stale, "stale");
    QTEST(list[0].status, "status");
}

void BodyTracksTest::onlyFacesWithoutNotesAreKept() {
    QList<FaceOverlay> list{overlays::body(identity::person, place, 2.0),
                            overlays::face(identity::unknown, QRect(0, 0, 9, 9)),
                            overlays::body(identity::possibleOwner, place, 2.0)};
    list[1].speakerNote = u"possible speaker"_s;
    keepFacesOnly(list);
    QCOMPARE(list.size(), 1);
    QCOMPARE(list[0].label, u"Unknown"_s);
    QVERIFY(list[0].speakerNote.isEmpty());
}

QTEST_APPLESS_MAIN(BodyTracksTest)
#include "body_tracks_test.moc"
