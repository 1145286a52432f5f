#include "recording_index.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <sys/mount.h>

using namespace Qt::StringLiterals;

/// The executable as a person runs it.
class RecordE2eTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void ctrlCEndsItWithAFolderThatPlays_data();
    void ctrlCEndsItWithAFolderThatPlays();
    void aFullDiskEndsItWithAFolderThatPlays();
    void helpAndVersionAreAnswered();

private:
    void start(const QStringList& arguments);
    std::size_t playableSets() const {
        return virtual_kinect::readRecordingIndex(folder().toStdString()).moments.size();
    }
    QString folder() const { return place->filePath(u"walk"_s); }

    std::unique_ptr<QTemporaryDir> place;
    std::unique_ptr<QProcess> process;
};

void RecordE2eTest::init() {
    place = std::make_unique<QTemporaryDir>();
    process = std::make_unique<QProcess>();
}

void RecordE2eTest::start(const QStringList& arguments) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"LUMENO_VIRTUAL_KINECT"_s, u"room"_s);
    process->setProcessEnvironment(environment);
    process->start(QStringLiteral(LUMENO_RECORD), arguments);
}

void RecordE2eTest::ctrlCEndsItWithAFolderThatPlays_data() {
    QTest::addColumn<int>("signal");
    QTest::newRow("Ctrl-C") << SIGINT;
    QTest::newRow("kill") << SIGTERM;
}

void RecordE2eTest::ctrlCEndsItWithAFolderThatPlays() {
    QFETCH(int, signal);
    start({folder()});
    const auto recorded = [&] {
        return !QDir(folder() + u"/color"_s).entryList({u"*.jpg"_s}).isEmpty();
    };
    QTRY_VERIFY_WITH_TIMEOUT(recorded(), 60'000);
    QCOMPARE(kill(static_cast<pid_t>(process->processId()), signal), 0);
    QVERIFY(process->waitForFinished(30'000));
    QCOMPARE(process->exitStatus(), QProcess::NormalExit);
    QCOMPARE(process->exitCode(), 0);
    QVERIFY(playableSets() > 0);
    const QString output = QString::fromLocal8Bit(process->readAllStandardOutput());
    QVERIFY2(output.contains(u"%1 sets, "_s.arg(playableSets())), qPrintable(output));
}

void RecordE2eTest::aFullDiskEndsItWithAFolderThatPlays() {
    const QByteArray disk = QFile::encodeName(place->path());
    if (mount("tmpfs", disk.constData(), "tmpfs", 0, "size=8m") != 0)
        QSKIP("A small disk cannot be mounted here.");
    const auto unmount = qScopeGuard([&] { umount2(disk.constData(), MNT_DETACH); });
    start({folder(), u"--keep-free"_s, u"0"_s});
    QVERIFY(process->waitForFinished(90'000));
    QCOMPARE(process->exitCode(), 1);
    const QString errors = QString::fromLocal8Bit(process->readAllStandardError());
    QVERIFY2(errors.contains(u"The recording ended early: "_s), qPrintable(errors));
    QVERIFY2(errors.contains(u"No space left on device"_s), qPrintable(errors));
    QVERIFY(playableSets() > 3);
    QFile description(folder() + u"/recording.json"_s);
    QVERIFY(description.open(QIODevice::ReadOnly));
    QVERIFY(description.readAll().contains("No space left on device"));
}

void RecordE2eTest::helpAndVersionAreAnswered() {
    for (const QString& option : {u"--help"_s, u"--version"_s}) {
        start({option});
        QVERIFY(process->waitForFinished(30'000));
        QCOMPARE(process->exitCode(), 0);
        QVERIFY(process->readAllStandardOutput().contains("lumeno-record"));
    }
}

QTEST_GUILESS_MAIN(RecordE2eTest)
#include "record_e2e_test.moc"
