#include "log.h"

#include <QTest>

#include <iostream>
#include <sstream>

using libfreenect2::Logger;

class LoggerTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theLevelComesFromTheEnvironment_data();
    void theLevelComesFromTheEnvironment();
    void theConsoleLoggerWritesWholeLinesUpToItsLevel_data();
    void theConsoleLoggerWritesWholeLinesUpToItsLevel();
    void withoutALoggerNothingIsWritten();
};

namespace {

/// What is written to a stream while it lives.
class StreamText {
public:
    explicit StreamText(std::ostream& watched)
        : stream(watched), before(stream.rdbuf(text.rdbuf())) {}
    ~StreamText() { stream.rdbuf(before); }
    StreamText(const StreamText&) = delete;
    StreamText& operator=(const StreamText&) = delete;

    QByteArray written() const { return QByteArray::fromStdString(text.str()); }

private:
    std::ostringstream text;
    std::ostream& stream;
    std::streambuf* before;
};

} // namespace

void LoggerTest::theLevelComesFromTheEnvironment_data() {
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<int>("expected");
    QTest::newRow("unset") << QByteArray() << int{Logger::Info};
    QTest::newRow("none") << QByteArray("none") << int{Logger::None};
    QTest::newRow("any case") << QByteArray("eRRor") << int{Logger::Error};
    QTest::newRow("warning") << QByteArray("Warning") << int{Logger::Warning};
    QTest::newRow("debug") << QByteArray("DEBUG") << int{Logger::Debug};
    QTest::newRow("no level") << QByteArray("loud") << int{Logger::Info};
}

void LoggerTest::theLevelComesFromTheEnvironment() {
    QFETCH(QByteArray, name);
    QFETCH(int, expected);
    if (name.isEmpty())
        qunsetenv("LIBFREENECT2_LOGGER_LEVEL");
    else
        qputenv("LIBFREENECT2_LOGGER_LEVEL", name);
    QCOMPARE(int{Logger::getDefaultLevel()}, expected);
    const std::unique_ptr<Logger> logger(libfreenect2::createConsoleLoggerWithDefaultLevel());
    QCOMPARE(int{logger->level()}, expected);
    qunsetenv("LIBFREENECT2_LOGGER_LEVEL");
}

void LoggerTest::theConsoleLoggerWritesWholeLinesUpToItsLevel_data() {
    QTest::addColumn<int>("level");
    QTest::addColumn<QByteArray>("errors");
    QTest::addColumn<QByteArray>("output");
    const QByteArray error = "[Error] [virtual kinect] broken\n";
    const QByteArray warning = "[Warning] [virtual kinect] odd\n";
    const QByteArray info = "[Info] [virtual kinect] found\n";
    const QByteArray debug = "[Debug] [virtual kinect] detail\n";
    QTest::newRow("none") << int{Logger::None} << QByteArray() << QByteArray();
    QTest::newRow("error") << int{Logger::Error} << error << QByteArray();
    QTest::newRow("warning") << int{Logger::Warning} << error + warning << QByteArray();
    QTest::newRow("info") << int{Logger::Info} << error + warning << info;
    QTest::newRow("debug") << int{Logger::Debug} << error + warning << info + debug;
}

void LoggerTest::theConsoleLoggerWritesWholeLinesUpToItsLevel() {
    QFETCH(int, level);
    QFETCH(QByteArray, errors);
    QFETCH(QByteArray, output);
    libfreenect2::setGlobalLogger(
        libfreenect2::createConsoleLogger(static_cast<Logger::Level>(level)));
    const StreamText toError(std::cerr), toOutput(std::cout);
    virtual_kinect::log(Logger::Error, "broken");
    virtual_kinect::log(Logger::Warning, "odd");
    virtual_kinect::log(Logger::Info, "found");
    virtual_kinect::log(Logger::Debug, "detail");
    QCOMPARE(toError.written(), errors);
    QCOMPARE(toOutput.written(), output);
}

void LoggerTest::withoutALoggerNothingIsWritten() {
    libfreenect2::setGlobalLogger(nullptr);
    QCOMPARE(libfreenect2::getGlobalLogger(), nullptr);
    const StreamText toError(std::cerr), toOutput(std::cout);
    virtual_kinect::log(Logger::Error, "broken");
    virtual_kinect::log(Logger::Info, "found");
    QCOMPARE(toError.written(), QByteArray());
    QCOMPARE(toOutput.written(), QByteArray());
}

QTEST_GUILESS_MAIN(LoggerTest)
#include "logger_test.moc"
