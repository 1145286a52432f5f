#include "voice/voice_files.h"

#include "support/temporary_place.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTest>

#include <signal.h>

using namespace Qt::StringLiterals;

/// The script that plays the voice service, as the window's reading sees it.
class FakeVoiceTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theAngleSweepsAndEveryReadingIsFresh();
    void itEndsOnASignalAndTakesItsPidFileAlong_data();
    void itEndsOnASignalAndTakesItsPidFileAlong();
    void itEndsByItselfAfterItsTime();
    void itLeavesARunningServiceAlone();
    void wrongArgumentsAreNamed_data();
    void wrongArgumentsAreNamed();
};

namespace {

/// The script, with a home folder of its own.
class FakeVoice {
public:
    explicit FakeVoice(const QString& home) : homePath(home) {}
    ~FakeVoice() {
        process.kill();
        process.waitForFinished();
    }
    FakeVoice(const FakeVoice&) = delete;
    FakeVoice& operator=(const FakeVoice&) = delete;

    void start(const QStringList& arguments = {}) {
        process.start(QStringLiteral(LUMENO_SCRIPTS "/fake-voice.sh"),
                      QStringList{u"--home"_s, homePath} + arguments);
    }
    VoiceDirectionStatus read() const {
        return voiceDirectionStatus(readVoiceFiles(homePath), QDateTime::currentMSecsSinceEpoch(),
                                    false);
    }
    /// The exit status, or -1.
    int end(int byWhichSignal = 0) {
        if (byWhichSignal != 0)
            ::kill(static_cast<pid_t>(process.processId()), byWhichSignal);
        return process.waitForFinished(20000) && process.exitStatus() == QProcess::NormalExit
                   ? process.exitCode()
                   : -1;
    }
    QStringList leftFiles() const {
        return QDir(homePath + u"/.local/state/lumeno"_s).entryList(QDir::Files, QDir::Name);
    }
    QString errors() { return QString::fromUtf8(process.readAllStandardError()); }

private:
    QString homePath;
    QProcess process;
};

} // namespace

void FakeVoiceTest::theAngleSweepsAndEveryReadingIsFresh() {
    const TemporaryPlace place;
    FakeVoice voice(place.home());
    voice.start({u"--rate"_s, u"20"_s, u"--period"_s, u"2"_s});
    QTRY_VERIFY_WITH_TIMEOUT(voice.read().fresh, 20000);
    double least = 0;
    double most = 0;
    const auto swept = [&] {
        const VoiceDirectionStatus status = voice.read();
        if (!status.fresh || !status.hasDirection || status.lowConfidence)
            qFatal("not a fresh reading: %s", qPrintable(status.reason));
        least = qMin(least, status.angleDegrees);
        most = qMax(most, status.angleDegrees);
        return least < -40 && most > 40;
    };
    QTRY_VERIFY_WITH_TIMEOUT(swept(), 20000);
    QVERIFY(least >= -60 && most <= 60);
}

void FakeVoiceTest::itEndsOnASignalAndTakesItsPidFileAlong_data() {
    QTest::addColumn<int>("number");
    QTest::newRow("Ctrl-C") << SIGINT;
    QTest::newRow("terminate") << SIGTERM;
    QTest::newRow("terminal closed") << SIGHUP;
}

void FakeVoiceTest::itEndsOnASignalAndTakesItsPidFileAlong() {
    QFETCH(int, number);
    const TemporaryPlace place;
    FakeVoice voice(place.home());
    voice.start({u"--rate"_s, u"1"_s});
    QTRY_VERIFY_WITH_TIMEOUT(voice.read().fresh, 20000);
    QCOMPARE(voice.end(number), 0);
    QCOMPARE(voice.leftFiles(), QStringList{u"auralis-live-event.json"_s});
}

void FakeVoiceTest::itEndsByItselfAfterItsTime() {
    const TemporaryPlace place;
    FakeVoice voice(place.home());
    voice.start({u"--seconds"_s, u"1"_s});
    QCOMPARE(voice.end(), 0);
    QCOMPARE(voice.leftFiles(), QStringList{u"auralis-live-event.json"_s});
}

void FakeVoiceTest::itLeavesARunningServiceAlone() {
    const TemporaryPlace place;
    FakeVoice first(place.home());
    first.start();
    QTRY_VERIFY_WITH_TIMEOUT(first.read().fresh, 20000);
    FakeVoice second(place.home());
    second.start();
    QCOMPARE(second.end(), 2);
    QVERIFY(second.errors().contains(u"running already"_s));
    QVERIFY(first.leftFiles().contains(u"auralis-live.pid"_s));
}

void FakeVoiceTest::wrongArgumentsAreNamed_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("named");
    QTest::newRow("unknown") << QStringList{u"--angle"_s} << u"--angle"_s;
    QTest::newRow("no value") << QStringList{u"--rate"_s} << u"--rate wants a value"_s;
    QTest::newRow("a word") << QStringList{u"--rate"_s, u"fast"_s} << u"'fast'"_s;
    QTest::newRow("out of range") << QStringList{u"--rate"_s, u"51"_s} << u"1 to 50"_s;
}

void FakeVoiceTest::wrongArgumentsAreNamed() {
    QFETCH(QStringList, arguments);
    QFETCH(QString, named);
    const TemporaryPlace place;
    FakeVoice voice(place.home());
    voice.start(arguments);
    QCOMPARE(voice.end(), 2);
    QVERIFY2(voice.errors().contains(named), "the message names the mistake");
    QVERIFY(voice.leftFiles().isEmpty());
}

QTEST_GUILESS_MAIN(FakeVoiceTest)
#include "fake_voice_test.moc"
