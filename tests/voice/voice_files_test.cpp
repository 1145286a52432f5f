#include "voice/voice_files.h"

#include "support/temporary_place.h"

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <thread>

using namespace Qt::StringLiterals;

class VoiceFilesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void withoutAStateFolderNothingExists();
    void contentAndModificationTimeAreRead();
    void aLivingProcessIsRunning();
    void aDeadProcessIsNotRunning();
    void aPidThatNamesNobodyIsNotRunning_data();
    void aPidThatNamesNobodyIsNotRunning();
    void aProcessOfAnotherUserIsNotRunning();
    void aFileWithoutPermissionExistsAndDoesNotOpen();
    void whatIsNoRegularFileExistsAndDoesNotOpen_data();
    void whatIsNoRegularFileExistsAndDoesNotOpen();
    void aDanglingLinkDoesNotExist();
    void aLinkToAFileIsFollowed();
    void noMoreThanTheLimitIsRead();
    void carriageReturnsAreDroppedAsInAnyText();
    void timesFarOffAreKeptOrCutToWhatMillisecondsHold();
    void aFileThatIsReplacedIsReadWholeOrNotAtAll();
    void aFileThatIsRewrittenInPlaceNeverHurts();

private:
    void writePid(const QByteArray& content) { write(pidPath, content); }
    void writeEvent(const QByteArray& content) { write(eventPath, content); }
    static void write(const QString& path, const QByteArray& content);
    VoiceFiles read() const { return readVoiceFiles(place->home()); }

    std::unique_ptr<TemporaryPlace> place;
    QString folder;
    QString pidPath;
    QString eventPath;
};

namespace {

/// A process that lives until the end of the scope.
class Sleeper {
public:
    Sleeper() {
        process.start(u"sleep"_s, {u"600"_s});
        if (!process.waitForStarted())
            qFatal("no process to look for");
    }
    ~Sleeper() { end(); }
    Sleeper(const Sleeper&) = delete;
    Sleeper& operator=(const Sleeper&) = delete;

    void end() {
        process.kill();
        process.waitForFinished();
    }
    QByteArray pid() const { return QByteArray::number(process.processId()); }

private:
    QProcess process;
};

/// Where the tests run as root, who may read every file and signal every process: the rights of an
/// ordinary user until the end of the scope.
class WithoutRootsRights {
public:
    WithoutRootsRights() {
        constexpr uid_t nobody = 65534;
        if (root && setresuid(nobody, nobody, 0) != 0)
            qFatal("cannot give up root's rights");
    }
    ~WithoutRootsRights() {
        if (root && setresuid(0, 0, 0) != 0)
            qFatal("cannot get root's rights back");
    }
    WithoutRootsRights(const WithoutRootsRights&) = delete;
    WithoutRootsRights& operator=(const WithoutRootsRights&) = delete;

private:
    bool root = geteuid() == 0;
};

} // namespace

void VoiceFilesTest::init() {
    place = std::make_unique<TemporaryPlace>();
    folder = place->home() + u"/.local/state/lumeno"_s;
    pidPath = folder + u"/auralis-live.pid"_s;
    eventPath = folder + u"/auralis-live-event.json"_s;
    QVERIFY(QDir().mkpath(folder));
}

void VoiceFilesTest::cleanup() {
    place.reset();
}

void VoiceFilesTest::write(const QString& path, const QByteArray& content) {
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
}

void VoiceFilesTest::withoutAStateFolderNothingExists() {
    QVERIFY(QDir(place->home() + u"/.local"_s).removeRecursively());
    const VoiceFiles files = read();
    QVERIFY(!files.processAlive && !files.eventExists && !files.eventOpened);
    QCOMPARE(files.eventPath, eventPath);
}

void VoiceFilesTest::contentAndModificationTimeAreRead() {
    writeEvent("{\"status\": \"M\xc3\xbcller\"}");
    QFile file(eventPath);
    QVERIFY(file.open(QIODevice::ReadWrite));
    const QDateTime time = QDateTime::fromMSecsSinceEpoch(1'600'000'000'123);
    QVERIFY(file.setFileTime(time, QFileDevice::FileModificationTime));
    file.close();
    const VoiceFiles files = read();
    QVERIFY(files.eventExists && files.eventOpened);
    QCOMPARE(files.eventBytes, QByteArray("{\"status\": \"M\xc3\xbcller\"}"));
    QCOMPARE(files.eventModifiedMs, 1'600'000'000'123);
}

void VoiceFilesTest::aLivingProcessIsRunning() {
    const Sleeper sleeper;
    writePid(" " + sleeper.pid() + "\n");
    QVERIFY(read().processAlive);
}

