#include "e2e/program_under_test.h"
#include "enroll/sample_folder.h"
#include "room_story.h"
#include "support/temporary_place.h"
#include "tool_under_test.h"

#include <QDir>
#include <QElapsedTimer>
#include <QImage>
#include <QRegularExpression>
#include <QSet>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace virtual_kinect::room;

/// From an empty folder to being told from a stranger, in the built-in room: the tool takes samples
/// while its owner walks about, then the Control Center watches a whole round of the story.
class RoomEnrolmentTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void enoughSamplesAreKept();
    void everySampleHasTheFormThatIsRead();
    void twoDistancesAreCovered();
    void theOwnerIsNamedWithinTwentySeconds();
    void theStrangerIsNeverTheOwner();

private:
    ToolRun taken;
    std::vector<enroll::SampleFile> samples;
    QStringList faceLines; ///< Of the Control Center, with the time since its first frame in front.
};

namespace {

constexpr int slowestMs = 120000;

constexpr int leastLooks = 120;

/// How many pictures the tool had time for, as its report says.
int looksOf(const ToolRun& run) {
    static const QRegularExpression report(u"Kept \\d+ of (\\d+) frames"_s);
    return report.match(run.output).captured(1).toInt();
}

double stampOf(const QString& line) {
    return line.trimmed().section(u' ', 0, 0).toDouble();
}

/// How many overlays of a line show the owner at this very moment.
qsizetype ownersTracked(const QString& line) {
    static const QRegularExpression owner(u"Tavin conf=\\S+ detector=\\S+ tier=\\w+ face "
                                          "face_px=\\S+ status=tracked"_s);
    qsizetype count = 0;
    for (auto match = owner.globalMatch(line); match.hasNext(); match.next())
        ++count;
    return count;
}

} // namespace

void RoomEnrolmentTest::initTestCase() {
    const TemporaryPlace place;
    taken = runTool({u"take"_s, u"--auto"_s, u"--seconds"_s, u"60"_s, u"--sitting"_s, u"room"_s},
                    u"room"_s, {}, slowestMs);
    qInfo().noquote() << taken.output << taken.errors.right(400);
    // The story waits for nobody: who looks too seldom never sees a face standing still.
    if (looksOf(taken) < leastLooks)
        QSKIP("this machine is too slow or too busy to look at two pictures a second");
    samples = enroll::readSamples(u"faces/tavin"_s);
    for (const enroll::SampleFile& sample : samples) {
        const QImage image(sample.path);
        QCOMPARE(image.size(), QSize(160, 160));
        QCOMPARE(image.format(), QImage::Format_Grayscale8);
    }
    ProgramUnderTest program;
    program.setEnvironment(u"LUMENO_VIRTUAL_KINECT"_s, u"room"_s);
    program.setEnvironment(u"QT_MESSAGE_PATTERN"_s, u"%{time process} %{message}"_s);
    QVERIFY(program.start());
    const QString firstFrames = u"Qt Kinect streams: first RGB/IR/Depth frames converted"_s;
    QVERIFY(program.waitForLog(firstFrames));
    const double began = stampOf(program.logLinesWith(firstFrames).value(0));
    QTest::qWait(int(loopSeconds * 1000)); // the story's own pace, not a state
    for (const QString& line : program.logLinesWith(u"Qt face overlays:"_s))
        faceLines.append(QString::number(stampOf(line) - began, 'f', 1) + u' ' +
                         line.section(u"Qt face overlays:"_s, 1));
    // The same for the Control Center.
    const auto early = std::count_if(faceLines.begin(), faceLines.end(),
                                     [](const QString& line) { return stampOf(line) < 15.0; });
    if (early < 8)
        QSKIP("this machine is too slow or too busy to search faces every second");
}

void RoomEnrolmentTest::enoughSamplesAreKept() {
    QCOMPARE(taken.status, 0);
    QVERIFY2(samples.size() >= 20, qPrintable(QString::number(samples.size())));
}

void RoomEnrolmentTest::everySampleHasTheFormThatIsRead() {
    static const QRegularExpression form(
        u"^room/(near|middle|far)-(front|profile-left|profile-right)-\\d\\d\\.png$"_s);
    for (const enroll::SampleFile& sample : samples) {
        QVERIFY2(form.match(sample.name).hasMatch(), qPrintable(sample.name));
        QCOMPARE(sample.picture.size(), cv::Size(160, 160));
        QVERIFY2(sample.entry.has_value(), qPrintable(sample.name));
    }
}

void RoomEnrolmentTest::twoDistancesAreCovered() {
    QSet<QString> distances;
    for (const enroll::SampleFile& sample : samples)
        distances.insert(enroll::distanceName(sample.entry->distance));
    QVERIFY2(distances.size() >= 2, qPrintable(distances.values().join(u' ')));
}

void RoomEnrolmentTest::theOwnerIsNamedWithinTwentySeconds() {
    const auto named = std::find_if(faceLines.begin(), faceLines.end(),
                                    [](const QString& line) { return ownersTracked(line) > 0; });
    QVERIFY(named != faceLines.end());
    QVERIFY2(stampOf(*named) <= 20.0, qPrintable(*named));
}

void RoomEnrolmentTest::theStrangerIsNeverTheOwner() {
    int strangerSeen = 0;
    bool twoBefore = false;
    for (const QString& line : faceLines) {
        const double seconds = stampOf(line);
        // One face may have two boxes for a moment. A stranger who was taken for the owner would
        // keep the name for seconds, and these lines come once a second.
        const bool two = ownersTracked(line) > 1;
        QVERIFY2(!two || !twoBefore, qPrintable(line));
        twoBefore = two;
        if (seconds < strangerAlone.from + 0.5 || seconds > strangerAlone.to)
            continue;
        strangerSeen += line.contains(u"Unknown"_s);
        QVERIFY2(ownersTracked(line) == 0, qPrintable(line));
    }
    QVERIFY(strangerSeen > 0);
}

int main(int argc, char** argv) {
    return runOnVirtualDisplay<RoomEnrolmentTest>(argc, argv, QSize(1600, 1000));
}
#include "room_enrolment_test.moc"
