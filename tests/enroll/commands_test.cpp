#include "enroll/manifest.h"
#include "enroll/sitting_files.h"
#include "face/face_detection.h"
#include "face/owner_samples.h"
#include "face/synthetic_face.h"
#include "kept_samples.h"
#include "room_frame.h"
#include "support/temporary_place.h"
#include "tool_under_test.h"

#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QTest>
#include <csignal>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

using namespace Qt::StringLiterals;

namespace {

/// A recording of one unmoving grey picture.
void record(const QString& folder, const cv::Mat& gray) {
    QVERIFY(QDir().mkpath(folder + u"/color"_s) && QDir().mkpath(folder + u"/depth"_s));
    cv::Mat color;
    cv::cvtColor(gray, color, cv::COLOR_GRAY2BGR);
    for (int frame = 0; frame < 2; ++frame) {
        const std::string name = std::to_string(frame) + ".png";
        QVERIFY(cv::imwrite(folder.toStdString() + "/color/" + name, color));
        QVERIFY(cv::imwrite(folder.toStdString() + "/depth/" + name,
                            cv::Mat(424, 512, CV_16U, cv::Scalar(1200))));
    }
}

/// The owner at a distance that samples are taken at: the box has about 190 pixels.
cv::Mat nearOwner() {
    cv::Mat frame(400, 560, CV_8U, cv::Scalar(70));
    syntheticFace(210).copyTo(frame(cv::Rect(170, 90, 210, 210)));
    frame.convertTo(frame, -1, 1.3, -20.0); // drawn that large it would count as blurred
    return frame;
}

cv::Mat twoPeople() {
    cv::Mat frame(360, 600, CV_8U, cv::Scalar(70));
    syntheticFace(180, 1).copyTo(frame(cv::Rect(60, 80, 180, 180)));
    syntheticFace(180, 2).copyTo(frame(cv::Rect(340, 80, 180, 180)));
    return frame;
}

cv::Mat soft() {
    cv::Mat frame;
    cv::GaussianBlur(frameWithFace(), frame, {}, 7.0);
    return frame;
}

QStringList samplesIn(const QString& folder) {
    QStringList files;
    QDirIterator entries(folder, {u"*.png"_s}, QDir::Files, QDirIterator::Subdirectories);
    while (entries.hasNext())
        files.append(entries.next());
    files.sort();
    return files;
}

QByteArray readFile(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// The box of the one large face in a frame, as the detector finds it.
cv::Rect boxIn(const cv::Mat& frame) {
    const face::Options options;
    cv::CascadeClassifier frontal;
    if (!loadCascade(frontal, options.frontalCascadePath))
        return {};
    cv::Mat gray = frame.clone();
    for (const auto& hit : detectFacesMulti(frontal, nullptr, gray, options))
        if (hit.rect.width >= options.minQualityFaceSize)
            return hit.rect;
    return {};
}

} // namespace

/// The executable as a person meets it: its sentences, its exit status and the files it leaves.
class CommandsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { place.emplace(); }
    void cleanup() { place.reset(); }
    void wrongUse_data();
    void wrongUse();
    void helpNeedsNoDisplay();
    void theWindowNeedsADisplay();
    void anInstalledToolKeepsSamplesInTheDataFolder();
    void sensorsThatGiveNothing_data();
    void sensorsThatGiveNothing();
    void peopleWhoGiveNoSample_data();
    void peopleWhoGiveNoSample();
    void anUnmovingFaceIsOneSample();
    void aPlaceThatCannotBeWrittenIsSaidAtOnce();
    void anImportedPhotographIsGood();
    void importRefusesWhatIsNoUse();
    void checkNamesWhatIsWrong();
    void aFolderThatLacksNothingIsGood();
    void checkWritesDistances();
    void whyAnswersFirst();
    void strangersAreCounted();
    void aStrangerWhoIsRefusedIsGood();
    void setAsideTakesSamplesOut();
    void aKilledToolLeavesNoHalfFile();

private:
    std::optional<TemporaryPlace> place;
};

