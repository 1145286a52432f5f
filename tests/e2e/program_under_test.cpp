#include "e2e/program_under_test.h"

#include <QDeadlineTimer>
#include <QGuiApplication>
#include <QPixmap>
#include <QScreen>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

constexpr int patienceMs = 20000;
constexpr int stepMs = 20;

} // namespace

bool VirtualDisplay::start(const QSize& screen) {
    // The server picks a free display number and writes it to its standard output once it is ready.
    server.setProcessChannelMode(QProcess::SeparateChannels);
    server.setStandardErrorFile(QProcess::nullDevice());
    server.start(u"Xvfb"_s, {u"-displayfd"_s, u"1"_s, u"-screen"_s, u"0"_s,
                             u"%1x%2x24"_s.arg(screen.width()).arg(screen.height()), u"-nolisten"_s,
                             u"tcp"_s});
    QByteArray number;
    const QDeadlineTimer deadline(patienceMs);
    while (!number.endsWith('\n') && !deadline.hasExpired()) {
        if (!server.waitForReadyRead(stepMs) && server.state() == QProcess::NotRunning)
            break;
        number += server.readAllStandardOutput();
    }
    if (!number.endsWith('\n')) {
        qCritical("Xvfb did not start; is the package xvfb installed?");
        return false;
    }
    displayName = u':' + QString::fromLatin1(number.trimmed());
    return true;
}

VirtualDisplay::~VirtualDisplay() {
    server.kill();
    server.waitForFinished(patienceMs);
}

ProgramUnderTest::ProgramUnderTest() : environment(QProcessEnvironment::systemEnvironment()) {
    environment.remove(u"LUMENO_VIRTUAL_KINECT"_s);
    environment.remove(u"LUMENO_VIRTUAL_KINECT_FAULTS"_s);
    process.setStandardOutputFile(QProcess::nullDevice());
}

ProgramUnderTest::~ProgramUnderTest() {
    if (running()) {
        process.kill();
        process.waitForFinished(patienceMs);
    }
}

void ProgramUnderTest::setEnvironment(const QString& name, const QString& value) {
    environment.insert(name, value);
}

void ProgramUnderTest::setWorkingFolder(const QString& folder) {
    process.setWorkingDirectory(folder);
}

bool ProgramUnderTest::start(const QStringList& switches) {
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(LUMENO_PROGRAM), switches);
    if (!process.waitForStarted(patienceMs))
        return false;
    const QDeadlineTimer deadline(patienceMs);
    const QStringList search{u"search"_s, u"--onlyvisible"_s,
                             u"--pid"_s,  QString::number(process.processId()),
                             u"--name"_s, u"^Lumeno Control Center$"_s};
    while (!deadline.hasExpired() && running()) {
        QString found;
        if (xdotool(search, &found) && !found.trimmed().isEmpty()) {
            window = found.trimmed().section(u'\n', 0, 0);
            return xdotool({u"windowfocus"_s, u"--sync"_s, window});
        }
        QTest::qWait(stepMs);
    }
    return false;
}

bool ProgramUnderTest::waitForLog(const QString& text, int timeoutMs) {
    return QTest::qWaitFor([&] { return log().contains(text); }, timeoutMs);
}

QString ProgramUnderTest::log() {
    readLog();
    return QString::fromUtf8(logBytes);
}

QStringList ProgramUnderTest::logLinesWith(const QString& text) {
    return log().split(u'\n').filter(text);
}

bool ProgramUnderTest::press(const QString& key) {
    // To whatever has the focus, which is the window: named, it could be gone before the key is
    // released, and the keyboard would hold the key down for the next program.
    return xdotool({u"key"_s, key});
}

bool ProgramUnderTest::resize(const QSize& size) {
    return xdotool({u"windowmove"_s, window, u"0"_s, u"0"_s}) &&
           xdotool({u"windowsize"_s, u"--sync"_s, window, QString::number(size.width()),
                    QString::number(size.height())});
}

QImage ProgramUnderTest::screenshot() {
    return QGuiApplication::primaryScreen()->grabWindow(0).toImage();
}

bool ProgramUnderTest::running() const {
    return process.state() != QProcess::NotRunning;
}

int ProgramUnderTest::waitForExit(int timeoutMs) {
    if (running() && !process.waitForFinished(timeoutMs))
        return -1;
    readLog();
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

bool ProgramUnderTest::xdotool(const QStringList& arguments, QString* output) {
    QProcess tool;
    tool.start(u"xdotool"_s, arguments);
    if (!tool.waitForFinished(patienceMs))
        return false;
    if (output)
        *output = QString::fromUtf8(tool.readAllStandardOutput());
    return tool.exitStatus() == QProcess::NormalExit && tool.exitCode() == 0;
}

void ProgramUnderTest::readLog() {
    logBytes += process.readAllStandardError();
}
