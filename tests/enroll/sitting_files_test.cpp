#include "enroll/sample_folder.h"
#include "enroll/sitting_files.h"
#include "kept_samples.h"
#include "support/file_size_limit.h"
#include "support/temporary_place.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QTest>
#include <sys/stat.h>
#include <unistd.h>

using namespace enroll;
using namespace Qt::StringLiterals;

namespace {

int modeOf(const QString& path) {
    struct stat status {};
    return stat(QFile::encodeName(path).constData(), &status) == 0 ? int(status.st_mode & 07777)
                                                                   : -1;
}

void writeFile(const QString& path, const QByteArray& content) {
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
}

QByteArray readFile(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Everything below a folder, links and hidden files too.
QStringList everythingIn(const QString& folder) {
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System |
                                  QDir::NoDotAndDotDot);
}

const KeptSample nearFront = keptSample(1, Distance::Near);

} // namespace

class SittingFilesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { place.emplace(); }
    void cleanup() { place.reset(); }
    void samplesHaveTheFormThatIsRead();
    void theScanReadsWhatWasWritten();
    void theManifestHoldsGradesAndTimes();
    void theSecondLightHasAFolderOfItsOwn();
    void aSittingThatIsContinuedLosesNothing();
    void aFileInTheWayIsNeverReplaced();
    void aFullDiskLeavesNothingHalfWritten();
    void aManifestThatCannotBeWrittenTakesTheSampleBack();
    void placesThatCannotBeWritten_data();
    void placesThatCannotBeWritten();
    void aReadOnlyFolder();
    void aDamagedManifestStopsTheSitting();
    void foreignManifestsAreReadWithCare_data();
    void foreignManifestsAreReadWithCare();
    void sittingNames_data();
    void sittingNames();
    void aNewSittingHasANewName();
    void setAsideMovesOutOfTheScan();
    void setAsideTakesTheNamesOfTheReport();
    void setAsideNeverReplaces();
    void setAsideRefusesWhatIsNoSample_data();
    void setAsideRefusesWhatIsNoSample();

private:
    std::optional<TemporaryPlace> place;
};

void SittingFilesTest::samplesHaveTheFormThatIsRead() {
    SittingWriter writer(u"faces/tavin"_s, u"mon"_s);
    QCOMPARE(writer.write(nearFront), QString());
    QCOMPARE(writer.write(keptSample(2, Distance::Near)), QString());
    QCOMPARE(writer.write(keptSample(3, Distance::Far, Pose::ChinUp)), QString());
    QCOMPARE(writer.files(), (QStringList{u"faces/tavin/mon/near-front-01.png"_s,
                                          u"faces/tavin/mon/near-front-02.png"_s,
                                          u"faces/tavin/mon/far-chin-up-01.png"_s}));
    for (const QString& file : writer.files()) {
        const QImage image(file);
        QCOMPARE(image.size(), QSize(160, 160));
        QCOMPARE(image.format(), QImage::Format_Grayscale8);
        QCOMPARE(modeOf(file), 0600);
    }
    for (const char* folder : {"faces", "faces/tavin", "faces/tavin/mon"})
        QCOMPARE(modeOf(QLatin1StringView(folder)), 0700);
    QCOMPARE(modeOf(u"faces/tavin/mon/manifest.json"_s), 0600);
    QCOMPARE(everythingIn(u"faces/tavin/mon"_s).size(), 4);
}

void SittingFilesTest::theScanReadsWhatWasWritten() {
    SittingWriter writer(u"faces/tavin"_s, u"mon"_s);
    QCOMPARE(writer.write(nearFront), QString());
    std::vector<TrainingSample> samples;
    QVERIFY(loadTavinSamples("faces/tavin", samples));
    QCOMPARE(samples.size(), 1U);
    QCOMPARE(cv::norm(samples[0].image, nearFront.face.input, cv::NORM_INF), 0.0);
}

void SittingFilesTest::theManifestHoldsGradesAndTimes() {
    SittingWriter writer(u"faces/tavin"_s, u"mon"_s);
    QCOMPARE(writer.write(nearFront), QString());
    QCOMPARE(writer.write(keptSample(2, Distance::Far), u"holiday.jpg"_s), QString());
    const auto manifest = manifestFrom(readFile(u"faces/tavin/mon/manifest.json"_s));
    QVERIFY(manifest.has_value());
    QCOMPARE(manifest->sitting, u"mon"_s);
    QCOMPARE(manifest->samples.size(), 2);
    const SampleEntry& entry = manifest->samples.first();
    QCOMPARE(entry.file, u"near-front-01.png"_s);
    QCOMPARE(entry.sha256, contentHash(readFile(u"faces/tavin/mon/near-front-01.png"_s)));
    QCOMPARE(entry.takenAt.toMSecsSinceEpoch(), nearFront.timeMs);
    QCOMPARE(entry.distance, Distance::Near);
    QCOMPARE(entry.pose, u"front"_s);
    QCOMPARE(entry.detector, u"frontal"_s);
    QCOMPARE(*entry.meters, 1.02);
    QCOMPARE(entry.measures.sidePx, 200);
    QCOMPARE(entry.measures.mean, 120.5);
    QCOMPARE(entry.measures.halvesDiffer, 0.1);
    QVERIFY(entry.good);
    QVERIFY(entry.source.isEmpty());
    QCOMPARE(manifest->samples.last().source, u"holiday.jpg"_s);
}

