#include "common/command_line.h"
#include "record/record_tool_run.h"
#include "recording_index.h"
#include "recording_source.h"
#include "virtual_kinect/recording_folder.h"
#include "virtual_kinect/virtual_kinect_probe.h"

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>

using namespace Qt::StringLiterals;

class RecordToolTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void theRoomIsRecordedAsItWasRendered();
    void theDescriptionTellsWhatWasRecorded();
    void theCalibrationIsTheDevices();
    void aRecordingCanBeRecordedAgain();
    void aMomentIsOneSet();
    void withoutColourThereAreNoColourPictures();
    void unusableSetsAreLeftOutAndCounted_data();
    void unusableSetsAreLeftOutAndCounted();
    void whoeverStopsItHasAFolderThatPlays();
    void aSensorThatFallsSilentEndsItWithAFolderThatPlays_data();
    void aSensorThatFallsSilentEndsItWithAFolderThatPlays();
    void aSensorThatIsSilentFromTheStartLeavesNothing();
    void failuresOfTheSensorAreSaid_data();
    void failuresOfTheSensorAreSaid();
    void aDiskThatIsNearlyFullIsSaidBeforeAnythingIsWritten();
    void aSecondStartLeavesTheFirstRecordingAlone();
    void aFolderRemovedWhileRecordingIsSaid();
    void wrongUseIsRefused_data();
    void wrongUseIsRefused();

private:
    QString folder() const { return place->filePath(u"walk"_s); }
    /// Whether a set was written while the tool runs.
    bool hasSets() const {
        return !QDir(folder() + u"/depth"_s).isEmpty(QDir::Files | QDir::NoDotAndDotDot);
    }
    std::unique_ptr<QTemporaryDir> place;
};

namespace {

virtual_kinect::RecordingIndex indexOf(const QString& folder) {
    return virtual_kinect::readRecordingIndex(folder.toStdString());
}

QJsonObject jsonOf(const QString& name) {
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object()
                                          : QJsonObject();
}

/// Whether a stored picture is what was rendered, to half a unit; readings beyond the range of the
/// device's configuration are lost.
bool equalsRounded(const std::filesystem::path& file, const std::vector<float>& rendered, float min,
                   float max) {
    const cv::Mat stored = cv::imread(file.string(), cv::IMREAD_UNCHANGED);
    if (stored.type() != CV_16UC1 || stored.total() != rendered.size())
        return false;
    for (std::size_t at = 0; at < rendered.size(); ++at) {
        const float value = rendered[at] >= min && rendered[at] <= max ? rendered[at] : 0;
        if (std::abs(stored.ptr<std::uint16_t>()[at] - value) > 0.5F)
            return false;
    }
    return true;
}

} // namespace

void RecordToolTest::init() {
    place = std::make_unique<QTemporaryDir>();
}

void RecordToolTest::theRoomIsRecordedAsItWasRendered() {
    const AttachedDevice attached(u"room"_s, "start=9");
    const QString seconds = qEnvironmentVariableIsSet("LUMENO_LONG_TESTS") ? u"3"_s : u"1"_s;
    const RecordToolRun run({folder(), u"--seconds"_s, seconds});
    QVERIFY2(run.status == tool::Succeeded, qPrintable(run.errors));
    const virtual_kinect::RecordingIndex index = indexOf(folder());
    const QJsonObject description = jsonOf(folder() + u"/recording.json"_s);
    QCOMPARE(description[u"sets"_s].toInteger(), static_cast<qint64>(index.moments.size()));
    QVERIFY(index.moments.size() >= 3); // 30 a second where nothing else is to be done

    const auto room = virtual_kinect::makeRoomSource();
    virtual_kinect::FrameSet rendered;
    QFile times(folder() + u"/timestamps.csv"_s);
    QVERIFY(times.open(QIODevice::ReadOnly));
    times.readLine();
    std::optional<qint64> first;
    for (const virtual_kinect::RecordedMoment& moment : index.moments) {
        const QList<QByteArray> columns = times.readLine().trimmed().split(',');
        const auto frame = [](const QByteArray& ms) { return std::llround(ms.toDouble() * 0.03); };
        // The first recorded frame need not be the first that the room showed.
        if (!first)
            first = description[u"first_sequence"_s].toInteger();
        room->render(static_cast<std::uint64_t>(270 + *first + frame(columns[1])), rendered);
        QVERIFY(equalsRounded(moment.depth, rendered.depth, 500, 4500));
        QVERIFY(equalsRounded(moment.infrared, rendered.infrared, 0, 65535));
        room->render(static_cast<std::uint64_t>(270 + *first + frame(columns[2])), rendered);
        cv::Mat color;
        cv::cvtColor(
            cv::Mat(rendered.colorHeight, rendered.colorWidth, CV_8UC4, rendered.bgrx.data()),
            color, cv::COLOR_BGRA2BGR);
        const double decibels = cv::PSNR(cv::imread(moment.color.string()), color);
        QVERIFY2(decibels >= 38, qPrintable(u"%1 dB"_s.arg(decibels)));
    }
}

