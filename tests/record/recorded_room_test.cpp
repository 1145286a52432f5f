#include "awareness/room_story_player.h"
#include "record/recording_writer.h"
#include "recording_source.h"
#include "support/temporary_place.h"

#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;
using room_story_player::Moment;
using room_story_player::Story;

/// A recording of the room must tell the Control Center the same story as the room. The frames are
/// written by the recorder's own threads, each of them, whatever the machine's pace.
class RecordedRoomTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void facesBodiesAndFollowStoryAreTheSame();

private:
    TemporaryPlace place;
};

namespace {

/// The owner comes in, is recognised and followed. With LUMENO_LONG_TESTS the whole story.
double storySecondsToCompare() {
    return qEnvironmentVariableIsSet("LUMENO_LONG_TESTS") ? virtual_kinect::room::loopSeconds : 9;
}

template <typename Value>
record::FramePixels pixelsOf(const std::shared_ptr<virtual_kinect::FrameSet>& frames,
                             const std::vector<Value>& values, int width, int height) {
    return {{frames, reinterpret_cast<const unsigned char*>(values.data())}, width, height};
}

/// Records the room's frames; returns how many sets are in the folder.
std::int64_t recordRoom(const QString& folder, double seconds) {
    record::RecordingFiles files(folder, u"jpg"_s);
    if (!files.begin().isEmpty())
        return 0;
    record::RecordingWriter writer(files, true, false);
    const auto room = virtual_kinect::makeRoomSource();
    const auto count = std::lround(seconds * virtual_kinect::room::framesPerSecond);
    for (std::int64_t number = 0; number < count; ++number) {
        const auto frames = std::make_shared<virtual_kinect::FrameSet>();
        room->render(static_cast<std::uint64_t>(number), *frames);
        record::FrameSet set;
        set.color = pixelsOf(frames, frames->bgrx, frames->colorWidth, frames->colorHeight);
        set.infrared = pixelsOf(frames, frames->infrared, frames->depthWidth, frames->depthHeight);
        set.depth = pixelsOf(frames, frames->depth, frames->depthWidth, frames->depthHeight);
        const std::int64_t time = number * 8000 / virtual_kinect::room::framesPerSecond;
        while (!writer.add(set, time, time) && writer.failure().isEmpty())
            QTest::qSleep(5);
    }
    writer.finish();
    return writer.counts().sets;
}

/// Share of the moments that are alike, 0 to 1.
template <typename Alike>
double share(const QList<Moment>& some, const QList<Moment>& others, const Alike& alike) {
    int count = 0;
    for (qsizetype at = 0; at < some.size(); ++at)
        count += alike(some[at], others[at]) ? 1 : 0;
    return static_cast<double>(count) / static_cast<double>(some.size());
}

bool sameFaces(const Moment& some, const Moment& others) {
    return some.labels == others.labels;
}

bool sameTarget(const Moment& some, const Moment& others) {
    return some.status == others.status;
}

/// Within a hundredth of the picture's width.
bool sameCrop(const Moment& some, const Moment& others) {
    constexpr int tolerance = 19;
    const QRect& a = some.view.followCrop;
    const QRect& b = others.view.followCrop;
    return a.isNull() == b.isNull() && std::abs(a.left() - b.left()) <= tolerance &&
           std::abs(a.top() - b.top()) <= tolerance &&
           std::abs(a.right() - b.right()) <= tolerance &&
           std::abs(a.bottom() - b.bottom()) <= tolerance;
}

} // namespace

void RecordedRoomTest::facesBodiesAndFollowStoryAreTheSame() {
    const QTemporaryDir recordings;
    const QString folder = recordings.filePath(u"walk"_s);
    const double seconds = storySecondsToCompare();
    QCOMPARE(recordRoom(folder, seconds),
             std::lround(seconds * virtual_kinect::room::framesPerSecond));
    const QList<Moment> room = Story().play(seconds);
    const QList<Moment> recording =
        Story(virtual_kinect::makeRecordingSource(folder.toStdString())).play(seconds);
    QCOMPARE(recording.size(), room.size());
    const double faces = share(room, recording, sameFaces);
    const double targets = share(room, recording, sameTarget);
    const double crops = share(room, recording, sameCrop);
    qInfo() << "Moments:" << room.size() << "same faces and bodies:" << faces
            << "same follow target:" << targets << "same crop:" << crops;
    QVERIFY(faces >= 0.97);
    QVERIFY(targets >= 0.97);
    QVERIFY(crops >= 0.95);
    // There is a story to compare.
    QVERIFY(std::any_of(room.begin(), room.end(),
                        [](const Moment& moment) { return moment.labels.contains(u"Tavin"_s); }));
}

QTEST_GUILESS_MAIN(RecordedRoomTest)
#include "recorded_room_test.moc"
