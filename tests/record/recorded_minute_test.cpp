#include "common/command_line.h"
#include "record/record_tool_run.h"
#include "recording_index.h"
#include "virtual_kinect/virtual_kinect_probe.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class RecordedMinuteTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aMinuteOfTheRoomHasEverySet();
};

void RecordedMinuteTest::aMinuteOfTheRoomHasEverySet() {
    if (!qEnvironmentVariableIsSet("LUMENO_LONG_TESTS"))
        QSKIP("A minute, and two cores with nothing else to do: set LUMENO_LONG_TESTS.");
    const QTemporaryDir place;
    const QString folder = place.filePath(u"walk"_s);
    const AttachedDevice attached(u"room"_s);
    const RecordToolRun run({folder, u"--seconds"_s, u"60"_s});
    QVERIFY2(run.status == tool::Succeeded, qPrintable(run.errors));
    QVERIFY2(run.output.contains(u"1800 sets, 0 dropped, "_s), qPrintable(run.output));
    QVERIFY2(!run.output.contains(u"missed"_s), qPrintable(run.output));
    QCOMPARE(virtual_kinect::readRecordingIndex(folder.toStdString()).moments.size(),
             std::size_t{1800});
}

QTEST_GUILESS_MAIN(RecordedMinuteTest)
#include "recorded_minute_test.moc"
