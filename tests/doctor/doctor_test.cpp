#include "doctor/examination.h"
#include "doctor/prepared_tree.h"
#include "doctor/program_checks.h"
#include "doctor/sensor_checks.h"
#include "doctor/udev_rules.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <functional>

#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace doctor;

namespace {

const SensorBuild wholeBuild{true, u"0.2.0"_s, true, {u"gl"_s, u"cl"_s, u"cpu"_s}};

/// What is wrong with a machine. Pipelines work unless their name is in `broken`.
struct Machine {
    PreparedTree tree;
    SensorBuild build = wholeBuild;
    QString wantedPipeline;
    QStringList broken;

    Findings findings() const {
        return checkSensor(tree.places()) +
               checkSensorLibrary(build, wantedPipeline,
                                  [this](const QString& name) { return !broken.contains(name); }) +
               checkFiles(tree.places());
    }
};

using Spoil = std::function<void(Machine&)>;

const QByteArray uaccessRule = "# a comment about \"045e\" and \"02c4\" with MODE\n"
                               "SUBSYSTEM==\"usb\", ATTR{idVendor}==\"045E\", \\\n"
                               "  ATTR{idProduct}==\"02c4\", TAG+=\"uaccess\"\n";
const QByteArray modeRule =
    "SUBSYSTEM==\"usb\", ATTR{idVendor}==\"045e\", ATTR{idProduct}==\"02c4\", MODE=\"0666\"\n";
const QByteArray groupRule =
    "SUBSYSTEM==\"usb\", ATTR{idVendor}==\"045e\", ATTR{idProduct}==\"02c4\", GROUP=\"video\"\n";

QStringList linesOf(const Findings& findings, Verdict verdict) {
    QStringList lines;
    for (const Finding& finding : findings)
        if (finding.verdict == verdict)
            lines.append(lineOf(finding).mid(6));
    return lines;
}

/// A row of oneFaultGivesOneSentence(); %1 in `sentence` stands for the tree's folder.
void addFault(const char* name, const QString& sentence, const Spoil& spoil) {
    QTest::newRow(name) << spoil << sentence;
}

/// From the plug to the right to open it.
void addSensorFaults() {
    addFault("nothing plugged in",
             u"Sensor: no Kinect v2 is on the USB bus. Plug it into a USB 3 port and its own power "
             "supply into a socket."_s,
             [](Machine& machine) { machine.tree.plugIn({}, 0); });
    addFault("no bus at all",
             u"Sensor: no Kinect v2 is on the USB bus. Plug it into a USB 3 port and its own power "
             "supply into a socket."_s,
             [](Machine& machine) { machine.tree.remove(u"/sys"_s); });
    addFault("another maker's device of the same number",
             u"Sensor: no Kinect v2 is on the USB bus. Plug it into a USB 3 port and its own power "
             "supply into a socket."_s,
             [](Machine& machine) { machine.tree.setMaker(u"1234"_s); });
    addFault(
        "only the hub",
        u"Sensor: its hub (045e:02d9) is on the USB bus, its camera is not. Use a USB 3 port of "
        "the machine itself, and the sensor's own power supply."_s,
        [](Machine& machine) { machine.tree.leaveOnlyTheHub(); });
    addFault("USB 2",
             u"USB speed: 480 Mbit/s, where the sensor needs 5000. Use a USB 3 port of the machine "
             "itself, with no hub and no USB 2 cable between."_s,
             [](Machine& machine) { machine.tree.plugIn(u"02c4"_s, 480); });
    addFault("no rights",
             u"Rights: /dev/bus/usb/002/003 may not be read and written. Plug the sensor in again, "
             "while you are logged in at the machine itself."_s,
             [](Machine& machine) { machine.tree.forbidTheNode(); });
    addFault("no rule",
             u"udev rule: none lets you open the sensor. Run scripts/setup-kinect.sh, or copy "
             "packaging/70-kinect-v2.rules into /etc/udev/rules.d, and plug the sensor in again."_s,
             [](Machine& machine) {
                 machine.tree.remove(PreparedTree::rule);
                 machine.tree.forbidTheNode();
             });
    addFault(
        "a rule that comes too late",
        u"udev rule: /etc/udev/rules.d/90-kinect.rules sorts behind 73-seat-late.rules and has no "
        "effect. Rename it so that its number is below 73, and plug the sensor in again."_s,
        [](Machine& machine) {
            machine.tree.remove(PreparedTree::rule);
            machine.tree.write(u"/etc/udev/rules.d/90-kinect.rules"_s, uaccessRule);
            machine.tree.forbidTheNode();
        });
    addFault("busy",
             u"In use: by Protonect (process 4711). End it before the program is started."_s,
             [](Machine& machine) { machine.tree.letOpen(4711, u"Protonect"_s); });
    addFault(
        "busy twice",
        u"In use: by Protonect (process 4711), viewer (process 4712). End it before the program is "
        "started."_s,
        [](Machine& machine) {
            machine.tree.letOpen(4711, u"Protonect"_s);
            machine.tree.letOpen(4712, u"viewer"_s);
        });
}

/// What the program is built with, its cascades and its samples.
void addProgramFaults() {
    addFault(
        "the stand-in",
        u"Sensor library: the program is built with the stand-in. Run scripts/setup-kinect.sh, "
        "then scripts/run.sh."_s,
        [](Machine& machine) {
            machine.build = {false, u"0.2.0"_s, true, {u"cpu"_s}};
        });
    addFault(
        "no threading",
        u"Sensor library: libfreenect2 0.2.0 without C++11 threading, so that a silent sensor is "
        "never noticed. Build libfreenect2 again with -DENABLE_CXX11=ON, then this program."_s,
        [](Machine& machine) { machine.build.timedWaitsEnd = false; });
    addFault(
        "a pipeline that does not work",
        u"Packet pipeline: gl, which does not work here. Set LIBFREENECT2_PIPELINE=cpu when you "
        "start the program."_s,
        [](Machine& machine) { machine.broken = QStringList{u"gl"_s}; });
    addFault(
        "no cascades",
        u"Face cascades: /usr/share/opencv4/haarcascades/haarcascade_frontalface_default.xml is "
        "missing or damaged. Install the package opencv-data (again)."_s,
        [](Machine& machine) { machine.tree.remove(u"/usr/share/opencv4"_s); });
    addFault(
        "a damaged cascade",
        u"Face cascades: /usr/share/opencv4/haarcascades/haarcascade_profileface.xml is missing or "
        "damaged. Install the package opencv-data (again)."_s,
        [](Machine& machine) {
            const QString cascade =
                u"/usr/share/opencv4/haarcascades/haarcascade_profileface.xml"_s;
            machine.tree.remove(cascade);
            machine.tree.write(cascade, "<?xml version=\"1.0\"?>\n<opencv_storage>");
        });
    addFault("no samples",
             u"Owner's samples: no picture under %1/data/faces/tavin can be read. Take some with "
             "lumeno-enroll."_s,
             [](Machine& machine) { machine.tree.remove(u"/data/faces"_s); });
    addFault("samples that are no pictures",
             u"Owner's samples: no picture under %1/data/faces/tavin can be read. Take some with "
             "lumeno-enroll."_s,
             [](Machine& machine) {
                 machine.tree.remove(u"/data/faces"_s);
                 machine.tree.write(u"/data/faces/tavin/1.png"_s, "none");
             });
    addFault("nothing in the folder yet",
             u"Owner's samples: no picture under %1/data/faces/tavin can be read. Take some with "
             "lumeno-enroll."_s,
             [](Machine& machine) { machine.tree.remove(u"/data"_s); });
}

/// The folders that the program writes to, and the voice service's files.
void addFolderFaults() {
    addFault(
        "a file in place of the working folder",
        u"Working folder: the model cannot be written because of %1/data. Make that a folder which "
        "you may write to."_s,
        [](Machine& machine) {
            machine.tree.remove(u"/data"_s);
            machine.tree.write(u"/data"_s, "");
        });
    addFault(
        "a working folder that may not be read",
        u"Working folder: the model cannot be written because of %1/data. Make that a folder which "
        "you may write to."_s,
        [](Machine& machine) {
            QFile::setPermissions(machine.tree.path() + u"/data"_s,
                                  QFile::WriteOwner | QFile::ExeOwner);
        });
    addFault("a folder in place of the model",
             u"Working folder: the model cannot be written because of "
             "%1/data/models/face_recognizer.yml. That is a folder: move it away."_s,
             [](Machine& machine) {
                 machine.tree.write(u"/data/models/face_recognizer.yml/file"_s, "");
             });
    addFault("a models' folder of somebody else",
             u"Working folder: the model cannot be written because of %1/data/models. Make that a "
             "folder which you may write to."_s,
             [](Machine& machine) {
                 machine.tree.write(u"/data/models/file"_s, "");
                 QFile::setPermissions(machine.tree.path() + u"/data/models"_s,
                                       QFile::ReadOwner | QFile::ExeOwner);
             });
    addFault("a file in place of the models' folder",
             u"Working folder: the model cannot be written because of %1/data/models. Make that a "
             "folder which you may write to."_s,
             [](Machine& machine) { machine.tree.write(u"/data/models"_s, ""); });
    addFault(
        "a working folder of somebody else",
        u"Working folder: the model cannot be written because of %1/data. Make that a folder which "
        "you may write to."_s,
        [](Machine& machine) {
            QFile::setPermissions(machine.tree.path() + u"/data"_s,
                                  QFile::ReadOwner | QFile::ExeOwner);
        });
    addFault(
        "voice files of somebody else",
        u"Voice service: %1/home/.local/state/lumeno/auralis-live.pid cannot be read. Remove it, "
        "and let the voice service write it again under your name."_s,
        [](Machine& machine) {
            const QString file = u"/home/.local/state/lumeno/auralis-live.pid"_s;
            QFile::setPermissions(machine.tree.path() + file, QFile::WriteOwner);
        });
    addFault("a folder in place of a voice file",
             u"Voice service: %1/home/.local/state/lumeno/auralis-live-event.json cannot be read. "
             "Remove it, and let the voice service write it again under your name."_s,
             [](Machine& machine) {
                 const QString file = u"/home/.local/state/lumeno/auralis-live-event.json"_s;
                 machine.tree.remove(file);
                 machine.tree.write(file + u"/file"_s, "");
             });
}

} // namespace