void VoiceFilesTest::aDeadProcessIsNotRunning() {
    Sleeper sleeper;
    const QByteArray pid = sleeper.pid();
    sleeper.end();
    writePid(pid);
    QVERIFY(!read().processAlive);
}

void VoiceFilesTest::aPidThatNamesNobodyIsNotRunning_data() {
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("a word") << "auralis"_ba;
    // kill() would take these for whole groups of processes.
    QTest::newRow("zero") << "0"_ba;
    QTest::newRow("every process") << "-1"_ba;
    QTest::newRow("a group") << QByteArray::number(-static_cast<qint64>(getpgrp()));
    // Cut to 32 bits these would be this very process and its group.
    QTest::newRow("own pid beyond 32 bits")
        << QByteArray::number((qint64(1) << 32) + static_cast<qint64>(getpid()));
    QTest::newRow("zero beyond 32 bits") << QByteArray::number(qint64(1) << 32);
    QTest::newRow("minus one beyond 32 bits") << "4294967295"_ba;
    QTest::newRow("the largest of 64 bits") << "9223372036854775807"_ba;
    QTest::newRow("more than 64 bits") << "99999999999999999999999"_ba;
    QTest::newRow("the largest of 32 bits") << "2147483647"_ba;
}

void VoiceFilesTest::aPidThatNamesNobodyIsNotRunning() {
    QFETCH(QByteArray, content);
    writePid(content);
    QVERIFY(!read().processAlive);
}

void VoiceFilesTest::aProcessOfAnotherUserIsNotRunning() {
    if (geteuid() != 0) {
        writePid("1"); // belongs to root
        QVERIFY(!read().processAlive);
        return;
    }
    const Sleeper ofRoot;
    writePid(ofRoot.pid());
    QVERIFY(read().processAlive);
    QVERIFY(QFile::setPermissions(place->home() + u"/.."_s, QFile::Permissions(0x7777)));
    VoiceFiles files;
    bool readable = false;
    {
        const WithoutRootsRights ordinary;
        files = read();
        readable = QFile(pidPath).open(QIODevice::ReadOnly);
    }
    QVERIFY(readable);
    QVERIFY(!files.processAlive);
}

void VoiceFilesTest::aFileWithoutPermissionExistsAndDoesNotOpen() {
    const Sleeper sleeper;
    writePid(sleeper.pid());
    writeEvent("{}");
    QVERIFY(QFile::setPermissions(eventPath, {}));
    QVERIFY(QFile::setPermissions(pidPath, {}));
    QVERIFY(QFile::setPermissions(place->home() + u"/.."_s, QFile::Permissions(0x7777)));
    VoiceFiles files;
    {
        const WithoutRootsRights ordinary;
        files = read();
    }
    QVERIFY(files.eventExists && !files.eventOpened && !files.processAlive);
    QCOMPARE(files.eventModifiedMs, 0);
}

void VoiceFilesTest::whatIsNoRegularFileExistsAndDoesNotOpen_data() {
    QTest::addColumn<QString>("kind");
    QTest::newRow("folder") << u"folder"_s;
    QTest::newRow("fifo") << u"fifo"_s;
    QTest::newRow("link to a fifo") << u"link"_s;
    QTest::newRow("endless device") << u"/dev/zero"_s;
    QTest::newRow("terminal") << u"/dev/tty"_s;
}

void VoiceFilesTest::whatIsNoRegularFileExistsAndDoesNotOpen() {
    QFETCH(QString, kind);
    for (const QString& path : {pidPath, eventPath}) {
        const QByteArray name = QFile::encodeName(path);
        if (kind == u"folder"_s)
            QVERIFY(QDir().mkdir(path));
        else if (kind == u"fifo"_s)
            QCOMPARE(mkfifo(name.constData(), 0600), 0);
        else if (kind.startsWith(u'/'))
            QVERIFY(QFile::link(kind, path));
        else {
            QCOMPARE(mkfifo((name + ".fifo").constData(), 0600), 0);
            QVERIFY(QFile::link(path + u".fifo"_s, path));
        }
    }
    // Would never come back if it waited for a writer.
    const VoiceFiles files = read();
    QVERIFY(files.eventExists && !files.eventOpened && !files.processAlive);
    QVERIFY(files.eventBytes.isEmpty());
}

void VoiceFilesTest::aDanglingLinkDoesNotExist() {
    QVERIFY(QFile::link(folder + u"/nothing"_s, eventPath));
    QVERIFY(QFile::link(pidPath, pidPath)); // to itself
    const VoiceFiles files = read();
    QVERIFY(!files.eventExists && !files.eventOpened && !files.processAlive);
}

