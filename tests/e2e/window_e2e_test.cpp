#include "e2e/program_under_test.h"
#include "support/temporary_place.h"
#include "virtual_kinect/recording_folder.h"

#include <QElapsedTimer>

using namespace Qt::StringLiterals;

namespace {

const QColor checkedButton(0x12, 0x3a, 0x4b);
constexpr QSize compactWindow(1000, 780);
constexpr QSize normalWindow(1240, 780);

/// Row and column of the view button that is painted as the checked one in a window of this width
/// at the screen's top left: row * 4 + column; -1 where there is none.
int checkedButtonAt(const QImage& screen, int windowWidth) {
    for (int index = 0; index < 7; ++index) {
        // A little inside the button's left edge, where no text is.
        const int x = 14 + (windowWidth - 28) * (index % 4) / 4 + 12;
        for (int y = 60 + 36 * (index / 4); y < 96 + 36 * (index / 4); ++y) {
            if (screen.pixelColor(x, y) == checkedButton)
                return index;
        }
    }
    return -1;
}

} // namespace

/// The window as a person sees and uses it.
class WindowE2eTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void keysSelectViews_data();
    void keysSelectViews();
    void quitKeysEndTheProgram_data();
    void quitKeysEndTheProgram();
    void closingWhileTheSensorHangsEndsTheProgramInTime();
};

void WindowE2eTest::keysSelectViews_data() {
    QTest::addColumn<QSize>("window");
    QTest::newRow("normal") << normalWindow;
    QTest::newRow("compact") << compactWindow;
}

void WindowE2eTest::keysSelectViews() {
    QFETCH(QSize, window);
    const TemporaryPlace place;
    ProgramUnderTest program;
    QVERIFY(program.start({u"--mock"_s}));
    QVERIFY(program.resize(window));
    for (int index = 0; index < 7; ++index) {
        QVERIFY(program.press(QString::number(index + 1)));
        QTRY_COMPARE(checkedButtonAt(ProgramUnderTest::screenshot(), window.width()), index);
    }
}

void WindowE2eTest::quitKeysEndTheProgram_data() {
    QTest::addColumn<QString>("key");
    QTest::newRow("q") << u"q"_s;
    QTest::newRow("Escape") << u"Escape"_s;
}

void WindowE2eTest::quitKeysEndTheProgram() {
    QFETCH(QString, key);
    const TemporaryPlace place;
    ProgramUnderTest program;
    QVERIFY(program.start());
    QVERIFY(program.press(key));
    QCOMPARE(program.waitForExit(), 0);
    QVERIFY2(!program.log().contains(u"QThread"_s), qPrintable(program.log()));
}

void WindowE2eTest::closingWhileTheSensorHangsEndsTheProgramInTime() {
    const TemporaryPlace place;
    ProgramUnderTest program;
    const RecordingFolder recording;
    program.setEnvironment(u"LUMENO_VIRTUAL_KINECT"_s, recording.path());
    program.setEnvironment(u"LUMENO_VIRTUAL_KINECT_FAULTS"_s, u"slow-stop=30000"_s);
    QVERIFY(program.start());
    QVERIFY(program.waitForLog(u"Qt follow display:"_s)); // Frames come.
    QElapsedTimer closing;
    closing.start();
    QVERIFY(program.press(u"Escape"_s));
    QCOMPARE(program.waitForExit(), 0);
    QVERIFY2(closing.elapsed() < 15000, qPrintable(QString::number(closing.elapsed())));
    QVERIFY2(!program.log().contains(u"QThread: Destroyed"_s), qPrintable(program.log()));
}

int main(int argc, char** argv) {
    return runOnVirtualDisplay<WindowE2eTest>(argc, argv, QSize(1280, 800));
}
#include "window_e2e_test.moc"
