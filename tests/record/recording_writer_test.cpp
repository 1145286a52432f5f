#include "record/recording_writer.h"
#include "record/test_frames.h"
#include "recording_index.h"
#include "recording_source.h"

#include <QDir>
#include <QFile>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <sys/mount.h>
#include <sys/resource.h>

using namespace Qt::StringLiterals;
using record::RecordingFiles;
using record::RecordingWriter;

class RecordingWriterTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whatIsWrittenPlays_data();
    void whatIsWrittenPlays();
    void timesStandBesideTheNumbers();
    void setsBeyondTheCapacityAreDroppedWhole();
    void aSecondRecordingInTheSameFolderIsRefused();
    void aFileInThePlaceOfTheFolderIsRefused();
    void aLimitOnFileSizesLeavesAFolderThatPlays();
    void aFullDiskLeavesAFolderThatPlays();
    void aRemovedFolderIsAFailure();
    void anUnfinishedRecordingPlaysToo();
    void anEmptyRecordingIsRemoved();
};

namespace {

constexpr int setDistance = 267; // eighths of a millisecond

QString png() {
    return u"png"_s;
}

/// Adds sets, waiting while there is no room, until `count` are taken or one fails.
void addSets(RecordingWriter& writer, int count) {
    for (int number = 0; number < count && writer.failure().isEmpty();)
        if (writer.add(smallSet(number), number * setDistance, number * setDistance + 8))
            ++number;
        else
            QTest::qSleep(1);
}

std::size_t playableSets(const QString& folder) {
    return virtual_kinect::readRecordingIndex(folder.toStdString()).moments.size();
}

/// What a folder holds, with the files of its folders.
QStringList everythingIn(const QString& folder) {
    QStringList names;
    for (const QString& place : {folder, folder + u"/color"_s, folder + u"/depth"_s})
        names += QDir(place).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    return names;
}

} // namespace

void RecordingWriterTest::whatIsWrittenPlays_data() {
    QTest::addColumn<bool>("withColor");
    QTest::addColumn<bool>("lossless");
    QTest::newRow("JPEG") << true << false;
    QTest::newRow("PNG, by two threads") << true << true;
    QTest::newRow("without colour") << false << false;
}

void RecordingWriterTest::whatIsWrittenPlays() {
    QFETCH(bool, withColor);
    QFETCH(bool, lossless);
    const QTemporaryDir place;
    const QString folder = place.filePath(u"walk"_s);
    RecordingFiles files(folder, !withColor ? std::nullopt
                                 : lossless ? std::optional(png())
                                            : std::optional(u"jpg"_s));
    QCOMPARE(files.begin(), QString());
    RecordingWriter writer(files, withColor, lossless);
    addSets(writer, 40);
    writer.finish();
    QCOMPARE(writer.failure(), QString());
    QCOMPARE(writer.counts().sets, 40);
    QVERIFY(writer.counts().bytes > 40 * 100);

    const auto source = virtual_kinect::makeRecordingSource(folder.toStdString());
    QCOMPARE(source->framesInARound(), std::uint64_t{40});
    virtual_kinect::FrameSet shown;
    for (int number = 0; number < 40; ++number) {
        source->render(static_cast<std::uint64_t>(number), shown);
        QCOMPARE(shown.depth, std::vector<float>(12, 1000.0F + static_cast<float>(number)));
        QCOMPARE(shown.infrared, std::vector<float>(12, 500.0F + static_cast<float>(number)));
        if (withColor)
            QVERIFY(std::abs(shown.bgrx[2] - number) <= (lossless ? 0 : 3));
        QCOMPARE(source->timeOf(static_cast<std::uint64_t>(number)).count(),
                 number * setDistance * 125);
    }
}

void RecordingWriterTest::timesStandBesideTheNumbers() {
    const QTemporaryDir place;
    const QString folder = place.filePath(u"walk"_s);
    RecordingFiles files(folder, png());
    QCOMPARE(files.begin(), QString());
    RecordingWriter writer(files, true, true);
    addSets(writer, 1);
    writer.finish();
    QFile times(folder + u"/timestamps.csv"_s);
    QVERIFY(times.open(QIODevice::ReadOnly));
    QCOMPARE(times.readAll(),
             QByteArray("number,milliseconds,color_milliseconds\n0,0.000,1.000\n"));
}

void RecordingWriterTest::setsBeyondTheCapacityAreDroppedWhole() {
    const QTemporaryDir place;
    const QString folder = place.filePath(u"walk"_s);
    RecordingFiles files(folder, png());
    QCOMPARE(files.begin(), QString());
    RecordingWriter writer(files, true, true, 2);
    int taken = 0;
    for (int number = 0; number < 300; ++number)
        taken += writer.add(smallSet(number % 250), number * setDistance, 0) ? 1 : 0;
    writer.finish();
    const record::WriterCounts counts = writer.counts();
    QCOMPARE(counts.sets, taken);
    QCOMPARE(counts.dropped, 300 - taken);
    QVERIFY(counts.dropped > 0);
    QCOMPARE(playableSets(folder), static_cast<std::size_t>(taken));
}