Q_DECLARE_METATYPE(Spoil)

class DoctorTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aMachineOnWhichAllIsWell();
    void oneFaultGivesOneSentence_data();
    void oneFaultGivesOneSentence();
    void worthKnowingIsNoFault_data();
    void worthKnowingIsNoFault();
    void whatFollowsFromAFaultIsNotLookedAt_data();
    void whatFollowsFromAFaultIsNotLookedAt();
    void twoFaultsGiveTwoSentences();
    void rulesCountAsUdevCountsThem_data();
    void rulesCountAsUdevCountsThem();
    void aRuleIsForTheSensorThatIsThere();
    void noRuleIsNeededWhereTheSensorMayBeOpened();
    void aPipelineThatTheLibraryLacksIsNamed();
    void whatIsNoFileIsNotReadFrom();
    void rightsOfThisMachine();
    void theReportNamesTheMachineAndNotItsOwner();
};

void DoctorTest::aMachineOnWhichAllIsWell() {
    const Findings findings = Machine().findings();
    QCOMPARE(statusOf(findings), 0);
    QStringList lines;
    for (const Finding& finding : findings) {
        lines.append(lineOf(finding));
        QVERIFY(finding.cure.isEmpty());
    }
    QCOMPARE(lines.mid(0, 8),
             (QStringList{u"ok    Sensor: Kinect v2 (045e:02c4), bus 2, device 3"_s,
                          u"ok    USB speed: 5000 Mbit/s"_s,
                          u"ok    USB controller: 8086:a36d at 0000:00:14.0 (xhci_hcd)"_s,
                          u"ok    udev rule: /usr/lib/udev/rules.d/70-kinect-v2.rules"_s,
                          u"ok    Rights: /dev/bus/usb/002/003 may be read and written"_s,
                          u"ok    In use: by nobody, as far as can be seen"_s,
                          u"ok    Sensor library: libfreenect2 0.2.0 with C++11 threading"_s,
                          u"ok    Packet pipeline: gl"_s}));
    QCOMPARE(lines.at(8), u"ok    Face cascades: both can be loaded"_s);
    QVERIFY(lines.at(9).startsWith(u"ok    Owner's samples: 20 readable under "_s));
    QVERIFY(lines.at(10).startsWith(u"ok    Working folder: "_s));
    QCOMPARE(lines.at(11), u"ok    Voice service: runs"_s);
    QCOMPARE(lines.size(), 12);
}