void RecordToolTest::theDescriptionTellsWhatWasRecorded() {
    const RecordingFolder small(30, 20);
    const AttachedDevice attached(small.path());
    const QDateTime before = QDateTime::currentDateTimeUtc().addMSecs(-1);
    const RecordToolRun run({folder(), u"--seconds"_s, u"1"_s, u"--lossless"_s});
    QVERIFY2(run.status == tool::Succeeded, qPrintable(run.errors));
    const QJsonObject values = jsonOf(folder() + u"/recording.json"_s);
    const auto sets = static_cast<qint64>(indexOf(folder()).moments.size());
    QCOMPARE(values[u"sets"_s].toInteger(), sets);
    QCOMPARE(values[u"sets_dropped"_s].toInteger(), 0);
    QCOMPARE(values[u"sets_unusable"_s].toInteger(), 0);
    // 50 are due; those that were not rendered in time are missing between the others.
    QVERIFY(sets > 0 && sets + values[u"sets_missed"_s].toInteger() <= 50);
    QCOMPARE(values[u"program_version"_s].toString(), tool::version());
    QCOMPARE(values[u"color"_s].toString(), u"PNG"_s);
    QCOMPARE(values[u"ended"_s].toString(), u"the time was up"_s);
    QVERIFY(values[u"device"_s][u"serial"_s].toString().startsWith(u"recording-"_s));
    const auto began =
        QDateTime::fromString(values[u"first_frame"_s].toString(), Qt::ISODateWithMs);
    QVERIFY(began >= before && began <= QDateTime::currentDateTimeUtc());
    QVERIFY(run.output.contains(u"%1 sets, 0 dropped"_s.arg(sets)));
}

void RecordToolTest::theCalibrationIsTheDevices() {
    const AttachedDevice attached(u"room"_s);
    const RecordToolRun run({u"--moment"_s, folder()});
    QVERIFY2(run.status == tool::Succeeded, qPrintable(run.errors));
    const QJsonObject values = jsonOf(folder() + u"/calibration.json"_s);
    QCOMPARE(values[u"ir"_s].toObject().size(), 9);
    QCOMPARE(values[u"color"_s].toObject().size(), 26);
    QCOMPARE(values[u"serial"_s].toString(), u"virtual-room"_s);
    QVERIFY(!values[u"firmware"_s].toString().isEmpty());
    QCOMPARE(values[u"mirrored"_s].toBool(), true);
    QCOMPARE(values[u"config"_s][u"MaxDepth"_s].toDouble(), 4.5);
    QCOMPARE(values[u"config"_s].toObject().size(), 4);
    const virtual_kinect::Calibration room = virtual_kinect::makeRoomSource()->calibration();
    const virtual_kinect::Calibration stored = indexOf(folder()).calibration;
    for (const auto& [name, value] : room.infrared)
        QCOMPARE(stored.infrared.at(name), value);
    for (const auto& [name, value] : room.color)
        QCOMPARE(stored.color.at(name), value);
}

void RecordToolTest::aRecordingCanBeRecordedAgain() {
    const AttachedDevice room(u"room"_s);
    QCOMPARE(RecordToolRun({folder(), u"--seconds"_s, u"1"_s}).status, tool::Succeeded);
    const QString again = place->filePath(u"again"_s);
    {
        const AttachedDevice recording(folder());
        const RecordToolRun run({again, u"--seconds"_s, u"1"_s});
        QVERIFY2(run.status == tool::Succeeded, qPrintable(run.errors));
    }
    QCOMPARE(indexOf(again).calibration.infrared, indexOf(folder()).calibration.infrared);
    QCOMPARE(indexOf(again).calibration.color, indexOf(folder()).calibration.color);
}

