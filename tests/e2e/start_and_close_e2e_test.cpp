#include "e2e/program_under_test.h"
#include "support/temporary_place.h"

#include <QElapsedTimer>

using namespace Qt::StringLiterals;

/// The executable from its start to its exit status, by the ways a person has to end it.
class StartAndCloseTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void autoQuitClosesTheWindowAfterItsTime();
    void autoQuitOfZeroOrLessNeverQuits_data();
    void autoQuitOfZeroOrLessNeverQuits();
};

void StartAndCloseTest::autoQuitClosesTheWindowAfterItsTime() {
    const TemporaryPlace place;
    ProgramUnderTest program;
    QElapsedTimer timer;
    timer.start();
    QVERIFY(program.start({u"--auto-quit-ms"_s, u"1500"_s}));
    QCOMPARE(program.waitForExit(), 0);
    QVERIFY2(timer.elapsed() >= 1500, qPrintable(QString::number(timer.elapsed())));
}

void StartAndCloseTest::autoQuitOfZeroOrLessNeverQuits_data() {
    QTest::addColumn<QString>("value");
    QTest::newRow("zero") << u"0"_s;
    QTest::newRow("negative") << u"-5"_s;
}

void StartAndCloseTest::autoQuitOfZeroOrLessNeverQuits() {
    QFETCH(QString, value);
    const TemporaryPlace place;
    ProgramUnderTest program;
    QVERIFY(program.start({u"--auto-quit-ms"_s, value}));
    QTest::qWait(1000);
    QVERIFY(program.running());
}

int main(int argc, char** argv) {
    return runOnVirtualDisplay<StartAndCloseTest>(argc, argv, QSize(1280, 800));
}
#include "start_and_close_e2e_test.moc"