void CommandsTest::wrongUse_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("sentence");
    QTest::newRow("no such command")
        << QStringList{u"learn"_s} << u"\"learn\" is no command; --help lists them."_s;
    QTest::newRow("no number") << QStringList{u"take"_s, u"--seconds"_s, u"soon"_s}
                               << u"--seconds takes a whole number from 1 to 3600"_s;
    QTest::newRow("sitting's name")
        << QStringList{u"take"_s, u"--sitting"_s, u"../up"_s}
        << u"A sitting's name is made of letters, digits, - and _, at most "
           "60 of them."_s;
    QTest::newRow("nothing to import") << QStringList{u"import"_s} << u"PICTURE is missing"_s;
    QTest::newRow("nothing to set aside") << QStringList{u"set-aside"_s} << u"FILE is missing"_s;
    QTest::newRow("pictures and seconds")
        << QStringList{u"strangers"_s, u"--seconds"_s, u"5"_s, u"a.png"_s}
        << u"Either pictures or --seconds for the sensor, not both."_s;
    QTest::newRow("unknown option") << QStringList{u"check"_s, u"--all"_s} << u"all"_s;
}

void CommandsTest::wrongUse() {
    QFETCH(QStringList, arguments);
    QFETCH(QString, sentence);
    const ToolRun run = runTool(arguments);
    QCOMPARE(run.status, 2);
    QVERIFY2(run.errors.contains(sentence), qPrintable(run.errors));
}

void CommandsTest::helpNeedsNoDisplay() {
    const ToolRun run = runTool({u"--help"_s});
    QCOMPARE(run.status, 0);
    for (const char* command : {"take", "import", "check", "why", "strangers", "set-aside"})
        QVERIFY2(run.output.contains(QLatin1StringView(command)), command);
    QCOMPARE(runTool({u"take"_s, u"--help"_s}).status, 0);
}

void CommandsTest::theWindowNeedsADisplay() {
    QProcessEnvironment environment = sensorEnvironment({});
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        environment.remove(QLatin1StringView(name));
    const ToolRun run = runTool({}, environment);
    QCOMPARE(run.status, 1);
    QVERIFY2(run.errors.contains(u"The window needs a display, and there is none: "
                                 "`lumeno-enroll take` works in a terminal."_s),
             qPrintable(run.errors));
}

void CommandsTest::anInstalledToolKeepsSamplesInTheDataFolder() {
    QVERIFY(QDir().mkpath(u"bin"_s) && QDir().mkpath(u"home"_s));
    QVERIFY(QFile::copy(QStringLiteral(LUMENO_ENROLL), u"bin/lumeno-enroll"_s));
    QVERIFY(cv::imwrite("owner.png", frameWithFace()));
    QProcessEnvironment environment = sensorEnvironment({});
    environment.remove(u"XDG_DATA_HOME"_s);
    environment.insert(u"HOME"_s, QDir(u"home"_s).absolutePath());
    const auto run = [&environment](const QStringList& arguments) {
        return runTool(arguments, environment, 100000, u"bin/lumeno-enroll"_s);
    };
    // The picture is named from where the person stands.
    const ToolRun imported = run({u"import"_s, u"--sitting"_s, u"mon"_s, u"owner.png"_s});
    QVERIFY2(imported.status == 0, qPrintable(imported.errors));
    const QString data = u"home/.local/share/lumeno-control-center"_s;
    const QString sample = samplesIn(data).value(0);
    QVERIFY2(sample.startsWith(data + u"/faces/tavin/mon/"_s), qPrintable(sample));
    QVERIFY(!QDir(u"faces"_s).exists());
    const QString name = sample.section(u'/', -2);
    QVERIFY(run({u"check"_s}).output.startsWith(name + u": good"_s));
    QCOMPARE(run({u"set-aside"_s, name}).status, 0);
    QVERIFY(QFile::exists(data + u"/faces/set-aside/"_s + name));
    // Another home of the program is honoured too.
    environment.insert(u"LUMENO_HOME"_s, u"elsewhere"_s);
    QCOMPARE(run({u"import"_s, u"owner.png"_s}).status, 0);
    QCOMPARE(samplesIn(u"elsewhere/faces/tavin"_s).size(), 1);
}