void RecordToolTest::aMomentIsOneSet() {
    const RecordingFolder small(60, 20);
    const AttachedDevice attached(small.path());
    const RecordToolRun run({u"--moment"_s, folder()});
    QVERIFY2(run.status == tool::Succeeded, qPrintable(run.errors));
    QCOMPARE(indexOf(folder()).moments.size(), std::size_t{1});
    QVERIFY(jsonOf(folder() + u"/recording.json"_s)[u"first_sequence"_s].toInteger() >= 30);
}

void RecordToolTest::withoutColourThereAreNoColourPictures() {
    const RecordingFolder small(60, 20);
    const AttachedDevice attached(small.path());
    const RecordToolRun run({folder(), u"--no-colour"_s, u"--seconds"_s, u"1"_s});
    QVERIFY2(run.status == tool::Succeeded, qPrintable(run.errors));
    QVERIFY(!QDir(folder() + u"/color"_s).exists());
    const auto moments = indexOf(folder()).moments;
    QVERIFY(!moments.empty() && moments.front().color.empty());
    QCOMPARE(jsonOf(folder() + u"/recording.json"_s)[u"color"_s].toString(), u"none"_s);
}

void RecordToolTest::unusableSetsAreLeftOutAndCounted_data() {
    QTest::addColumn<QByteArray>("fault");
    QTest::newRow("no pixels") << QByteArray("null-data=ir@0-20");
    QTest::newRow("bytes") << QByteArray("wrong-bytes=color@0-20");
    QTest::newRow("size") << QByteArray("zero-size=depth@0-20");
}

void RecordToolTest::unusableSetsAreLeftOutAndCounted() {
    QFETCH(QByteArray, fault);
    const RecordingFolder small(60, 20);
    const AttachedDevice attached(small.path(), fault);
    const RecordToolRun run({folder(), u"--seconds"_s, u"1"_s});
    QVERIFY2(run.status == tool::Succeeded, qPrintable(run.errors));
    const QJsonObject values = jsonOf(folder() + u"/recording.json"_s);
    QVERIFY(values[u"sets_unusable"_s].toInteger() > 0);
    QCOMPARE(values[u"sets"_s].toInteger(), static_cast<qint64>(indexOf(folder()).moments.size()));
    QVERIFY(run.output.contains(u" unusable, "_s));
}

void RecordToolTest::whoeverStopsItHasAFolderThatPlays() {
    const RecordingFolder small(60, 20);
    const AttachedDevice attached(small.path());
    QElapsedTimer time;
    int asked = 0; // after the second at whose end the progress line is due
    const RecordToolRun run({folder()}, [&] {
        if (!time.isValid())
            time.start();
        return time.hasExpired(1000) && ++asked > 1;
    });
    QVERIFY2(run.status == tool::Succeeded, qPrintable(run.errors));
    QVERIFY(!indexOf(folder()).moments.empty());
    QCOMPARE(jsonOf(folder() + u"/recording.json"_s)[u"ended"_s].toString(), u"it was stopped"_s);
    QVERIFY2(run.errors.contains(u" GB free\n"_s), qPrintable(run.errors)); // the progress line
}

void RecordToolTest::aSensorThatFallsSilentEndsItWithAFolderThatPlays_data() {
    QTest::addColumn<QByteArray>("fault");
    QTest::newRow("silent") << QByteArray("silent@30");
    QTest::newRow("one stream is missing") << QByteArray("missing=ir@30");
    QTest::newRow("pulled out") << QByteArray("unplugged@30");
    QTest::newRow("played once") << QByteArray("once");
}

void RecordToolTest::aSensorThatFallsSilentEndsItWithAFolderThatPlays() {
    QFETCH(QByteArray, fault);
    const RecordingFolder small(30, 20);
    const AttachedDevice attached(small.path(), fault);
    const RecordToolRun run({folder(), u"--patience"_s, u"1"_s});
    QCOMPARE(run.status, tool::Failed);
    QVERIFY2(
        run.errors.contains(u"The recording ended early: the sensor sent nothing for 1 s.\n"_s),
        qPrintable(run.errors));
    const std::size_t sets = indexOf(folder()).moments.size();
    QVERIFY(sets > 0 && sets <= 30);
}

