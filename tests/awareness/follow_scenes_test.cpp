#include "awareness/follow_texts.h"
#include "awareness/room_player.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <functional>

using namespace Qt::StringLiterals;

/// Long scenes, checked frame by frame against paths of the zoom and the crop that somebody has
/// looked at. After an intended change run this test once with LUMENO_RENEW_GOLDEN=1 in the
/// environment: it writes the paths anew into tests/awareness/golden, and the difference shows what
/// the change did.
class FollowScenesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void scenesFollowTheirGoldenPaths_data();
    void scenesFollowTheirGoldenPaths();
    void theZoomNeverJumps_data();
    void theZoomNeverJumps();
    void everyCropLiesInTheImage_data();
    void everyCropLiesInTheImage();
};

namespace {

using Scene = std::function<QList<Actor>(double seconds)>;

double ramp(double seconds, double from, double to, double atFrom, double atTo) {
    const double share = std::clamp((seconds - from) / (to - from), 0.0, 1.0);
    return std::lerp(atFrom, atTo, share);
}

/// A stranger, seen from the side, crosses the room in eight seconds; then nobody.
QList<Actor> personWalkingThrough(double seconds) {
    if (seconds >= 9.0)
        return {};
    return {{ramp(seconds, 0.5, 8.5, -0.12, 1.12), 2.5, QString()}};
}

/// Two people pass each other, the near one in front of the far one.
QList<Actor> twoPeopleCrossing(double seconds) {
    return {{ramp(seconds, 1.0, 7.0, 0.85, 0.15), 3.0, QString()},
            {ramp(seconds, 1.0, 7.0, 0.2, 0.8), 2.0, identity::unknown}};
}

/// The owner is recognised, turns away, leaves the room on the right, and comes back on the left.
QList<Actor> ownerLostAndFound(double seconds) {
    if (seconds < 4.0)
        return {{0.45, 2.0, identity::owner}};
    if (seconds < 8.0)
        return {{ramp(seconds, 6.0, 8.0, 0.45, 1.15), 2.0, QString()}};
    if (seconds < 15.0)
        return {};
    const double across = ramp(seconds, 15.0, 17.0, -0.15, 0.4);
    return {{across, 2.3, seconds < 17.5 ? QString() : identity::owner}};
}

/// The owner comes closer than a metre, stays there, and goes back.
QList<Actor> ownerComesClose(double seconds) {
    const double distance_m =
        seconds < 7.0 ? ramp(seconds, 2.0, 5.0, 2.6, 0.7) : ramp(seconds, 8.0, 11.0, 0.7, 2.6);
    return {{0.55, distance_m, identity::owner}};
}

struct NamedScene {
    const char* name;
    Scene scene;
    double seconds;
};

const QList<NamedScene> scenes{{"person_walking_through", personWalkingThrough, 12.0},
                               {"two_people_crossing", twoPeopleCrossing, 9.0},
                               {"owner_lost_and_found", ownerLostAndFound, 22.0},
                               {"owner_comes_close", ownerComesClose, 14.0}};

const QSize image(1920, 1080);

/// The view after each frame of a scene, and the status of its target.
struct Frame {
    double seconds;
    FollowView view;
    QString status;
    QString zoomReason;
};

QList<Frame> played(const NamedScene& scene) {
    RoomPlayer player;
    QList<Frame> frames;
    for (int number = 0; number < scene.seconds * RoomPlayer::fps; ++number) {
        player.play(scene.scene(double(number) / RoomPlayer::fps));
        const FollowPass& pass = player.result.follow;
        frames.append({double(player.now - RoomPlayer::start) / 1000.0, player.state.followView,
                       player.status().section(u" | "_s, 0, 0),
                       followTexts::zoomReason(pass.zoom.zoomReason)});
    }
    return frames;
}

/// Every scene is played once for all tests.
const QList<Frame>& framesOf(const QString& name) {
    static QHash<QString, QList<Frame>> cache;
    for (const NamedScene& scene : scenes) {
        if (QLatin1StringView(scene.name) == name && !cache.contains(name))
            cache.insert(name, played(scene));
    }
    return cache[name];
}

void addSceneRows() {
    QTest::addColumn<QString>("name");
    for (const NamedScene& scene : scenes)
        QTest::newRow(scene.name) << QString::fromLatin1(scene.name);
}

QString goldenLine(const Frame& frame) {
    const FollowView& view = frame.view;
    const QRect& crop = view.followCrop;
    return u"%1,%2,%3,%4,%5,%6,%7,%8"_s.arg(
        QString::number(frame.seconds, 'f', 3), QString::number(view.followZoom, 'f', 3),
        QString::number(crop.x()), QString::number(crop.y()), QString::number(crop.width()),
        QString::number(crop.height()), frame.status, frame.zoomReason);
}

const QString goldenHeader = u"seconds,zoom,crop_x,crop_y,crop_width,crop_height,status,reason"_s;

} // namespace