void CommandsTest::sensorsThatGiveNothing_data() {
    QTest::addColumn<QString>("attached");
    QTest::addColumn<QString>("faults");
    QTest::addColumn<QString>("sentence");
    QTest::newRow("none") << QString() << QString()
                          << u"Kinect unavailable: no Kinect v2 device detected: plug it in"_s;
    QTest::newRow("busy") << u"owner"_s << u"busy"_s
                          << u"Kinect unavailable: failed to open device. It may be busy. Close "
                             "the Control Center first: only one program can hold the sensor."_s;
    QTest::newRow("does not start")
        << u"owner"_s << u"start-fails"_s << u"failed to start RGB/IR/Depth streams"_s;
    QTest::newRow("silent") << u"owner"_s << u"silent"_s << u"The sensor gives no pictures: "_s;
    QTest::newRow("without colour")
        << u"owner"_s << u"null-data=color"_s << u"The sensor gives no pictures: "_s;
}

void CommandsTest::sensorsThatGiveNothing() {
    QFETCH(QString, attached);
    QFETCH(QString, faults);
    QFETCH(QString, sentence);
    record(u"owner"_s, frameWithFace());
    const ToolRun run =
        runTool({u"take"_s, u"--auto"_s, u"--patience"_s, u"1"_s}, attached, faults);
    QCOMPARE(run.status, 3);
    QVERIFY2(run.errors.contains(sentence), qPrintable(run.errors));
    QVERIFY(!QDir(u"faces"_s).exists());
    if (faults == u"busy"_s)
        QCOMPARE(runTool({u"why"_s}, attached, faults).status, 3);
}

void CommandsTest::peopleWhoGiveNoSample_data() {
    QTest::addColumn<cv::Mat>("picture");
    QTest::addColumn<QString>("sentence");
    QTest::newRow("dim") << cv::Mat(frameWithFace() * 0.15)
                         << u"Nothing was kept. The face is too dark (brightness "_s;
    QTest::newRow("blurred") << soft() << u"Nothing was kept. The face is blurred (sharpness "_s;
    QTest::newRow("two people") << twoPeople()
                                << u"Nothing was kept. Two people are in the picture: only the "
                                   "owner may be."_s;
    QTest::newRow("nobody") << cv::Mat(360, 480, CV_8U, cv::Scalar(90))
                            << u"Nothing was kept. Nobody is to be seen: look at the sensor."_s;
}

void CommandsTest::peopleWhoGiveNoSample() {
    QFETCH(cv::Mat, picture);
    QFETCH(QString, sentence);
    record(u"scene"_s, picture);
    const ToolRun run = runTool({u"take"_s, u"--auto"_s, u"--seconds"_s, u"1"_s}, u"scene"_s);
    QCOMPARE(run.status, 1);
    QVERIFY2(run.errors.contains(sentence), qPrintable(run.errors + run.output));
    QVERIFY(!QDir(u"faces"_s).exists());
}

void CommandsTest::anUnmovingFaceIsOneSample() {
    record(u"owner"_s, nearOwner());
    const ToolRun run = runTool(
        {u"take"_s, u"--auto"_s, u"--seconds"_s, u"2"_s, u"--sitting"_s, u"mon"_s}, u"owner"_s);
    QCOMPARE(run.status, 1);
    QVERIFY2(run.says(u"This is thin. Missing: 19 more samples"_s),
             qPrintable(run.output + run.errors));
    QVERIFY(run.says(u" a copy"_s));
    QVERIFY(run.says(u"Restart the Control Center: it learns at its start."_s));
    QCOMPARE(samplesIn(u"faces/tavin"_s).size(), 1);
    QVERIFY(samplesIn(u"faces/tavin"_s).first().startsWith(u"faces/tavin/mon/"_s));
}

void CommandsTest::aPlaceThatCannotBeWrittenIsSaidAtOnce() {
    record(u"owner"_s, frameWithFace());
    QFile file(u"faces"_s);
    QVERIFY(file.open(QIODevice::WriteOnly));
    const ToolRun run = runTool({u"take"_s, u"--auto"_s}, u"owner"_s);
    QCOMPARE(run.status, 1);
    QVERIFY2(run.errors.contains(u"faces is a file where a folder has to be: move it away."_s),
             qPrintable(run.errors));
}