void VoiceFilesTest::aLinkToAFileIsFollowed() {
    write(folder + u"/elsewhere"_s, "{}");
    QVERIFY(QFile::link(folder + u"/elsewhere"_s, eventPath));
    QCOMPARE(read().eventBytes, "{}"_ba);
}

void VoiceFilesTest::noMoreThanTheLimitIsRead() {
    const Sleeper sleeper;
    writeEvent(QByteArray(voiceFileLimitBytes, 'x') + "tail");
    writePid(QByteArray(voiceFileLimitBytes, ' ') + sleeper.pid());
    QVERIFY(QFile::resize(eventPath, qint64(64) << 30)); // with a hole, so that no disk is needed
    const VoiceFiles files = read();
    QCOMPARE(files.eventBytes.size(), voiceFileLimitBytes);
    QVERIFY(!files.eventBytes.contains('t'));
    QVERIFY(!files.processAlive);

    writePid(QByteArray(voiceFileLimitBytes - 64, ' ') + sleeper.pid());
    QVERIFY(read().processAlive);
    writeEvent(QByteArray(voiceFileLimitBytes - 8, '\r') + "12345678 more");
    QCOMPARE(read().eventBytes, "12345678"_ba);
}

void VoiceFilesTest::carriageReturnsAreDroppedAsInAnyText() {
    writeEvent("{\r\n\"a\": 1\r\n}\r\n");
    QFile plain(eventPath);
    QVERIFY(plain.open(QIODevice::ReadOnly | QIODevice::Text));
    QCOMPARE(read().eventBytes, plain.readAll());
    QCOMPARE(read().eventBytes, "{\n\"a\": 1\n}\n"_ba);
}

void VoiceFilesTest::timesFarOffAreKeptOrCutToWhatMillisecondsHold() {
    writeEvent("{}");
    const QByteArray name = QFile::encodeName(eventPath);
    for (const time_t seconds :
         {time_t(-5), time_t(0), time_t(253'402'300'799), std::numeric_limits<time_t>::max() / 2,
          std::numeric_limits<time_t>::max()}) {
        const timespec times[] = {{seconds, 0}, {seconds, 500'000'000}};
        if (utimensat(AT_FDCWD, name.constData(), times, 0) != 0)
            continue; // more than this file system can say
        struct stat facts {};
        QCOMPARE(stat(name.constData(), &facts), 0);
        const qint64 read_ms = read().eventModifiedMs;
        if (facts.st_mtim.tv_sec < std::numeric_limits<qint64>::max() / 2000)
            QCOMPARE(read_ms, facts.st_mtim.tv_sec * 1000 + facts.st_mtim.tv_nsec / 1'000'000);
        else
            QVERIFY(read_ms > std::numeric_limits<qint64>::max() / 2);
    }
}

void VoiceFilesTest::aFileThatIsReplacedIsReadWholeOrNotAtAll() {
    const QByteArray contents[] = {QByteArray(300'000, 'a'), QByteArray(5, 'b')};
    writeEvent(contents[0]);
    std::atomic<bool> ended = false;
    std::thread service([&] {
        for (int round = 0; !ended; ++round) {
            const QString aside = eventPath + u".new"_s;
            QFile file(aside);
            if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
                continue;
            file.write(contents[round % 2]);
            file.close();
            ::rename(QFile::encodeName(aside).constData(),
                     QFile::encodeName(eventPath).constData());
        }
    });
    int wrong = 0;
    for (int round = 0; round < 300; ++round) {
        const VoiceFiles files = read();
        wrong += files.eventOpened && files.eventExists &&
                         (files.eventBytes == contents[0] || files.eventBytes == contents[1])
                     ? 0
                     : 1;
    }
    ended = true;
    service.join();
    QCOMPARE(wrong, 0);
}

void VoiceFilesTest::aFileThatIsRewrittenInPlaceNeverHurts() {
    std::atomic<bool> ended = false;
    writeEvent("{}");
    std::thread service([&] {
        for (qint64 round = 0; !ended; ++round) {
            QFile file(eventPath);
            if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
                file.write(QByteArray((round % 7) * 100'000, 'x'));
            if (round % 5 == 0)
                QFile::remove(eventPath);
        }
    });
    bool bounded = true;
    for (int round = 0; round < 300; ++round) {
        const VoiceFiles files = read();
        bounded = bounded && files.eventBytes.size() <= 600'000 &&
                  (files.eventOpened ? files.eventExists : files.eventBytes.isEmpty());
    }
    ended = true;
    service.join();
    QVERIFY(bounded);
}

QTEST_GUILESS_MAIN(VoiceFilesTest)
#include "voice_files_test.moc"
