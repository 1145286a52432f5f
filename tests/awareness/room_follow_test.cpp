#include "app/identity.h"
#include "awareness/room_story_player.h"
#include "room_person.h"
#include "support/temporary_place.h"

#include <QTest>

#include <algorithm>
#include <cmath>
#include <functional>

using namespace Qt::StringLiterals;
using namespace virtual_kinect::room;

/// The built-in room's story seen by the face pass and the awareness pass, in the story's own time,
/// so that the result does not depend on the machine's pace. With LUMENO_KEEP_PICTURES set to a
/// folder, what the Follow view shows in the moments of the story is written there.
class RoomFollowTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void nobodyIsFollowedInTheEmptyRoom();
    void theOwnerIsFollowed();
    void thereIsNoZoomCloserThanAMetre();
    void theViewIsHeldWhileTheOwnerIsAway();
    void theOwnerIsFoundAgain();
    void theOwnerStaysTheTargetBesideAStranger();
    void theStrangerAloneIsFollowed();
    void theOwnerIsForgottenLongAfter();

private:
    TemporaryPlace place;
};

namespace {

using room_story_player::Moment;
using room_story_player::Story;

QList<Moment> story;

/// How many of the moments between two times are as `wanted`, 0 … 1.
double share(double from, double to, const std::function<bool(const Moment&)>& wanted) {
    int all = 0;
    int good = 0;
    for (const Moment& moment : story) {
        if (moment.seconds < from || moment.seconds >= to)
            continue;
        ++all;
        good += wanted(moment) ? 1 : 0;
    }
    return all == 0 ? 0.0 : double(good) / all;
}

bool showsHeadOf(const Moment& moment, Person who) {
    for (const PersonMoment& person : peopleAt(moment.seconds)) {
        if (person.who != who)
            continue;
        const cv::Point2d head =
            project({person.x_m, headHeight_m(who) + person.lift_m, person.z_m});
        return moment.view.followCrop.contains(QPoint(int(head.x), int(head.y)));
    }
    return false;
}

/// What a failing test shows: the statuses and zooms of a stretch, once a second.
QByteArray told(double from, double to) {
    QStringList lines;
    for (const Moment& moment : story) {
        if (moment.seconds < from || moment.seconds >= to ||
            int(std::lround(moment.seconds * framesPerSecond)) % framesPerSecond != 0)
            continue;
        const QRect& crop = moment.view.followCrop;
        lines.append(u"%1 s: %2, zoom %3 (%4), crop %5,%6 %7x%8, sees %9"_s.arg(
            QString::number(moment.seconds, 'f', 1), moment.status,
            QString::number(moment.view.followZoom, 'f', 2),
            followTexts::zoomReason(moment.pass.zoom.zoomReason), QString::number(crop.x()),
            QString::number(crop.y()), QString::number(crop.width()),
            QString::number(crop.height()), moment.labels.join(u", "_s)));
    }
    return lines.join(u'\n').toUtf8();
}

} // namespace

void RoomFollowTest::initTestCase() {
    story = Story().play();
    if (qEnvironmentVariableIsSet("LUMENO_KEEP_PICTURES"))
        qInfo().noquote() << told(0.0, loopSeconds);
}

void RoomFollowTest::nobodyIsFollowedInTheEmptyRoom() {
    const double calm = share(emptyAtFirst.from, emptyAtFirst.to, [](const Moment& moment) {
        return moment.status == u"No follow target"_s && moment.view.followCrop.isNull();
    });
    QVERIFY2(calm == 1.0, told(emptyAtFirst.from, emptyAtFirst.to));
}

void RoomFollowTest::theOwnerIsFollowed() {
    const double from = ownerFrontal.from + 2.0;
    const double followed = share(from, ownerFrontal.to, [](const Moment& moment) {
        return moment.status == u"Following Tavin"_s && moment.view.followZoom > 2.5 &&
               showsHeadOf(moment, Person::Owner);
    });
    QVERIFY2(followed > 0.95, told(from, ownerFrontal.to));
}

void RoomFollowTest::thereIsNoZoomCloserThanAMetre() {
    const double from = ownerVeryClose.from + 0.5;
    const double close = share(from, ownerVeryClose.to, [](const Moment& moment) {
        return moment.pass.zoom.closeNoZoomActive() && moment.status == u"Following Tavin"_s;
    });
    QVERIFY2(close > 0.95, told(from - 2.0, ownerVeryClose.to));
    const double wide = share(ownerVeryClose.to - 0.5, ownerVeryClose.to,
                              [](const Moment& moment) { return moment.view.followZoom < 1.5; });
    QVERIFY2(wide == 1.0, told(from, ownerVeryClose.to));
}

void RoomFollowTest::theViewIsHeldWhileTheOwnerIsAway() {
    const double held = share(ownerAway.from, ownerAway.to, [](const Moment& moment) {
        return moment.view.followCrop.isValid() &&
               (moment.status == u"Tavin lost, holding last position"_s ||
                moment.status == u"Reacquiring Tavin face"_s);
    });
    QVERIFY2(held == 1.0, told(ownerAway.from, ownerAway.to));
}

void RoomFollowTest::theOwnerIsFoundAgain() {
    const double from = ownerReturned.from + 2.0;
    const double found = share(from, bothFrontal.from, [](const Moment& moment) {
        return moment.status == u"Following Tavin"_s && showsHeadOf(moment, Person::Owner);
    });
    QVERIFY2(found > 0.95, told(from, bothFrontal.from));
}

void RoomFollowTest::theOwnerStaysTheTargetBesideAStranger() {
    const double followed = share(bothFrontal.from, bothFrontal.to, [](const Moment& moment) {
        return moment.status == u"Following Tavin"_s && showsHeadOf(moment, Person::Owner);
    });
    QVERIFY2(followed > 0.95, told(bothFrontal.from, bothFrontal.to));
}

void RoomFollowTest::theStrangerAloneIsFollowed() {
    // The owner's face is remembered for 5 s, and for 5 s more any body may be the owner's.
    const double from = strangerAlone.from + 10.5;
    const double followed = share(from, strangerAlone.to, [](const Moment& moment) {
        return moment.status == u"Following person"_s && showsHeadOf(moment, Person::Stranger);
    });
    QVERIFY2(followed > 0.95, told(strangerAlone.from, strangerAlone.to));
}

void RoomFollowTest::theOwnerIsForgottenLongAfter() {
    const double from = strangerAlone.to;
    const double without = share(from, loopSeconds, [](const Moment& moment) {
        return moment.labels.filter(identity::owner).isEmpty();
    });
    QVERIFY2(without == 1.0, told(from, loopSeconds));
}

QTEST_GUILESS_MAIN(RoomFollowTest)
#include "room_follow_test.moc"