void SittingFilesTest::theSecondLightHasAFolderOfItsOwn() {
    SittingWriter writer(u"faces/tavin"_s, u"mon"_s);
    QCOMPARE(writer.write(nearFront), QString());
    QCOMPARE(writer.write(keptSample(2, Distance::Near, Pose::Front, 2)), QString());
    QCOMPARE(writer.files().last(), u"faces/tavin/mon-second-light/near-front-01.png"_s);
    const SampleCollection samples = readableSamples(readSamples(u"faces/tavin"_s));
    QCOMPARE(samples.sittings, (QStringList{u"mon"_s, u"mon-second-light"_s}));
    QCOMPARE(coverageOf(samples).sittings, 2);
    QCOMPARE(coverageOf(samples).near, 2);
}

void SittingFilesTest::aSittingThatIsContinuedLosesNothing() {
    QCOMPARE(SittingWriter(u"faces/tavin"_s, u"mon"_s).write(nearFront), QString());
    SittingWriter later(u"faces/tavin"_s, u"mon"_s);
    QCOMPARE(later.write(keptSample(2, Distance::Near)), QString());
    QCOMPARE(later.files(), QStringList{u"faces/tavin/mon/near-front-02.png"_s});
    const auto manifest = manifestFrom(readFile(u"faces/tavin/mon/manifest.json"_s));
    QCOMPARE(manifest->samples.size(), 2);
}

void SittingFilesTest::aFileInTheWayIsNeverReplaced() {
    writeFile(u"faces/tavin/mon/near-front-01.png"_s, "mine");
    QVERIFY(QFile::link(u"nowhere"_s, u"faces/tavin/mon/near-front-02.png"_s));
    SittingWriter writer(u"faces/tavin"_s, u"mon"_s);
    QCOMPARE(writer.write(nearFront), QString());
    QCOMPARE(writer.files(), QStringList{u"faces/tavin/mon/near-front-03.png"_s});
    QCOMPARE(readFile(u"faces/tavin/mon/near-front-01.png"_s), QByteArray("mine"));
    QVERIFY(!QFileInfo::exists(u"faces/tavin/mon/nowhere"_s));
}

void SittingFilesTest::aFullDiskLeavesNothingHalfWritten() {
    SittingWriter writer(u"faces/tavin"_s, u"mon"_s);
    QCOMPARE(writer.write(nearFront), QString());
    const QByteArray manifest = readFile(u"faces/tavin/mon/manifest.json"_s);
    {
        const FileSizeLimit full(1000);
        const QString problem = writer.write(keptSample(2, Distance::Near));
        QVERIFY2(problem.startsWith(u"faces/tavin/mon/near-front-02.png cannot be written ("_s),
                 qPrintable(problem));
        QVERIFY(
            problem.endsWith(u") and nothing of it was left behind: make room for it, or choose "
                             "another place."_s));
    }
    QCOMPARE(everythingIn(u"faces/tavin/mon"_s).size(), 2);
    QCOMPARE(readFile(u"faces/tavin/mon/manifest.json"_s), manifest);
    // Once there is room again the sitting goes on.
    QCOMPARE(writer.write(keptSample(2, Distance::Near)), QString());
    QCOMPARE(writer.files().size(), 2);
}

void SittingFilesTest::aManifestThatCannotBeWrittenTakesTheSampleBack() {
    SittingWriter writer(u"faces/tavin"_s, u"mon"_s);
    QCOMPARE(writer.write(nearFront), QString());
    // From now on only the manifest cannot be written.
    QVERIFY(QFile::remove(u"faces/tavin/mon/manifest.json"_s));
    writeFile(u"faces/tavin/mon/manifest.json/in-the-way"_s, "");
    const QString problem = writer.write(keptSample(2, Distance::Near));
    QVERIFY2(problem.startsWith(u"faces/tavin/mon/manifest.json cannot be written ("_s),
             qPrintable(problem));
    QCOMPARE(everythingIn(u"faces/tavin/mon"_s),
             (QStringList{u"manifest.json"_s, u"near-front-01.png"_s}));
    QCOMPARE(writer.files().size(), 1);
}