void DoctorTest::oneFaultGivesOneSentence_data() {
    QTest::addColumn<Spoil>("spoil");
    QTest::addColumn<QString>("sentence");
    addSensorFaults();
    addProgramFaults();
    addFolderFaults();
}

void DoctorTest::oneFaultGivesOneSentence() {
    QFETCH(Spoil, spoil);
    QFETCH(QString, sentence);
    Machine machine;
    spoil(machine);
    const Findings findings = machine.findings();
    QCOMPARE(linesOf(findings, Verdict::Fault),
             QStringList{sentence.replace(u"%1"_s, machine.tree.path())});
    QCOMPARE(statusOf(findings), 1);
    QCOMPARE(findings.size(), 12);
    for (const Finding& finding : findings)
        QCOMPARE(!finding.cure.isEmpty(), finding.verdict == Verdict::Fault);
}

void DoctorTest::worthKnowingIsNoFault_data() {
    QTest::addColumn<Spoil>("spoil");
    QTest::addColumn<QString>("beginning");
    const auto row = [](const char* name, const QString& beginning, const Spoil& spoil) {
        QTest::newRow(name) << spoil << beginning;
    };
    row("a controller that is known not to work",
        u"USB controller: 1b21:a36d at 0000:00:14.0 (xhci_hcd); controllers of this maker"_s,
        [](Machine& machine) { machine.tree.plugIn(u"02c4"_s, 5000, u"1b21"_s); });
    row("a virtual machine",
        u"USB controller: 8086:a36d at 0000:00:14.0 (xhci_hcd); this is a virtual machine"_s,
        [](Machine& machine) {
            machine.tree.write(u"/proc/cpuinfo"_s, "flags : fpu hypervisor lahf_lm\n");
        });
    row("no controller above the sensor", u"USB controller: not found above the sensor"_s,
        [](Machine& machine) { machine.tree.removeController(); });
    row("the processor's pipeline", u"Packet pipeline: cpu, which needs a whole core"_s,
        [](Machine& machine) { machine.wantedPipeline = u"cpu"_s; });
    row("few samples", u"Owner's samples: 1 readable under "_s, [](Machine& machine) {
        for (int number = 1; number < 20; ++number)
            machine.tree.remove(u"/data/faces/tavin/%1.png"_s.arg(number));
    });
    row("no voice service", u"Voice service: has left no direction under "_s,
        [](Machine& machine) { machine.tree.remove(u"/home/.local"_s); });
    row("a voice service that left one of its files",
        u"Voice service: has left no direction under "_s, [](Machine& machine) {
            machine.tree.remove(u"/home/.local/state/lumeno/auralis-live-event.json"_s);
        });
    row("a voice service that ended", u"Voice service: does not run"_s, [](Machine& machine) {
        machine.tree.write(u"/home/.local/state/lumeno/auralis-live.pid"_s, "999999999");
    });
}

