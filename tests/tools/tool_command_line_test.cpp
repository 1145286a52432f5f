#include "common/command_line.h"
#include "common/console.h"

#include <QBuffer>
#include <QTest>

using namespace Qt::StringLiterals;

class ToolCommandLineTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void argumentsAndOptionsAreRead();
    void withoutOptionsThereAreNoValues();
    void theLastOfRepeatedOptionsCounts();
    void furtherArgumentsFollowTheNamedOnes();
    void helpGoesToTheOutput_data();
    void helpGoesToTheOutput();
    void theVersionGoesToTheOutput();
    void wrongUseIsOneSentenceAndStatusTwo_data();
    void wrongUseIsOneSentenceAndStatusTwo();
    void aToolsOwnRefusalIsWrongUseToo();
};

namespace {

/// A command line of the kind that the tools have, and what it wrote.
struct Tool {
    Tool() {
        output.open(QIODevice::WriteOnly);
        errors.open(QIODevice::WriteOnly);
        line.addArgument(u"FOLDER"_s, u"Where it goes."_s);
        line.addSwitch(u"lossless"_s, u"Keeps every bit."_s);
        line.addText(u"device"_s, u"SERIAL"_s, u"Which device."_s);
        line.addNumber(u"seconds"_s, u"N"_s, u"How long."_s, 1, 3600);
    }

    std::optional<int> read(const QStringList& arguments) {
        return line.read(QStringList{u"/usr/bin/lumeno-test"_s} + arguments);
    }

    QBuffer output;
    QBuffer errors;
    tool::Console console{u"lumeno-test"_s, output, errors};
    tool::CommandLine line{console, u"Tests the command line."_s};
};

} // namespace

void ToolCommandLineTest::argumentsAndOptionsAreRead() {
    Tool tool;
    QCOMPARE(tool.read({u"--lossless"_s, u"--seconds"_s, u"60"_s, u"walk"_s, u"--device=7"_s}),
             std::optional<int>());
    QCOMPARE(tool.line.argument(u"FOLDER"_s), u"walk"_s);
    QVERIFY(tool.line.isSet(u"lossless"_s));
    QCOMPARE(tool.line.text(u"device"_s), std::optional(u"7"_s));
    QCOMPARE(tool.line.number(u"seconds"_s), std::optional<qint64>(60));
    QCOMPARE(tool.output.data() + tool.errors.data(), QByteArray());
}

void ToolCommandLineTest::withoutOptionsThereAreNoValues() {
    Tool tool;
    QCOMPARE(tool.read({u"walk"_s}), std::optional<int>());
    QVERIFY(!tool.line.isSet(u"lossless"_s));
    QCOMPARE(tool.line.text(u"device"_s), std::optional<QString>());
    QCOMPARE(tool.line.number(u"seconds"_s), std::optional<qint64>());
}

void ToolCommandLineTest::theLastOfRepeatedOptionsCounts() {
    Tool tool;
    QCOMPARE(tool.read({u"walk"_s, u"--seconds=1"_s, u"--seconds=2"_s}), std::optional<int>());
    QCOMPARE(tool.line.number(u"seconds"_s), std::optional<qint64>(2));
}

void ToolCommandLineTest::furtherArgumentsFollowTheNamedOnes() {
    Tool tool;
    tool.line.addFurtherArguments(u"IMAGE"_s, u"What else."_s);
    QCOMPARE(tool.read({u"walk"_s, u"1.png"_s, u"--lossless"_s, u"2.png"_s}), std::optional<int>());
    QCOMPARE(tool.line.argument(u"FOLDER"_s), u"walk"_s);
    QCOMPARE(tool.line.furtherArguments(), QStringList({u"1.png"_s, u"2.png"_s}));
}

void ToolCommandLineTest::helpGoesToTheOutput_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("long") << QStringList{u"--help"_s};
    QTest::newRow("short") << QStringList{u"-h"_s};
    QTest::newRow("beside wrong use") << QStringList{u"--nonsense"_s, u"--help"_s};
}

void ToolCommandLineTest::helpGoesToTheOutput() {
    QFETCH(QStringList, arguments);
    Tool tool;
    QCOMPARE(tool.read(arguments), std::optional<int>(tool::Succeeded));
    for (const char* part : {"Tests the command line.", "FOLDER", "--lossless", "--seconds <N>"})
        QVERIFY2(tool.output.data().contains(part), tool.output.data().constData());
    QCOMPARE(tool.errors.data(), QByteArray());
}

void ToolCommandLineTest::theVersionGoesToTheOutput() {
    Tool tool;
    QCOMPARE(tool.read({u"--version"_s}), std::optional<int>(tool::Succeeded));
    QCOMPARE(QString::fromUtf8(tool.output.data()), u"lumeno-test "_s + tool::version() + u'\n');
    QVERIFY(tool::version().contains(u'.'));
}

void ToolCommandLineTest::wrongUseIsOneSentenceAndStatusTwo_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("sentence");
    QTest::newRow("no argument") << QStringList{}
                                 << u"FOLDER is missing; --help shows how to use it."_s;
    QTest::newRow("two arguments")
        << QStringList{u"a"_s, u"b"_s} << u"\"b\" is one argument too many."_s;
    QTest::newRow("unknown option")
        << QStringList{u"a"_s, u"--fast"_s} << u"Unknown option 'fast'."_s;
    QTest::newRow("no value") << QStringList{u"a"_s, u"--seconds"_s}
                              << u"Missing value after '--seconds'."_s;
    QTest::newRow("value of a switch")
        << QStringList{u"a"_s, u"--lossless=1"_s} << u"Unexpected value after '--lossless'."_s;
    const auto number = [](const QString& value) {
        return u"--seconds takes a whole number from 1 to 3600, not \"%1\"."_s.arg(value);
    };
    QTest::newRow("no number") << QStringList{u"a"_s, u"--seconds=x"_s} << number(u"x"_s);
    QTest::newRow("too small") << QStringList{u"a"_s, u"--seconds=0"_s} << number(u"0"_s);
    QTest::newRow("too large") << QStringList{u"a"_s, u"--seconds=3601"_s} << number(u"3601"_s);
    QTest::newRow("one of several")
        << QStringList{u"a"_s, u"--seconds=0"_s, u"--seconds=9"_s} << number(u"0"_s);
    QTest::newRow("several lines")
        << QStringList{u"a"_s, u"b\nc"_s} << u"\"b c\" is one argument too many."_s;
}

void ToolCommandLineTest::wrongUseIsOneSentenceAndStatusTwo() {
    QFETCH(QStringList, arguments);
    QFETCH(QString, sentence);
    Tool tool;
    QCOMPARE(tool.read(arguments), std::optional<int>(tool::WrongUse));
    QCOMPARE(QString::fromUtf8(tool.errors.data()), u"lumeno-test: "_s + sentence + u'\n');
    QCOMPARE(tool.output.data(), QByteArray());
}

void ToolCommandLineTest::aToolsOwnRefusalIsWrongUseToo() {
    Tool tool;
    QCOMPARE(tool.line.refuse(u"One of both, please."_s), tool::WrongUse);
    QCOMPARE(tool.errors.data(), QByteArray("lumeno-test: One of both, please.\n"));
}

QTEST_GUILESS_MAIN(ToolCommandLineTest)
#include "tool_command_line_test.moc"