void SittingFilesTest::placesThatCannotBeWritten_data() {
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("sentence");
    QTest::newRow("a file") << u"file"_s
                            << u"file is a file where a folder has to be: move it away."_s;
    QTest::newRow("below a file") << u"file/tavin"_s
                                  << u"/file is a file where a folder has to be: move it away."_s;
    QTest::newRow("a link to nowhere")
        << u"nowhere"_s << u"nowhere is a link to nowhere: remove it."_s;
    QTest::newRow("a sitting that is a link")
        << u"linked"_s
        << u"linked/mon is a link, which the Control Center does not follow: choose another "
           "--sitting."_s;
    QTest::newRow("a sitting that is a file")
        << u"taken"_s << u"taken/mon is a file where a folder has to be: move it away."_s;
}

void SittingFilesTest::placesThatCannotBeWritten() {
    QFETCH(QString, folder);
    QFETCH(QString, sentence);
    writeFile(u"file"_s, "content");
    writeFile(u"taken/mon"_s, "content");
    QVERIFY(QFile::link(u"gone"_s, u"nowhere"_s));
    QVERIFY(QDir().mkpath(u"linked"_s) && QDir().mkpath(u"elsewhere"_s));
    QVERIFY(QFile::link(u"../elsewhere"_s, u"linked/mon"_s));
    QVERIFY2(obstacleFor(folder, u"mon"_s).endsWith(sentence),
             qPrintable(obstacleFor(folder, u"mon"_s)));
    SittingWriter writer(folder, u"mon"_s);
    QVERIFY2(!writer.write(nearFront).isEmpty(), "written");
    QCOMPARE(readFile(u"file"_s), QByteArray("content"));
    QVERIFY(everythingIn(u"elsewhere"_s).isEmpty());
    QVERIFY(!QFileInfo::exists(u"gone"_s));
}

void SittingFilesTest::aReadOnlyFolder() {
    // Also root cannot make a folder there.
    QVERIFY(obstacleFor(u"/proc/faces"_s, u"mon"_s).startsWith(u"/proc"_s) || geteuid() == 0);
    const QString problem = SittingWriter(u"/proc/faces"_s, u"mon"_s).write(nearFront);
    QVERIFY2(problem.startsWith(u"The folder /proc/faces cannot be made ("_s) ||
                 problem.startsWith(u"/proc cannot be written to ("_s),
             qPrintable(problem));
    if (geteuid() == 0)
        QSKIP("root may write into read-only folders");
    QVERIFY(QDir().mkpath(u"faces/tavin"_s));
    QVERIFY(QFile::setPermissions(u"faces/tavin"_s, QFile::ReadOwner | QFile::ExeOwner));
    QVERIFY(obstacleFor(u"faces/tavin"_s, u"mon"_s)
                .startsWith(u"faces/tavin cannot be written to ("_s));
}

void SittingFilesTest::aDamagedManifestStopsTheSitting() {
    writeFile(u"faces/tavin/mon/manifest.json"_s, "{");
    QCOMPARE(SittingWriter(u"faces/tavin"_s, u"mon"_s).write(nearFront),
             u"faces/tavin/mon/manifest.json is damaged: choose another --sitting, or move it "
             "away."_s);
    QCOMPARE(readFile(u"faces/tavin/mon/manifest.json"_s), QByteArray("{"));
}

void SittingFilesTest::foreignManifestsAreReadWithCare_data() {
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<int>("samples"); // -1: no manifest
    QTest::newRow("empty") << QByteArray() << -1;
    QTest::newRow("list") << QByteArray("[]") << -1;
    QTest::newRow("no samples") << QByteArray("{}") << -1;
    QTest::newRow("samples is a text") << QByteArray(R"({"samples": "a"})") << -1;
    QTest::newRow("a number as sample") << QByteArray(R"({"samples": [7]})") << 1;
    QTest::newRow("wrong kinds") << QByteArray(
                                        R"({"samples": [{"file": 3, "grade": [], "meters": "x"}]})")
                                 << 1;
}

void SittingFilesTest::foreignManifestsAreReadWithCare() {
    QFETCH(QByteArray, json);
    QFETCH(int, samples);
    const auto manifest = manifestFrom(json);
    QCOMPARE(manifest ? int(manifest->samples.size()) : -1, samples);
    if (manifest)
        QVERIFY(!manifest->samples.first().meters.has_value());
}

void SittingFilesTest::sittingNames_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("good");
    QTest::newRow("letters") << u"Monday-evening_2"_s << true;
    QTest::newRow("longest") << QString(60, u'a') << true;
    QTest::newRow("too long") << QString(61, u'a') << false;
    QTest::newRow("empty") << QString() << false;
    QTest::newRow("up") << u".."_s << false;
    QTest::newRow("folders") << u"a/b"_s << false;
    QTest::newRow("newline") << u"a\n"_s << false;
    QTest::newRow("blank") << u"a b"_s << false;
}