void DoctorTest::worthKnowingIsNoFault() {
    QFETCH(Spoil, spoil);
    QFETCH(QString, beginning);
    Machine machine;
    spoil(machine);
    const Findings findings = machine.findings();
    QCOMPARE(linesOf(findings, Verdict::Fault), QStringList());
    const QStringList notes = linesOf(findings, Verdict::Note);
    QCOMPARE(notes.size(), 1);
    QVERIFY2(notes.first().startsWith(beginning), qPrintable(notes.first()));
    QCOMPARE(statusOf(findings), 0);
}

void DoctorTest::whatFollowsFromAFaultIsNotLookedAt_data() {
    QTest::addColumn<Spoil>("spoil");
    QTest::addColumn<QStringList>("subjects");
    QTest::newRow("nothing plugged in")
        << Spoil([](Machine& machine) { machine.tree.plugIn({}, 0); })
        << QStringList{u"USB speed"_s, u"USB controller"_s, u"Rights"_s, u"In use"_s};
    QTest::newRow("no rule") << Spoil([](Machine& machine) {
        machine.tree.remove(PreparedTree::rule);
        machine.tree.forbidTheNode();
    }) << QStringList{u"Rights"_s};
    QTest::newRow("the stand-in") << Spoil([](Machine& machine) { machine.build = {}; })
                                  << QStringList{u"Packet pipeline"_s};
    QTest::newRow("a file in place of the working folder") << Spoil([](Machine& machine) {
        machine.tree.remove(u"/data"_s);
        machine.tree.write(u"/data"_s, "");
    }) << QStringList{u"Owner's samples"_s};
}