void CommandsTest::anImportedPhotographIsGood() {
    QVERIFY(cv::imwrite("owner.png", frameWithFace()));
    const ToolRun imported = runTool({u"import"_s, u"--sitting"_s, u"old"_s, u"owner.png"_s});
    QVERIFY2(imported.status == 0, qPrintable(imported.errors));
    const QStringList samples = samplesIn(u"faces/tavin"_s);
    QCOMPARE(samples.size(), 1);
    QCOMPARE(QImage(samples.first()).size(), QSize(160, 160));
    const ToolRun checked = runTool({u"check"_s});
    QCOMPARE(checked.status, 1); // thin
    QVERIFY2(checked.output.startsWith(samples.first().section(u'/', 2) + u": good"_s),
             qPrintable(checked.output));
    QVERIFY(checked.output.contains(u"Samples: 1, not good: 0."_s));
    QVERIFY(checked.output.contains(u"This is thin. Missing: 19 more samples"_s));
    // The same photograph again.
    const ToolRun again = runTool({u"import"_s, u"owner.png"_s});
    QCOMPARE(again.status, 1);
    QVERIFY(again.errors.contains(u"gives the same sample as"_s));
    QCOMPARE(samplesIn(u"faces/tavin"_s).size(), 1);
}

void CommandsTest::importRefusesWhatIsNoUse() {
    QVERIFY(cv::imwrite("owner.png", frameWithFace()));
    QVERIFY(cv::imwrite("two.png", twoPeople()));
    const ToolRun run =
        runTool({u"import"_s, u"missing.png"_s, u"two.png"_s, u"."_s, u"owner.png"_s});
    QCOMPARE(run.status, 1);
    QVERIFY(run.errors.contains(u"missing.png does not exist: check its name."_s));
    QVERIFY(run.errors.contains(u"two.png shows 2 faces"_s));
    QVERIFY(run.errors.contains(u". is no file: name the pictures themselves."_s));
    QCOMPARE(samplesIn(u"faces/tavin"_s).size(), 1); // the good one is kept all the same
}

void CommandsTest::checkNamesWhatIsWrong() {
    QVERIFY(QDir().mkpath(u"faces/tavin/hand"_s));
    const cv::Mat frame = roomFrame(10.0);
    const cv::Rect box = boxIn(frame);
    const int margin = box.width / 5;
    const cv::Rect wide(box.x - margin, box.y - margin, box.width + 2 * margin,
                        box.height + 2 * margin);
    QVERIFY(cv::imwrite("faces/tavin/hand/own.png", recognizerInput(frame(box))));
    QVERIFY(cv::imwrite("faces/tavin/hand/same.png", recognizerInput(frame(box))));
    QVERIFY(cv::imwrite("faces/tavin/hand/wide.png", recognizerInput(frame(wide))));
    QVERIFY(cv::imwrite("faces/tavin/hand/whole.png", frame));
    QFile broken(u"faces/tavin/hand/broken.png"_s);
    QVERIFY(broken.open(QIODevice::WriteOnly));
    const ToolRun run = runTool({u"check"_s});
    QCOMPARE(run.status, 1);
    QVERIFY2(run.output.contains(u"hand/own.png: good\n"_s), qPrintable(run.output));
    QVERIFY(run.output.contains(u"hand/same.png: a copy of hand/own.png: remove one\n"_s));
    QVERIFY2(run.output.contains(
                 u"hand/wide.png: not framed as the program frames (too wide): take it anew"_s),
             qPrintable(run.output));
    QVERIFY(run.output.contains(u"hand/whole.png: not framed as the program frames"_s));
    QVERIFY(run.output.contains(u"hand/broken.png: no picture that can be read: remove it\n"_s));
    QVERIFY(run.output.contains(u"Samples: 5, not good: 4."_s));
    QCOMPARE(runTool({u"check"_s, u"nowhere"_s}).status, 1);
}

