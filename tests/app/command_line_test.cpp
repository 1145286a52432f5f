#include "app/command_line.h"

#include <QTest>

using namespace Qt::StringLiterals;

class CommandLineTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void noSwitchesGiveTheDefaults();
    void eachPresenceSwitchSetsItsOwnChoice_data();
    void eachPresenceSwitchSetsItsOwnChoice();
    void mockModeImpliesTheDemoChoices_data();
    void mockModeImpliesTheDemoChoices();
    void personLostTime_data();
    void personLostTime();
    void autoQuitTime_data();
    void autoQuitTime();
    void aSwitchTakenForAValueStillCounts();
    void theFirstOccurrenceOfAValuedSwitchCounts();
    void otherSpellingsAreIgnored_data();
    void otherSpellingsAreIgnored();
    void upperCaseSpellingsAreIgnored_data();
    void upperCaseSpellingsAreIgnored();
};

namespace {

CommandLine parse(const QStringList& switches) {
    return parseCommandLine(QStringList{u"lumeno-control-center"_s} + switches);
}

/// The presence switches as one word of '0' and '1', in the order of the record.
QString choices(const CommandLine& line) {
    QString word;
    for (const bool on : {line.layoutDebug, line.mockMode, line.demoUi, line.demoSpeakerLights,
                          line.invertAudioDirection})
        word += on ? u'1' : u'0';
    return word;
}

} // namespace

void CommandLineTest::noSwitchesGiveTheDefaults() {
    const CommandLine line = parse({});
    QCOMPARE(choices(line), u"00000"_s);
    QCOMPARE(line.personLostMs, 5000);
    QCOMPARE(line.autoQuitMs, 0);
}

void CommandLineTest::eachPresenceSwitchSetsItsOwnChoice_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("expected");
    QTest::newRow("layout debug") << u"--layout-debug"_s << u"10000"_s;
    QTest::newRow("demo ui") << u"--demo-ui"_s << u"00100"_s;
    QTest::newRow("demo speaker lights") << u"--demo-speaker-lights"_s << u"00010"_s;
    QTest::newRow("invert audio direction") << u"--invert-audio-direction"_s << u"00001"_s;
}

void CommandLineTest::eachPresenceSwitchSetsItsOwnChoice() {
    QFETCH(QString, name);
    QTEST(choices(parse({name})), "expected");
}

void CommandLineTest::mockModeImpliesTheDemoChoices_data() {
    QTest::addColumn<QStringList>("switches");
    QTest::newRow("mock") << QStringList{u"--mock"_s};
    QTest::newRow("no kinect") << QStringList{u"--no-kinect"_s};
    QTest::newRow("both") << QStringList{u"--no-kinect"_s, u"--mock"_s};
    QTest::newRow("mock and demo ui") << QStringList{u"--mock"_s, u"--demo-ui"_s};
}

void CommandLineTest::mockModeImpliesTheDemoChoices() {
    QFETCH(QStringList, switches);
    QCOMPARE(choices(parse(switches)), u"01110"_s);
}

void CommandLineTest::personLostTime_data() {
    QTest::addColumn<QStringList>("switches");
    QTest::addColumn<int>("expected");
    const QString name = u"--person-lost-ms"_s;
    QTest::newRow("a number") << QStringList{name, u"3000"_s} << 3000;
    QTest::newRow("zero") << QStringList{name, u"0"_s} << 0;
    QTest::newRow("the largest int") << QStringList{name, u"2147483647"_s} << 2147483647;
    QTest::newRow("last argument") << QStringList{name} << 5000;
    QTest::newRow("a word") << QStringList{name, u"abc"_s} << 5000;
    QTest::newRow("a fraction") << QStringList{name, u"1.5"_s} << 5000;
    QTest::newRow("hexadecimal") << QStringList{name, u"0x10"_s} << 5000;
    QTest::newRow("empty") << QStringList{name, QString()} << 5000;
    QTest::newRow("negative") << QStringList{name, u"-1"_s} << 5000;
    QTest::newRow("too large for an int") << QStringList{name, u"99999999999"_s} << 5000;
    QTest::newRow("equals sign") << QStringList{u"--person-lost-ms=3000"_s} << 5000;
}

void CommandLineTest::personLostTime() {
    QFETCH(QStringList, switches);
    QTEST(parse(switches).personLostMs, "expected");
}

void CommandLineTest::autoQuitTime_data() {
    QTest::addColumn<QStringList>("switches");
    QTest::addColumn<bool>("quits");
    const QString name = u"--auto-quit-ms"_s;
    QTest::newRow("a number") << QStringList{name, u"1500"_s} << true;
    QTest::newRow("zero") << QStringList{name, u"0"_s} << false;
    QTest::newRow("negative") << QStringList{name, u"-5"_s} << false;
    QTest::newRow("a word") << QStringList{name, u"soon"_s} << false;
    QTest::newRow("last argument") << QStringList{name} << false;
}

void CommandLineTest::autoQuitTime() {
    QFETCH(QStringList, switches);
    QFETCH(bool, quits);
    QCOMPARE(parse(switches).autoQuitMs > 0, quits);
}

void CommandLineTest::aSwitchTakenForAValueStillCounts() {
    const CommandLine line = parse({u"--person-lost-ms"_s, u"--mock"_s});
    QCOMPARE(line.personLostMs, 5000);
    QVERIFY(line.mockMode);
}

void CommandLineTest::theFirstOccurrenceOfAValuedSwitchCounts() {
    const QString name = u"--person-lost-ms"_s;
    QCOMPARE(parse({name, u"7"_s, name, u"8"_s}).personLostMs, 7);
    QCOMPARE(parse({name, u"x"_s, name, u"8"_s}).personLostMs, 5000);
}

void CommandLineTest::otherSpellingsAreIgnored_data() {
    QTest::addColumn<QString>("name");
    QTest::newRow("upper case") << u"--MOCK"_s;
    QTest::newRow("one dash") << u"-mock"_s;
    QTest::newRow("prefix") << u"--moc"_s;
    QTest::newRow("equals sign") << u"--mock=true"_s;
    QTest::newRow("trailing blank") << u"--mock "_s;
    QTest::newRow("unknown") << u"--fullscreen"_s;
}

void CommandLineTest::otherSpellingsAreIgnored() {
    QFETCH(QString, name);
    QCOMPARE(choices(parse({name})), u"00000"_s);
}

void CommandLineTest::upperCaseSpellingsAreIgnored_data() {
    QTest::addColumn<QString>("name");
    for (const char* name :
         {"--layout-debug", "--mock", "--no-kinect", "--demo-ui", "--demo-speaker-lights",
          "--invert-audio-direction", "--person-lost-ms", "--auto-quit-ms"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void CommandLineTest::upperCaseSpellingsAreIgnored() {
    QFETCH(QString, name);
    const auto isDefault = [](const CommandLine& line) {
        return choices(line) == u"00000"_s && line.personLostMs == 5000 && line.autoQuitMs == 0;
    };
    const QString value = u"1234"_s; // of the switches that have one
    QVERIFY(!isDefault(parse({name, value})));
    QVERIFY(isDefault(parse({name.toUpper(), value})));
    QString firstLetter = name;
    firstLetter[2] = firstLetter.at(2).toUpper();
    QVERIFY(isDefault(parse({firstLetter, value})));
}

QTEST_APPLESS_MAIN(CommandLineTest)
#include "command_line_test.moc"