void DoctorTest::whatFollowsFromAFaultIsNotLookedAt() {
    QFETCH(Spoil, spoil);
    QFETCH(QStringList, subjects);
    Machine machine;
    spoil(machine);
    QStringList left;
    for (const QString& line : linesOf(machine.findings(), Verdict::NotLookedAt))
        left.append(line.section(u':', 0, 0));
    QCOMPARE(left, subjects);
}

void DoctorTest::twoFaultsGiveTwoSentences() {
    Machine machine;
    machine.tree.plugIn({}, 0);
    machine.tree.remove(PreparedTree::rule);
    const QStringList faults = linesOf(machine.findings(), Verdict::Fault);
    QCOMPARE(faults.size(), 2);
    QVERIFY(faults.first().startsWith(u"Sensor: "_s) && faults.last().startsWith(u"udev rule: "_s));
}

void DoctorTest::rulesCountAsUdevCountsThem_data() {
    using Files = QList<QPair<QString, QByteArray>>;
    QTest::addColumn<Files>("files");
    QTest::addColumn<int>("state");
    QTest::addColumn<QString>("path");
    const QString etc = u"/etc/udev/rules.d/"_s, run = u"/run/udev/rules.d/"_s,
                  usr = u"/usr/lib/udev/rules.d/"_s;
    const auto row = [](const char* name, SensorRule::State state, const QString& path,
                        const Files& files) { QTest::newRow(name) << files << int{state} << path; };
    row("none", SensorRule::Missing, {}, {});
    row("another device's", SensorRule::Missing, {},
        {{etc + u"70-a.rules"_s,
          "ATTR{idVendor}==\"045e\", ATTR{idProduct}==\"02ae\", MODE=\"0666\""}});
    row("only a comment", SensorRule::Missing, {}, {{etc + u"70-a.rules"_s, '#' + modeRule}});
    row("not a rules file", SensorRule::Missing, {}, {{etc + u"70-a.rules.old"_s, modeRule}});
    row("tag, early", SensorRule::Works, etc + u"70-a.rules"_s,
        {{etc + u"70-a.rules"_s, uaccessRule}});
    row("tag, just early enough", SensorRule::Works, etc + u"73-a.rules"_s,
        {{etc + u"73-a.rules"_s, uaccessRule}});
    row("tag, just too late", SensorRule::TooLate, etc + u"73-z.rules"_s,
        {{etc + u"73-z.rules"_s, uaccessRule}});
    row("tag, one digit", SensorRule::TooLate, etc + u"9-a.rules"_s,
        {{etc + u"9-a.rules"_s, uaccessRule}});
    row("mode, late", SensorRule::Works, etc + u"90-kinect2.rules"_s,
        {{etc + u"90-kinect2.rules"_s, modeRule}});
    row("group, late", SensorRule::Works, etc + u"90-kinect2.rules"_s,
        {{etc + u"90-kinect2.rules"_s, groupRule}});
    row("both too late, the first is named", SensorRule::TooLate, etc + u"80-a.rules"_s,
        {{etc + u"80-a.rules"_s, uaccessRule}, {usr + u"90-b.rules"_s, uaccessRule}});
    row("the system's until its next start", SensorRule::Works, run + u"70-a.rules"_s,
        {{run + u"70-a.rules"_s, uaccessRule}, {usr + u"70-a.rules"_s, ""}});
    row("the administrator's before that", SensorRule::Missing, {},
        {{run + u"70-a.rules"_s, uaccessRule}, {etc + u"70-a.rules"_s, ""}});
    row("one of two works", SensorRule::Works, usr + u"90-b.rules"_s,
        {{etc + u"80-a.rules"_s, uaccessRule}, {usr + u"90-b.rules"_s, modeRule}});
    row("masked by an empty file of its name", SensorRule::Missing, {},
        {{usr + u"70-a.rules"_s, uaccessRule}, {etc + u"70-a.rules"_s, ""}});
}