void CommandsTest::aFolderThatLacksNothingIsGood() {
    using enroll::Distance;
    enroll::SittingWriter writer(u"faces/tavin"_s, u"mon"_s);
    unsigned texture = 1;
    for (const Distance distance : enroll::allDistances)
        for (int i = 0; i < 7; ++i)
            QCOMPARE(writer.write(keptSample(texture++, distance, enroll::Pose::Front, 1 + i % 2)),
                     QString());
    const ToolRun run = runTool({u"check"_s});
    QVERIFY2(run.output.contains(u"Samples: 21, not good: 0."_s), qPrintable(run.output));
    QVERIFY(!run.output.contains(u"thin"_s));
    QCOMPARE(run.status, 0);
    // One fewer than enough, without another flaw.
    for (const QString& file : {writer.files().value(0), writer.files().value(2)})
        QVERIFY(QFile::remove(file));
    const ToolRun thin = runTool({u"check"_s});
    QVERIFY2(thin.output.contains(u"This is thin. Missing: 1 more sample."_s),
             qPrintable(thin.output));
    QCOMPARE(thin.status, 1);
}

void CommandsTest::checkWritesDistances() {
    QVERIFY(QDir().mkpath(u"faces/tavin"_s));
    QVERIFY(cv::imwrite("faces/tavin/a,b.png", recognizerInput(syntheticFace(180, 1))));
    QVERIFY(cv::imwrite("faces/tavin/c.png", recognizerInput(syntheticFace(180, 2))));
    runTool({u"check"_s, u"--csv"_s, u"distances.csv"_s});
    const QList<QByteArray> lines = readFile(u"distances.csv"_s).split('\n');
    QCOMPARE(lines.value(0), QByteArray("sample,\"a,b.png\",\"c.png\""));
    QVERIFY(lines.value(1).startsWith("\"a,b.png\",0.00,"));
    QVERIFY(lines.value(2).endsWith(",0.00"));
    const ToolRun run = runTool({u"check"_s, u"--csv"_s, u"nowhere/distances.csv"_s});
    QCOMPARE(run.status, 1);
    QVERIFY(run.errors.contains(u"nowhere/distances.csv cannot be written"_s));
}

void CommandsTest::whyAnswersFirst() {
    QVERIFY(cv::imwrite("owner.png", frameWithFace()));
    QVERIFY(cv::imwrite("wall.png", cv::Mat(360, 480, CV_8U, cv::Scalar(90))));
    const ToolRun before = runTool({u"why"_s, u"owner.png"_s});
    QCOMPARE(before.status, 1);
    QVERIFY(before.output.startsWith(u"There are no samples: "_s));
    QCOMPARE(runTool({u"import"_s, u"owner.png"_s}).status, 0);
    const ToolRun known = runTool({u"why"_s, u"owner.png"_s});
    QVERIFY2(known.status == 0, qPrintable(known.output));
    QVERIFY(known.output.startsWith(u"This face is recognised (distance 0, at most 60)"_s));
    QVERIFY(known.output.contains(u"Found by: frontal\n"_s));
    const ToolRun nobody = runTool({u"why"_s, u"wall.png"_s});
    QCOMPARE(nobody.status, 1);
    QVERIFY(nobody.output.startsWith(u"No face was found: "_s));
    // And with the sensor.
    record(u"owner"_s, frameWithFace());
    const ToolRun live = runTool({u"why"_s}, u"owner"_s);
    QVERIFY2(live.status == 0, qPrintable(live.output + live.errors));
    QVERIFY2(live.output.startsWith(u"This face is recognised (distance 0, at most 60)"_s),
             qPrintable(live.output));
}

void CommandsTest::strangersAreCounted() {
    QVERIFY(cv::imwrite("owner.png", frameWithFace()));
    cv::Mat other = frameWithFace(7);
    QVERIFY(cv::imwrite("wall.png", cv::Mat(360, 480, CV_8U, cv::Scalar(90))));
    QVERIFY(cv::imwrite("other.png", other));
    QCOMPARE(runTool({u"strangers"_s, u"other.png"_s}).status, 1); // no samples yet
    QCOMPARE(runTool({u"import"_s, u"--sitting"_s, u"mon"_s, u"owner.png"_s}).status, 0);
    const QStringList before = QDir(u"."_s).entryList();
    const ToolRun same = runTool({u"strangers"_s, u"owner.png"_s});
    QCOMPARE(same.status, 1);
    QVERIFY2(same.output.startsWith(u"Taken for the owner in 1 of 1 looks (100.0 %)"_s),
             qPrintable(same.output));
    QVERIFY(same.output.contains(u"mon/"_s));
    QCOMPARE(runTool({u"strangers"_s, u"wall.png"_s}).status, 1); // nobody to be asked about
    QCOMPARE(QDir(u"."_s).entryList(), before);
    QCOMPARE(samplesIn(u"faces"_s).size(), 1);
}