void RecordToolTest::aSensorThatIsSilentFromTheStartLeavesNothing() {
    const RecordingFolder small(30, 20);
    const AttachedDevice attached(small.path(), "silent");
    const RecordToolRun run({folder(), u"--patience"_s, u"1"_s});
    QCOMPARE(run.status, tool::Failed);
    QVERIFY2(run.errors.contains(u"Nothing was recorded: the sensor sent nothing for 1 s.\n"_s),
             qPrintable(run.errors));
    QVERIFY(!QDir(folder()).exists());
}

void RecordToolTest::failuresOfTheSensorAreSaid_data() {
    QTest::addColumn<bool>("attached");
    QTest::addColumn<QByteArray>("fault");
    QTest::addColumn<QString>("reason");
    QTest::newRow("none") << false << QByteArray() << u"no Kinect v2 was found"_s;
    QTest::newRow("busy") << true << QByteArray("busy")
                          << u"the Kinect does not open; another program may be using it"_s;
    QTest::newRow("start") << true << QByteArray("start-fails")
                           << u"the Kinect's streams do not start"_s;
}

void RecordToolTest::failuresOfTheSensorAreSaid() {
    QFETCH(bool, attached);
    QFETCH(QByteArray, fault);
    QFETCH(QString, reason);
    const RecordingFolder small(3);
    const AttachedDevice device(attached ? small.path() : QString(), fault);
    const RecordToolRun run({folder()});
    QCOMPARE(run.status, tool::Failed);
    QCOMPARE(run.errors, u"lumeno-record: Nothing was recorded: %1.\n"_s.arg(reason));
    QVERIFY(!QDir(folder()).exists());
}

void RecordToolTest::aDiskThatIsNearlyFullIsSaidBeforeAnythingIsWritten() {
    const RecordingFolder small(3);
    const AttachedDevice attached(small.path());
    const RecordToolRun run({folder(), u"--keep-free"_s, u"1000000000"_s});
    QCOMPARE(run.status, tool::Failed);
    QVERIFY2(run.errors.contains(u" are free on the disk, and 1000000.0 GB must stay free."_s),
             qPrintable(run.errors));
    QVERIFY(!QDir(folder()).exists());
}

void RecordToolTest::aSecondStartLeavesTheFirstRecordingAlone() {
    const RecordingFolder small(60, 20);
    const AttachedDevice attached(small.path());
    QCOMPARE(RecordToolRun({folder(), u"--seconds"_s, u"1"_s}).status, tool::Succeeded);
    const std::size_t sets = indexOf(folder()).moments.size();
    const RecordToolRun second({folder(), u"--seconds"_s, u"1"_s});
    QCOMPARE(second.status, tool::Failed);
    QCOMPARE(
        second.errors,
        u"lumeno-record: \"%1\" is not empty; a recording needs a new or an empty folder.\n"_s.arg(
            folder()));
    QCOMPARE(indexOf(folder()).moments.size(), sets);
}

void RecordToolTest::aFolderRemovedWhileRecordingIsSaid() {
    const RecordingFolder small(60, 20);
    const AttachedDevice attached(small.path());
    QElapsedTimer time;
    time.start();
    bool removed = false;
    const RecordToolRun run({folder()}, [&] {
        if (!removed && hasSets()) {
            removed = true;
            QDir(folder()).removeRecursively();
        }
        return time.hasExpired(60'000);
    });
    QCOMPARE(run.status, tool::Failed);
    QVERIFY2(run.errors.contains(u"No such file or directory"_s), qPrintable(run.errors));
    QVERIFY(!time.hasExpired(60'000));
}

void RecordToolTest::wrongUseIsRefused_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("no folder") << QStringList{};
    QTest::newRow("moment for a time") << QStringList{u"a"_s, u"--moment"_s, u"--seconds=3"_s};
    QTest::newRow("lossless nothing") << QStringList{u"a"_s, u"--lossless"_s, u"--no-colour"_s};
    QTest::newRow("no time") << QStringList{u"a"_s, u"--seconds=0"_s};
}

void RecordToolTest::wrongUseIsRefused() {
    QFETCH(QStringList, arguments);
    const RecordToolRun run(arguments);
    QCOMPARE(run.status, tool::WrongUse);
    QCOMPARE(run.errors.count(u'\n'), 1);
}

QTEST_GUILESS_MAIN(RecordToolTest)
#include "record_tool_test.moc"