void RecordingWriterTest::aSecondRecordingInTheSameFolderIsRefused() {
    const QTemporaryDir place;
    const QString folder = place.filePath(u"walk"_s);
    RecordingFiles first(folder, png());
    QCOMPARE(first.begin(), QString());
    const QStringList before = everythingIn(folder);
    RecordingFiles second(folder, png());
    QVERIFY(second.begin().contains(u"is not empty; a recording needs a new or an empty folder"_s));
    QCOMPARE(everythingIn(folder), before);
}

void RecordingWriterTest::aFileInThePlaceOfTheFolderIsRefused() {
    const QTemporaryDir place;
    QFile file(place.filePath(u"walk"_s));
    QVERIFY(file.open(QIODevice::WriteOnly));
    RecordingFiles files(file.fileName(), png());
    QVERIFY(files.begin().contains(u"is not a folder"_s));
    RecordingFiles nowhere(place.filePath(u"no/such/place"_s), png());
    QVERIFY(nowhere.begin().contains(u"No such file or directory"_s));
}

/// The list of times reaches the limit in the middle of a line, while the pictures are small
/// enough.
void RecordingWriterTest::aLimitOnFileSizesLeavesAFolderThatPlays() {
    const QTemporaryDir place;
    const QString folder = place.filePath(u"walk"_s);
    RecordingFiles files(folder, png());
    QCOMPARE(files.begin(), QString());
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit usual{};
    QCOMPARE(getrlimit(RLIMIT_FSIZE, &usual), 0);
    rlimit small = usual;
    small.rlim_cur = 300;
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &small), 0);
    const auto restore = qScopeGuard([&] { setrlimit(RLIMIT_FSIZE, &usual); });

    RecordingWriter writer(files, true, true);
    addSets(writer, 100);
    writer.finish();
    setrlimit(RLIMIT_FSIZE, &usual);
    QVERIFY2(writer.failure().contains(u"timestamps.csv\" cannot be written: File too large"_s),
             qPrintable(writer.failure()));
    const std::int64_t sets = writer.counts().sets;
    QVERIFY(sets > 5 && sets < 20);
    QCOMPARE(playableSets(folder), static_cast<std::size_t>(sets));
}

void RecordingWriterTest::aFullDiskLeavesAFolderThatPlays() {
    const QTemporaryDir place;
    const QByteArray disk = QFile::encodeName(place.path());
    if (mount("tmpfs", disk.constData(), "tmpfs", 0, "size=1m") != 0)
        QSKIP("A small disk cannot be mounted here.");
    const auto unmount = qScopeGuard([&] { umount2(disk.constData(), MNT_DETACH); });
    const QString folder = place.filePath(u"walk"_s);
    RecordingFiles files(folder, png());
    QCOMPARE(files.begin(), QString());
    RecordingWriter writer(files, true, true);
    addSets(writer, 1000);
    writer.finish();
    QVERIFY2(writer.failure().contains(u"No space left on device"_s), qPrintable(writer.failure()));
    const std::int64_t sets = writer.counts().sets;
    QVERIFY(sets > 10 && sets < 1000);
    // The reserve leaves room for the description.
    files.releaseReserve();
    QCOMPARE(files.writeText(u"recording.json"_s, QByteArray(4000, 'x')), QString());
    QCOMPARE(playableSets(folder), static_cast<std::size_t>(sets));
    QVERIFY(QDir(folder + u"/color"_s).entryList({u"*.part"_s}).isEmpty());
}

void RecordingWriterTest::aRemovedFolderIsAFailure() {
    const QTemporaryDir place;
    const QString folder = place.filePath(u"walk"_s);
    RecordingFiles files(folder, png());
    QCOMPARE(files.begin(), QString());
    RecordingWriter writer(files, true, true);
    addSets(writer, 5);
    QTRY_COMPARE(writer.counts().sets, 5); // nothing is being written while it is removed
    QVERIFY(QDir(folder).removeRecursively());
    addSets(writer, 100);
    writer.finish();
    QVERIFY2(writer.failure().contains(u"No such file or directory"_s),
             qPrintable(writer.failure()));
    QVERIFY(!QDir(folder).exists());
}

/// As after the power went: nothing was finished.
void RecordingWriterTest::anUnfinishedRecordingPlaysToo() {
    const QTemporaryDir place;
    const QString folder = place.filePath(u"walk"_s);
    RecordingFiles files(folder, png());
    QCOMPARE(files.begin(), QString());
    RecordingWriter writer(files, true, true);
    addSets(writer, 10);
    QTRY_COMPARE(writer.counts().sets, 10);
    QCOMPARE(files.writePicture(record::Stream::Depth, 10, {1, 2, 3}), QString());
    QCOMPARE(playableSets(folder), std::size_t{10});
}

void RecordingWriterTest::anEmptyRecordingIsRemoved() {
    const QTemporaryDir place;
    const QString folder = place.filePath(u"walk"_s);
    RecordingFiles files(folder, png());
    QCOMPARE(files.begin(), QString());
    QCOMPARE(files.writeText(u"recording.json"_s, "{}"), QString());
    files.removeAll();
    QVERIFY(!QDir(folder).exists());

    QVERIFY(QDir().mkdir(folder));
    RecordingFiles inExisting(folder, png());
    QCOMPARE(inExisting.begin(), QString());
    inExisting.removeAll();
    QVERIFY(QDir(folder).exists() && QDir(folder).isEmpty());
}

QTEST_GUILESS_MAIN(RecordingWriterTest)
#include "recording_writer_test.moc"