void SittingFilesTest::sittingNames() {
    QFETCH(QString, name);
    QFETCH(bool, good);
    QCOMPARE(isSittingName(name), good);
}

void SittingFilesTest::aNewSittingHasANewName() {
    const QDateTime time(QDate(2026, 11, 21), QTime(16, 7));
    QCOMPARE(newSittingName(u"faces/tavin"_s, time), u"2026-11-21-1607"_s);
    QVERIFY(QDir().mkpath(u"faces/tavin/2026-11-21-1607"_s));
    QCOMPARE(newSittingName(u"faces/tavin"_s, time), u"2026-11-21-1607-2"_s);
}

void SittingFilesTest::setAsideMovesOutOfTheScan() {
    SittingWriter writer(u"faces/tavin"_s, u"mon"_s);
    QCOMPARE(writer.write(nearFront), QString());
    const QByteArray content = readFile(writer.files().first());
    QString movedTo;
    QCOMPARE(setAside(u"faces/tavin"_s, writer.files().first(), movedTo), QString());
    QVERIFY(movedTo.endsWith(u"/faces/set-aside/mon/near-front-01.png"_s));
    QCOMPARE(readFile(movedTo), content);
    QVERIFY(readSamples(u"faces/tavin"_s).empty());
    QCOMPARE(modeOf(u"faces/set-aside/mon"_s), 0700);
}

void SittingFilesTest::setAsideTakesTheNamesOfTheReport() {
    writeFile(u"faces/tavin/mon/a.png"_s, "sample");
    QString movedTo;
    QCOMPARE(setAside(u"faces/tavin"_s, u"mon/a.png"_s, movedTo), QString());
    QVERIFY(movedTo.endsWith(u"/faces/set-aside/mon/a.png"_s));
    // A file of that name in the working folder is what is meant, and no sample.
    writeFile(u"faces/tavin/mon/a.png"_s, "sample");
    writeFile(u"mon/a.png"_s, "mine");
    QVERIFY(setAside(u"faces/tavin"_s, u"mon/a.png"_s, movedTo).contains(u"does not lie in"_s));
    QCOMPARE(readFile(u"mon/a.png"_s), QByteArray("mine"));
    QCOMPARE(readFile(u"faces/tavin/mon/a.png"_s), QByteArray("sample"));
}

void SittingFilesTest::setAsideNeverReplaces() {
    writeFile(u"faces/set-aside/a.png"_s, "first");
    writeFile(u"faces/tavin/a.png"_s, "second");
    QString movedTo;
    QCOMPARE(setAside(u"faces/tavin"_s, u"faces/tavin/a.png"_s, movedTo), QString());
    QVERIFY(movedTo.endsWith(u"/faces/set-aside/a-2.png"_s));
    QCOMPARE(readFile(u"faces/set-aside/a.png"_s), QByteArray("first"));
    QCOMPARE(readFile(u"faces/set-aside/a-2.png"_s), QByteArray("second"));
}

void SittingFilesTest::setAsideRefusesWhatIsNoSample_data() {
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("sentence");
    QTest::newRow("missing")
        << u"faces/tavin/none.png"_s
        << u"faces/tavin/none.png is no file: `lumeno-enroll check` names the samples."_s;
    QTest::newRow("a folder")
        << u"faces/tavin/mon"_s
        << u"faces/tavin/mon is no file: `lumeno-enroll check` names the samples."_s;
    QTest::newRow("elsewhere") << u"picture.png"_s
                               << u"picture.png does not lie in faces/tavin: only samples are set "
                                  "aside."_s;
    QTest::newRow("a folder that begins alike")
        << u"faces/tavin-old/a.png"_s
        << u"faces/tavin-old/a.png does not lie in faces/tavin: only samples are set aside."_s;
    QTest::newRow("out by dots") << u"faces/tavin/../../picture.png"_s
                                 << u"faces/tavin/../../picture.png does not lie in faces/tavin: "
                                    "only samples are set aside."_s;
}

void SittingFilesTest::setAsideRefusesWhatIsNoSample() {
    QFETCH(QString, file);
    QVERIFY(QDir().mkpath(u"faces/tavin/mon"_s));
    writeFile(u"picture.png"_s, "mine");
    writeFile(u"faces/tavin-old/a.png"_s, "mine");
    QString movedTo;
    QTEST(setAside(u"faces/tavin"_s, file, movedTo), "sentence");
    QCOMPARE(readFile(u"picture.png"_s), QByteArray("mine"));
}

QTEST_GUILESS_MAIN(SittingFilesTest)
#include "sitting_files_test.moc"
