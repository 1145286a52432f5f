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

/// What is written to standard error while it lives.
class ErrorText {
public:
    ErrorText() : before(std::cerr.rdbuf(text.rdbuf())) {}
    ~ErrorText() { std::cerr.rdbuf(before); }
    ErrorText(const ErrorText&) = delete;
    ErrorText& operator=(const ErrorText&) = delete;

    std::string written() const { return text.str(); }

private:
    std::ostringstream text;
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
    QTest::addColumn<QByteArray>("expected");
    const QByteArray error = "[Error] [virtual kinect] broken\n";
    const QByteArray info = "[Info] [virtual kinect] found\n";
    QTest::newRow("none") << int{Logger::None} << QByteArray();
    QTest::newRow("error") << int{Logger::Error} << error;
    QTest::newRow("warning") << int{Logger::Warning} << error;
    QTest::newRow("info") << int{Logger::Info} << error + info;
    QTest::newRow("debug") << int{Logger::Debug} << error + info;
}

void LoggerTest::theConsoleLoggerWritesWholeLinesUpToItsLevel() {
    QFETCH(int, level);
    QFETCH(QByteArray, expected);
    libfreenect2::setGlobalLogger(
        libfreenect2::createConsoleLogger(static_cast<Logger::Level>(level)));
    const ErrorText errors;
    virtual_kinect::log(Logger::Error, "broken");
    virtual_kinect::log(Logger::Info, "found");
    QCOMPARE(QByteArray::fromStdString(errors.written()), expected);
}

void LoggerTest::withoutALoggerNothingIsWritten() {
    libfreenect2::setGlobalLogger(nullptr);
    QCOMPARE(libfreenect2::getGlobalLogger(), nullptr);
    const ErrorText errors;
    virtual_kinect::log(Logger::Error, "broken");
    QCOMPARE(errors.written(), std::string());
}

QTEST_GUILESS_MAIN(LoggerTest)
#include "logger_test.moc"
