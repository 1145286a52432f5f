#include "common/console.h"

#include <QBuffer>
#include <QTest>

#include <chrono>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using tool::Console;

class ConsoleTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void linesGoToTheirStreams();
    void controlCharactersBecomeBlanks();
    void aTerminalsProgressIsRewritten();
    void aTerminalsProgressIsCutBeforeTheLastColumn();
    void whatFollowsProgressOnATerminalBeginsALine();
    void plainProgressIsAtMostOneLineASecond();
    void theNewestPlainProgressIsWrittenAtTheEnd();
    void theEndOfTheConsoleEndsTheProgress();

private:
    QByteArray output() const { return outputBuffer->data(); }
    QByteArray errors() const { return errorsBuffer->data(); }
    Console onTerminal() { return {u"tool"_s, *outputBuffer, *errorsBuffer, 20}; }
    Console inPipe() { return {u"tool"_s, *outputBuffer, *errorsBuffer}; }

    std::unique_ptr<QBuffer> outputBuffer;
    std::unique_ptr<QBuffer> errorsBuffer;
};

namespace {

constexpr Console::Clock::time_point start{100h};

} // namespace

void ConsoleTest::init() {
    outputBuffer = std::make_unique<QBuffer>();
    errorsBuffer = std::make_unique<QBuffer>();
    outputBuffer->open(QIODevice::WriteOnly);
    errorsBuffer->open(QIODevice::WriteOnly);
}

void ConsoleTest::linesGoToTheirStreams() {
    Console console = inPipe();
    console.say(u"found"_s);
    console.sayText(u"one\ntwo\n"_s);
    console.complain(u"It failed."_s);
    QCOMPARE(output(), QByteArray("found\none\ntwo\n"));
    QCOMPARE(errors(), QByteArray("tool: It failed.\n"));
}

void ConsoleTest::controlCharactersBecomeBlanks() {
    Console console = inPipe();
    console.say(u"a\nb\x1b[2Jc"_s);
    console.complain(u"d\re"_s);
    console.progress(u"f\tg"_s, start);
    QCOMPARE(output(), QByteArray("a b [2Jc\n"));
    QCOMPARE(errors(), QByteArray("tool: d e\nf g\n"));
}

void ConsoleTest::aTerminalsProgressIsRewritten() {
    Console console = onTerminal();
    console.progress(u"1 of 3"_s, start);
    console.progress(u"2 of 3"_s, start + 1ms);
    QCOMPARE(errors(), QByteArray("\r\033[K1 of 3\r\033[K2 of 3"));
    console.endProgress();
    console.endProgress();
    QCOMPARE(errors(), QByteArray("\r\033[K1 of 3\r\033[K2 of 3\n"));
}

void ConsoleTest::aTerminalsProgressIsCutBeforeTheLastColumn() {
    Console console = onTerminal();
    console.progress(u"123456789012345678901234567890"_s, start);
    QCOMPARE(errors(), QByteArray("\r\033[K1234567890123456789"));
}

void ConsoleTest::whatFollowsProgressOnATerminalBeginsALine() {
    Console console = onTerminal();
    console.progress(u"1 of 3"_s, start);
    console.complain(u"It failed."_s);
    console.progress(u"2 of 3"_s, start);
    console.say(u"done"_s);
    QCOMPARE(errors(), QByteArray("\r\033[K1 of 3\ntool: It failed.\n\r\033[K2 of 3\n"));
    QCOMPARE(output(), QByteArray("done\n"));
}

void ConsoleTest::plainProgressIsAtMostOneLineASecond() {
    Console console = inPipe();
    for (int step = 0; step <= 25; ++step)
        console.progress(QString::number(step), start + step * 100ms);
    QCOMPARE(errors(), QByteArray("0\n10\n20\n"));
}

void ConsoleTest::theNewestPlainProgressIsWrittenAtTheEnd() {
    Console console = inPipe();
    console.progress(u"1"_s, start);
    console.progress(u"2"_s, start + 1ms);
    console.progress(u"3"_s, start + 2ms);
    console.endProgress();
    console.endProgress();
    QCOMPARE(errors(), QByteArray("1\n3\n"));
}

void ConsoleTest::theEndOfTheConsoleEndsTheProgress() {
    {
        Console console = onTerminal();
        console.progress(u"1"_s, start);
    }
    QCOMPARE(errors(), QByteArray("\r\033[K1\n"));
}

QTEST_APPLESS_MAIN(ConsoleTest)
#include "console_test.moc"
