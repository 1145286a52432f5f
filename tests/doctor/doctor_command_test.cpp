#include "doctor/prepared_tree.h"

#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;

/// The command itself: its options, its lines and its status.
class DoctorCommandTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void helpAndVersionEndWithZero_data();
    void helpAndVersionEndWithZero();
    void aWrongOptionEndsWithTwo();
    void aLineForEachThing();
    void theReportBeginsWithTheVersions();
    void aPipelineCanBeTriedInAProcessOfItsOwn_data();
    void aPipelineCanBeTriedInAProcessOfItsOwn();
};

namespace {

struct Run {
    explicit Run(const QStringList& arguments) {
        QProcess process;
        process.start(QStringLiteral(LUMENO_DOCTOR), arguments);
        if (process.waitForFinished(60'000) && process.exitStatus() == QProcess::NormalExit)
            status = process.exitCode();
        output = QString::fromUtf8(process.readAllStandardOutput());
        errors = QString::fromUtf8(process.readAllStandardError());
    }
    int status = -1;
    QString output;
    QString errors;
};

QStringList optionsFor(const PreparedTree& tree) {
    return {u"--root"_s,        tree.path(),   u"--home"_s,
            tree.places().home, u"--folder"_s, tree.places().folder};
}

} // namespace

void DoctorCommandTest::helpAndVersionEndWithZero_data() {
    QTest::addColumn<QString>("option");
    QTest::addColumn<QString>("text");
    QTest::newRow("help") << u"--help"_s << u"--report"_s;
    QTest::newRow("version") << u"--version"_s << u"lumeno-doctor"_s;
}

void DoctorCommandTest::helpAndVersionEndWithZero() {
    QFETCH(QString, option);
    QFETCH(QString, text);
    const Run run({option});
    QCOMPARE(run.status, 0);
    QVERIFY2(run.output.contains(text), qPrintable(run.output));
    QCOMPARE(run.errors, QString());
}

void DoctorCommandTest::aWrongOptionEndsWithTwo() {
    const Run run({u"--repair"_s});
    QCOMPARE(run.status, 2);
    QCOMPARE(run.output, QString());
    QVERIFY(run.errors.startsWith(u"lumeno-doctor: "_s));
}

void DoctorCommandTest::aLineForEachThing() {
    const PreparedTree tree;
    const Run run(optionsFor(tree));
    const QStringList lines = run.output.split(u'\n', Qt::SkipEmptyParts);
    QCOMPARE(lines.size(), 12);
    QCOMPARE(lines.first(), u"ok    Sensor: Kinect v2 (045e:02c4), bus 2, device 3"_s);
    // What is left depends on the sensor library of this build.
    const bool fault = run.output.contains(u"\nFAULT "_s);
    QCOMPARE(run.status, fault ? 1 : 0);
    for (const QString& line : lines)
        QVERIFY2(!line.startsWith(u"FAULT"_s) || line.contains(u"Sensor library:"_s) ||
                     line.contains(u"Packet pipeline:"_s),
                 qPrintable(line));

    PreparedTree unplugged;
    unplugged.plugIn({}, 0);
    const Run bad(optionsFor(unplugged));
    QCOMPARE(bad.status, 1);
    QVERIFY(bad.output.startsWith(u"FAULT Sensor: no Kinect v2 is on the USB bus. "_s));
}

void DoctorCommandTest::theReportBeginsWithTheVersions() {
    const PreparedTree tree;
    const Run run(optionsFor(tree) + QStringList{u"--report"_s});
    QVERIFY2(run.output.startsWith(u"Lumeno Control Center "_s), qPrintable(run.output));
    QVERIFY(run.output.contains(u"\nok    Sensor: "_s));
}

void DoctorCommandTest::aPipelineCanBeTriedInAProcessOfItsOwn_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("status");
    QTest::newRow("there") << u"cpu"_s << 0;
    QTest::newRow("unknown") << u"none"_s << 1;
}

void DoctorCommandTest::aPipelineCanBeTriedInAProcessOfItsOwn() {
    QFETCH(QString, name);
    QFETCH(int, status);
    QCOMPARE(Run({u"--try-pipeline"_s, name}).status, status);
}

QTEST_GUILESS_MAIN(DoctorCommandTest)
#include "doctor_command_test.moc"
