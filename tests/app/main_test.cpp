#include "ui/main_window.h"

#include <QApplication>
#include <QTest>

#include <vector>

using namespace Qt::StringLiterals;

/// The program's main(), under another name and with a window that only takes notes.
int programMain(int argc, char** argv);

namespace {

int runProgram(QByteArrayList arguments) {
    arguments.prepend("lumeno-control-center");
    std::vector<char*> argv;
    for (QByteArray& argument : arguments)
        argv.push_back(argument.data());
    argv.push_back(nullptr);
    MainWindow::notes = {};
    return programMain(static_cast<int>(arguments.size()), argv.data());
}

void closeTheWindow() {
    for (QWidget* window : QApplication::topLevelWidgets())
        window->close();
}

} // namespace

/// How main() puts the program together.
class MainTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        MainWindow::constructionMs = 0;
        MainWindow::onceItIsShown = closeTheWindow;
    }

    void recordTypesAreRegisteredBeforeTheWindowIsBuilt(); // first: they stay registered
    void theApplicationHasItsNames();
    void everySwitchReachesItsParameter_data();
    void everySwitchReachesItsParameter();
    void theWindowIsShownAndDestroyed();
    void theStatusIsTheEventLoops();
    void autoQuitCountsFromTheWindowsAppearance();
    void withoutATimeTheProgramGoesOn_data();
    void withoutATimeTheProgramGoesOn();
};

void MainTest::recordTypesAreRegisteredBeforeTheWindowIsBuilt() {
    QVERIFY(!MainWindow::recordTypesKnown());
    runProgram({});
    QVERIFY(MainWindow::notes.recordTypesKnown);
}

void MainTest::theApplicationHasItsNames() {
    runProgram({});
    QCOMPARE(MainWindow::notes.applicationName, u"Lumeno Qt Control Center"_s);
    QCOMPARE(MainWindow::notes.organizationName, u"Velmor"_s);
}

void MainTest::everySwitchReachesItsParameter_data() {
    QTest::addColumn<QByteArrayList>("arguments");
    QTest::addColumn<QList<bool>>("switches"); // in the order of the window's parameters
    QTest::addColumn<int>("personLostMs");
    QTest::newRow("none") << QByteArrayList() << QList<bool>{0, 0, 0, 0, 0} << 5000;
    QTest::newRow("layout debug") << QByteArrayList{"--layout-debug"} << QList<bool>{1, 0, 0, 0, 0}
                                  << 5000;
    QTest::newRow("mock") << QByteArrayList{"--mock"} << QList<bool>{0, 1, 1, 1, 0} << 5000;
    QTest::newRow("demo") << QByteArrayList{"--demo-ui"} << QList<bool>{0, 0, 1, 0, 0} << 5000;
    QTest::newRow("demo lights") << QByteArrayList{"--demo-speaker-lights"}
                                 << QList<bool>{0, 0, 0, 1, 0} << 5000;
    QTest::newRow("inverted") << QByteArrayList{"--invert-audio-direction"}
                              << QList<bool>{0, 0, 0, 0, 1} << 5000;
    QTest::newRow("lost time") << QByteArrayList{"--person-lost-ms", "1234"}
                               << QList<bool>{0, 0, 0, 0, 0} << 1234;
}

void MainTest::everySwitchReachesItsParameter() {
    QFETCH(QByteArrayList, arguments);
    runProgram(arguments);
    const MainWindow::Notes& made = MainWindow::notes;
    QTEST((QList<bool>{made.layoutDebug, made.mockMode, made.demoUi, made.demoSpeakerLights,
                       made.invertAudioDirection}),
          "switches");
    QTEST(made.personLostMs, "personLostMs");
    QVERIFY(!made.parent);
}

void MainTest::theWindowIsShownAndDestroyed() {
    QCOMPARE(runProgram({}), 0);
    QVERIFY(MainWindow::notes.shown);
    QVERIFY(MainWindow::notes.destroyed);
    QVERIFY(!QCoreApplication::instance());
}

void MainTest::theStatusIsTheEventLoops() {
    MainWindow::onceItIsShown = [] { QCoreApplication::exit(7); };
    QCOMPARE(runProgram({}), 7);
}

void MainTest::autoQuitCountsFromTheWindowsAppearance() {
    // Counted from the program's start, the time would be up when the window appears.
    MainWindow::constructionMs = 500;
    bool tooLate = false;
    MainWindow::onceItIsShown = [&tooLate] {
        // Timers end in their order, however busy the machine is.
        QTimer::singleShot(450, [&tooLate] {
            tooLate = !MainWindow::notes.closedAfterMs;
            closeTheWindow();
        });
    };
    QCOMPARE(runProgram({"--auto-quit-ms", "400"}), 0);
    QVERIFY(!tooLate);
    QVERIFY(MainWindow::notes.closedAfterMs.value_or(-1) >= 400);
}

void MainTest::withoutATimeTheProgramGoesOn_data() {
    QTest::addColumn<QByteArrayList>("arguments");
    QTest::newRow("no switch") << QByteArrayList();
    QTest::newRow("zero") << QByteArrayList{"--auto-quit-ms", "0"};
    QTest::newRow("negative") << QByteArrayList{"--auto-quit-ms", "-5"};
    QTest::newRow("no number") << QByteArrayList{"--auto-quit-ms", "soon"};
    QTest::newRow("no value") << QByteArrayList{"--auto-quit-ms"};
}

void MainTest::withoutATimeTheProgramGoesOn() {
    QFETCH(QByteArrayList, arguments);
    bool stillThere = false;
    MainWindow::onceItIsShown = [&stillThere] {
        QTimer::singleShot(100, [&stillThere] {
            stillThere = !MainWindow::notes.closedAfterMs;
            closeTheWindow();
        });
    };
    runProgram(arguments);
    QVERIFY(stillThere);
}

QTEST_APPLESS_MAIN(MainTest)
#include "main_test.moc"