void DoctorTest::rulesCountAsUdevCountsThem() {
    using Files = QList<QPair<QString, QByteArray>>;
    QFETCH(Files, files);
    QFETCH(int, state);
    QFETCH(QString, path);
    PreparedTree tree;
    tree.remove(PreparedTree::rule);
    for (const auto& [name, text] : files)
        tree.write(name, text);
    const SensorRule rule = findSensorRule(tree.path(), u"02c4"_s);
    QCOMPARE(int{rule.state}, state);
    QCOMPARE(rule.path, path);
}

void DoctorTest::aRuleIsForTheSensorThatIsThere() {
    Machine machine;
    machine.tree.plugIn(u"02d8"_s, 5000); // the rule is for 02c4 only
    machine.tree.forbidTheNode();
    const QStringList faults = linesOf(machine.findings(), Verdict::Fault);
    QCOMPARE(faults.size(), 1);
    QVERIFY(faults.first().startsWith(u"udev rule: none"_s));
}

void DoctorTest::noRuleIsNeededWhereTheSensorMayBeOpened() {
    Machine machine;
    machine.tree.remove(PreparedTree::rule);
    const Findings findings = machine.findings();
    QCOMPARE(lineOf(findings.at(3)), u"ok    udev rule: none, and none is needed here"_s);
    QCOMPARE(statusOf(findings), 0);
}

void DoctorTest::aPipelineThatTheLibraryLacksIsNamed() {
    Machine machine;
    machine.wantedPipeline = u"cuda"_s;
    QCOMPARE(lineOf(machine.findings().at(7)),
             u"ok    Packet pipeline: gl, since LIBFREENECT2_PIPELINE names one that the library "
             "does not have"_s);
    machine.wantedPipeline = u"cl"_s;
    QCOMPARE(lineOf(machine.findings().at(7)), u"ok    Packet pipeline: cl"_s);
}

void DoctorTest::whatIsNoFileIsNotReadFrom() {
    const QTemporaryDir folder;
    const QString fifo = folder.filePath(u"fifo"_s);
    QCOMPARE(mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    QCOMPARE(contentOf(fifo), QByteArray()); // and does not wait for somebody to write
    QCOMPARE(contentOf(folder.path()), QByteArray());
}

void DoctorTest::rightsOfThisMachine() {
    const QTemporaryDir folder;
    const Places places = thisMachine(folder.path(), folder.path());
    QVERIFY(places.mayAccess(folder.path(), R_OK | W_OK | X_OK));
    QVERIFY(!places.mayAccess(folder.filePath(u"nothing"_s), R_OK));
}

void DoctorTest::theReportNamesTheMachineAndNotItsOwner() {
    Machine machine;
    machine.tree.write(u"/etc/os-release"_s, "NAME=x\nPRETTY_NAME=\"Some Linux 12\"\n");
    machine.tree.write(u"/proc/sys/kernel/osrelease"_s, "6.1.0\n");
    machine.tree.write(u"/sys/module/usbcore/parameters/usbfs_memory_mb"_s, "16\n");
    machine.tree.remove(u"/home/.local"_s);
    qputenv("LIBFREENECT2_PIPELINE", "cl");
    qputenv("LUMENO_VIRTUAL_KINECT", "room");
    qputenv("SOMETHING_ELSE", "private");
    const Places places = machine.tree.places();
    const QString report = reportOf(machine.findings(), places, u"Version 1"_s);
    for (const char* name : {"LIBFREENECT2_PIPELINE", "LUMENO_VIRTUAL_KINECT", "SOMETHING_ELSE"})
        qunsetenv(name);
    for (const QString& line :
         {u"Version 1\n"_s, u"System: Some Linux 12, Linux 6.1.0\n"_s,
          u"Memory for USB transfers in MiB: 16\n"_s,
          u"USB: 045e:02c4 on bus 2, device 3, 5000 Mbit/s, controller 8086:a36d\n"_s,
          u"USB: 045e:02d9 on bus 2, device 2, "_s, u"LIBFREENECT2_PIPELINE=cl\n"_s,
          u"LUMENO_VIRTUAL_KINECT=room\n"_s, u"ok    Packet pipeline: gl\n"_s,
          u"under ~/.local/state/lumeno/"_s})
        QVERIFY2(report.contains(line), qPrintable(line + u"is missing in\n"_s + report));
    QVERIFY(!report.contains(places.home));
    QVERIFY(!report.contains(u"private"_s));
}

QTEST_GUILESS_MAIN(DoctorTest)
#include "doctor_test.moc"
