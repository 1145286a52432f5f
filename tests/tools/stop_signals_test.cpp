#include "common/stop_signals.h"

#include <QCoreApplication>
#include <QSignalSpy>
#include <QTest>

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

using tool::StopSignals;

class StopSignalsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void eachSignalBecomesAnEvent_data();
    void eachSignalBecomesAnEvent();
    void withoutASignalNothingIsRequested();
    void twoSignalsAreOneEvent();
    void aSecondCtrlCEndsTheProcess();
    void anIgnoredEndOfTheTerminalStaysIgnored();
    void aClosedPipeDoesNotEndTheProcess();
    void whatWasBeforeComesBack();
};

namespace {

/// Runs `work` in a child process and returns how that ended, as waitpid() tells it.
template <typename Work>
int statusOfChild(const Work& work) {
    const pid_t child = fork();
    if (child == 0) {
        work();
        _exit(0);
    }
    int status = 0;
    return waitpid(child, &status, 0) == child ? status : -1;
}

} // namespace

void StopSignalsTest::eachSignalBecomesAnEvent_data() {
    QTest::addColumn<int>("number");
    QTest::newRow("Ctrl-C") << SIGINT;
    QTest::newRow("kill") << SIGTERM;
    QTest::newRow("closed terminal") << SIGHUP;
}

void StopSignalsTest::eachSignalBecomesAnEvent() {
    QFETCH(int, number);
    StopSignals signals;
    QSignalSpy spy(&signals, &StopSignals::stopRequested);
    std::raise(number);
    QVERIFY(StopSignals::requested());
    QCOMPARE(spy.count(), 0); // not on the interrupted thread's stack
    QTRY_COMPARE(spy.count(), 1);
}

void StopSignalsTest::withoutASignalNothingIsRequested() {
    StopSignals signals;
    QSignalSpy spy(&signals, &StopSignals::stopRequested);
    QCoreApplication::processEvents();
    QVERIFY(!StopSignals::requested());
    QCOMPARE(spy.count(), 0);
}

void StopSignalsTest::twoSignalsAreOneEvent() {
    StopSignals signals;
    QSignalSpy spy(&signals, &StopSignals::stopRequested);
    std::raise(SIGINT);
    QTRY_COMPARE(spy.count(), 1);
    std::raise(SIGTERM);
    QCoreApplication::processEvents();
    QCOMPARE(spy.count(), 1);
}

void StopSignalsTest::aSecondCtrlCEndsTheProcess() {
    const int status = statusOfChild([] {
        StopSignals signals;
        std::raise(SIGINT);
        std::raise(SIGINT);
    });
    QVERIFY(WIFSIGNALED(status));
    QCOMPARE(WTERMSIG(status), SIGINT);
}

void StopSignalsTest::anIgnoredEndOfTheTerminalStaysIgnored() {
    const int status = statusOfChild([] {
        std::signal(SIGHUP, SIG_IGN);
        StopSignals signals;
        std::raise(SIGHUP);
        _exit(StopSignals::requested() ? 1 : 7);
    });
    QVERIFY(WIFEXITED(status));
    QCOMPARE(WEXITSTATUS(status), 7);
}

void StopSignalsTest::aClosedPipeDoesNotEndTheProcess() {
    const int status = statusOfChild([] {
        StopSignals signals;
        int ends[2];
        if (pipe(ends) != 0)
            _exit(1);
        close(ends[0]);
        _exit(write(ends[1], "x", 1) == -1 && !StopSignals::requested() ? 7 : 1);
    });
    QVERIFY(WIFEXITED(status));
    QCOMPARE(WEXITSTATUS(status), 7);
}

void StopSignalsTest::whatWasBeforeComesBack() {
    const int status = statusOfChild([] {
        std::signal(SIGTERM, [](int) { _exit(7); });
        { StopSignals signals; }
        std::raise(SIGTERM);
    });
    QVERIFY(WIFEXITED(status));
    QCOMPARE(WEXITSTATUS(status), 7);
}

QTEST_GUILESS_MAIN(StopSignalsTest)
#include "stop_signals_test.moc"