void CommandsTest::aStrangerWhoIsRefusedIsGood() {
    QVERIFY(cv::imwrite("owner.png", frameWithFace()));
    QVERIFY(cv::imwrite("stranger.png", roomFrame(65.0)));
    QCOMPARE(runTool({u"import"_s, u"owner.png"_s}).status, 0);
    const ToolRun run = runTool({u"strangers"_s, u"stranger.png"_s});
    QVERIFY2(run.output.startsWith(u"Taken for the owner in 0 of 1 looks (0.0 %)"_s),
             qPrintable(run.output));
    QCOMPARE(run.status, 0);
    QCOMPARE(runTool({u"strangers"_s, u"stranger.png"_s, u"missing.png"_s}).status, 1);
}

void CommandsTest::setAsideTakesSamplesOut() {
    QVERIFY(cv::imwrite("owner.png", frameWithFace()));
    QCOMPARE(runTool({u"import"_s, u"--sitting"_s, u"mon"_s, u"owner.png"_s}).status, 0);
    const QString sample = samplesIn(u"faces/tavin"_s).value(0);
    const ToolRun run = runTool({u"set-aside"_s, sample, u"owner.png"_s});
    QCOMPARE(run.status, 1);
    QVERIFY(run.errors.contains(u"owner.png does not lie in faces/tavin"_s));
    QVERIFY(samplesIn(u"faces/tavin"_s).isEmpty());
    QCOMPARE(samplesIn(u"faces/set-aside/mon"_s).size(), 1);
}

void CommandsTest::aKilledToolLeavesNoHalfFile() {
    QStringList arguments{u"import"_s, u"--sitting"_s, u"mon"_s};
    for (unsigned texture = 1; texture <= 12; ++texture) {
        const QString name = u"%1.png"_s.arg(texture);
        QVERIFY(cv::imwrite(name.toStdString(), frameWithFace(texture)));
        arguments.append(name);
    }
    for (int round = 0; round < 6; ++round) {
        QVERIFY(QDir(u"faces"_s).removeRecursively() || round == 0);
        QProcess process;
        process.start(QStringLiteral(LUMENO_ENROLL), arguments);
        // Killed at another moment in each round, after the first file at the earliest.
        QTRY_VERIFY_WITH_TIMEOUT(!samplesIn(u"faces/tavin"_s).isEmpty() ||
                                     process.state() == QProcess::NotRunning,
                                 60000);
        QElapsedTimer later;
        later.start();
        while (later.nsecsElapsed() < round * 3'000'000LL)
            ;
        process.kill();
        QVERIFY(process.state() == QProcess::NotRunning || process.waitForFinished());
        const QStringList samples = samplesIn(u"faces/tavin"_s);
        QVERIFY(!samples.isEmpty());
        for (const QString& sample : samples) {
            const QImage image(sample);
            QCOMPARE(image.size(), QSize(160, 160));
            // A PNG that is whole ends with this chunk.
            QVERIFY(readFile(sample).endsWith(QByteArray::fromHex("49454e44ae426082")));
        }
        const QByteArray json = readFile(u"faces/tavin/mon/manifest.json"_s);
        QVERIFY(json.isEmpty() || enroll::manifestFrom(json).has_value());
        std::vector<TrainingSample> learnt;
        QVERIFY(loadTavinSamples("faces/tavin", learnt));
        QCOMPARE(learnt.size(), std::size_t(samples.size()));
    }
}

QTEST_GUILESS_MAIN(CommandsTest)
#include "commands_test.moc"