void FollowScenesTest::scenesFollowTheirGoldenPaths_data() {
    addSceneRows();
}

void FollowScenesTest::scenesFollowTheirGoldenPaths() {
    QFETCH(QString, name);
    QStringList lines{goldenHeader};
    for (const Frame& frame : framesOf(name))
        lines.append(goldenLine(frame));

    QFile golden(QDir(QStringLiteral(LUMENO_GOLDEN_PATHS)).filePath(name + u".csv"_s));
    if (qEnvironmentVariableIsSet("LUMENO_RENEW_GOLDEN")) {
        QVERIFY(golden.open(QIODevice::WriteOnly));
        golden.write(lines.join(u'\n').toUtf8() + '\n');
        QSKIP("the golden path was written, not compared");
    }
    QVERIFY2(golden.open(QIODevice::ReadOnly), qPrintable(golden.fileName()));
    const QStringList expected = QString::fromUtf8(golden.readAll()).trimmed().split(u'\n');
    for (qsizetype i = 0; i < std::min(lines.size(), expected.size()); ++i)
        QCOMPARE(lines[i], expected[i]);
    QCOMPARE(lines.size(), expected.size());
}

void FollowScenesTest::theZoomNeverJumps_data() {
    addSceneRows();
}

void FollowScenesTest::theZoomNeverJumps() {
    QFETCH(QString, name);
    FollowView before;
    for (const Frame& frame : framesOf(name)) {
        const FollowView& view = frame.view;
        if (before.followCrop.isValid() && view.followCrop.isValid()) {
            // A frame holds at most two passes. Each goes at most 16 % of the way in to 8, or 4.5 %
            // of the way out to 1, where the last bit is rounded away.
            const double nearest = 8.0 - (8.0 - before.followZoom) * 0.84 * 0.84;
            const double widest = 1.0 + (before.followZoom - 1.0) * 0.955 * 0.955 - 0.05;
            QVERIFY(view.followZoom <= nearest + 1e-9);
            QVERIFY(view.followZoom >= widest);
        }
        before = view;
    }
}

void FollowScenesTest::everyCropLiesInTheImage_data() {
    addSceneRows();
}

void FollowScenesTest::everyCropLiesInTheImage() {
    QFETCH(QString, name);
    int followed = 0;
    for (const Frame& frame : framesOf(name)) {
        const FollowView& view = frame.view;
        QVERIFY(view.followZoom >= 1.0 && view.followZoom <= 8.0);
        if (!view.followCrop.isValid())
            continue;
        ++followed;
        QVERIFY(QRect(QPoint(0, 0), image).contains(view.followCrop));
        QCOMPARE(view.followCrop.size(), followCropSize(view.followZoom, image));
    }
    QVERIFY(followed > 60);
}

QTEST_APPLESS_MAIN(FollowScenesTest)
#include "follow_scenes_test.moc"
