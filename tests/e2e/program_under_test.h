#pragma once

#include <QByteArray>
#include <QGuiApplication>
#include <QImage>
#include <QProcess>
#include <QProcessEnvironment>
#include <QSize>
#include <QString>
#include <QStringList>
#include <QTest>

#include <cstdlib>

/// An X server without hardware, for as long as the object lives.
class VirtualDisplay {
public:
    /// Starts the server with one screen of that size. False, with a line in the log, where Xvfb is
    /// missing or does not come up within 20 s.
    bool start(const QSize& screen);
    ~VirtualDisplay();

    /// ":7" and the like, for DISPLAY.
    QString name() const { return displayName; }

private:
    QProcess server;
    QString displayName;
};

/// The real executable as a person runs it: a window on the display that DISPLAY names, a home and
/// a working folder of the caller's choice, its log read as it comes.
class ProgramUnderTest {
public:
    ProgramUnderTest();
    ~ProgramUnderTest();
    ProgramUnderTest(const ProgramUnderTest&) = delete;
    ProgramUnderTest& operator=(const ProgramUnderTest&) = delete;

    void setEnvironment(const QString& name, const QString& value);
    void setWorkingFolder(const QString& folder);

    /// Starts it and waits until its window is on the screen. False if it ended or took over 20 s.
    bool start(const QStringList& switches = {});

    /// Waits until the log holds `text`, at most that long.
    bool waitForLog(const QString& text, int timeoutMs = 20000);
    /// Everything it wrote to its log so far.
    QString log();
    QStringList logLinesWith(const QString& text);

    /// Presses a key of the X keyboard, for example "4" or "Escape", in its window.
    bool press(const QString& key);
    /// Moves the window's top left corner to the screen's and gives it that size.
    bool resize(const QSize& size);
    /// What is on the whole screen now.
    static QImage screenshot();

    bool running() const;
    /// Waits for its end and tells the exit status; -1 when it crashed or did not end in time.
    int waitForExit(int timeoutMs = 20000);
    qint64 processId() const { return process.processId(); }

private:
    bool xdotool(const QStringList& arguments, QString* output = nullptr);
    void readLog();

    QProcess process;
    QProcessEnvironment environment;
    QByteArray logBytes;
    QString window;
};

/// The main of an e2e test: starts a display with one screen of that size, connects the application
/// object to it, and runs the tests.
template <typename Test>
int runOnVirtualDisplay(int argc, char** argv, const QSize& screen) {
    VirtualDisplay display;
    if (!display.start(screen))
        return EXIT_FAILURE;
    qputenv("DISPLAY", display.name().toLocal8Bit());
    qputenv("QT_QPA_PLATFORM", "xcb");
    const QGuiApplication application(argc, argv);
    Test test;
    return QTest::qExec(&test, argc, argv);
}
