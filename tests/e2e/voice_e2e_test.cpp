#include "e2e/program_under_test.h"
#include "support/temporary_place.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTimer>

#include <unistd.h>

using namespace Qt::StringLiterals;

/// The voice service's files in a home folder of the test's own, and what a person sees of them
/// over the live picture of the virtual room.
class VoiceE2eTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void aLiveReadingLightsTheLightOfItsSide_data();
    void aLiveReadingLightsTheLightOfItsSide();
    void aStaleReadingIsToldByItsAgeAndLightsNothing();
    void withoutFilesTheProgramSaysSo();
    void aReadingThatGoesStaleLosesItsLight();

private:
    bool startWithPicture(const QStringList& switches = {});
    void writeEvent(qint64 ageMs = 0) const;
    QString folder() const { return place->home() + u"/.local/state/lumeno"_s; }

    std::unique_ptr<TemporaryPlace> place;
    std::unique_ptr<ProgramUnderTest> program;
};

namespace {

constexpr QSize screenSize(1600, 1000);
constexpr QRgb litColor = qRgb(91, 232, 134); // no other thing has it while nobody is recognised
constexpr QRgb idleColor = qRgb(41, 50, 64);
constexpr int lightSpacing = 29;

QRect boxOf(const QImage& screen, QRgb color, const QRect& area) {
    QRect box;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(screen.constScanLine(y));
        for (int x = area.left(); x <= area.right(); ++x) {
            if (line[x] == color)
                box |= QRect(x, y, 1, 1);
        }
    }
    return box;
}

/// The number of the one light that is on, counted from 0 at the left; -1 when none is on, and -2
/// when what is green is no light.
int litLight() {
    const QImage screen = ProgramUnderTest::screenshot().convertToFormat(QImage::Format_RGB32);
    const QRect lit = boxOf(screen, litColor, screen.rect());
    if (lit.isNull())
        return -1;
    const QRect row(lit.left() - 6 * lightSpacing, lit.top(), 12 * lightSpacing, lit.height());
    const QRect idle = boxOf(screen, idleColor, row & screen.rect());
    if (lit.width() > 22 || lit.height() > 8 || idle.isNull())
        return -2;
    return qRound(double(lit.left() - (lit | idle).left()) / lightSpacing);
}

} // namespace

void VoiceE2eTest::init() {
    place = std::make_unique<TemporaryPlace>();
    QVERIFY(QDir().mkpath(folder()));
    program = std::make_unique<ProgramUnderTest>();
}

void VoiceE2eTest::cleanup() {
    program.reset();
    place.reset();
}

/// Starts the program on the virtual room, in the RGB view, and waits for its picture.
bool VoiceE2eTest::startWithPicture(const QStringList& switches) {
    program->setEnvironment(u"HOME"_s, place->home());
    program->setEnvironment(u"LUMENO_VIRTUAL_KINECT"_s, u"room"_s);
    program->setWorkingFolder(place->work());
    return program->start(switches) && program->resize(screenSize) && program->press(u"1"_s) &&
           program->waitForLog(u"Qt follow display: current_view= \"rgb\""_s, 60000);
}

/// An event of a service that lives (it is this process), written aside and renamed.
void VoiceE2eTest::writeEvent(qint64 ageMs) const {
    QFile pid(folder() + u"/auralis-live.pid"_s);
    QVERIFY(pid.open(QIODevice::WriteOnly));
    pid.write(QByteArray::number(getpid()) + "\n");
    const QString aside = folder() + u"/event.new"_s;
    QFile event(aside);
    QVERIFY(event.open(QIODevice::WriteOnly));
    event.write(R"({"status": "running", "live_processing": true, "direction_angle_degrees": 31.6,
        "direction_confidence": 0.82, "direction_low_confidence": false, "error": ""})");
    event.flush();
    event.setFileTime(QDateTime::currentDateTime().addMSecs(-ageMs),
                      QFileDevice::FileModificationTime);
    event.close();
    const QString name = folder() + u"/auralis-live-event.json"_s;
    QCOMPARE(::rename(QFile::encodeName(aside).constData(), QFile::encodeName(name).constData()),
             0);
}

void VoiceE2eTest::aLiveReadingLightsTheLightOfItsSide_data() {
    QTest::addColumn<QStringList>("switches");
    QTest::addColumn<QString>("mapping");
    QTest::addColumn<int>("light");
    // 31.6 of -60 to +60 degrees is in the fifth of six parts.
    QTest::newRow("normal") << QStringList{} << u"normal"_s << 4;
    QTest::newRow("inverted") << QStringList{u"--invert-audio-direction"_s} << u"inverted"_s << 1;
}

void VoiceE2eTest::aLiveReadingLightsTheLightOfItsSide() {
    QFETCH(QStringList, switches);
    QFETCH(QString, mapping);
    QFETCH(int, light);
    QTimer service;
    connect(&service, &QTimer::timeout, this, [this] { writeEvent(); });
    service.start(300);
    writeEvent();
    QVERIFY(startWithPicture(switches));
    QVERIFY(program->waitForLog(
        u"Qt Auralis direction: running fresh angle 31.6 confidence 0.82 low false source \"%1\" "
        "mapping %2 reason \"live Auralis event JSON\""_s.arg(
            folder() + u"/auralis-live-event.json"_s, mapping)));
    QTRY_COMPARE_WITH_TIMEOUT(litLight(), light, 20000);
}

void VoiceE2eTest::aStaleReadingIsToldByItsAgeAndLightsNothing() {
    writeEvent(90'000);
    QVERIFY(startWithPicture());
    QVERIFY(program->waitForLog(u"Qt Auralis direction: running stale/unavailable angle 31.6"_s));
    const QStringList lines = program->logLinesWith(u"Qt Auralis direction:"_s);
    QVERIFY2(lines.constLast().contains(u"reason \"stale Auralis event 9"_s),
             qPrintable(lines.constLast()));
    QCOMPARE(litLight(), -1);
}

void VoiceE2eTest::withoutFilesTheProgramSaysSo() {
    QVERIFY(startWithPicture());
    QVERIFY(program->waitForLog(u"Qt Auralis direction: stopped stale/unavailable angle 0 "
                                "confidence 0 low true"_s));
    QVERIFY(program->log().contains(u"reason \"Auralis live event JSON not found\""_s));
    QCOMPARE(litLight(), -1);
}

void VoiceE2eTest::aReadingThatGoesStaleLosesItsLight() {
    QTimer service;
    connect(&service, &QTimer::timeout, this, [this] { writeEvent(); });
    service.start(300);
    writeEvent();
    QVERIFY(startWithPicture());
    QTRY_COMPARE_WITH_TIMEOUT(litLight(), 4, 20000);
    service.stop();
    QTRY_COMPARE_WITH_TIMEOUT(litLight(), -1, 20000);
    QVERIFY(program->waitForLog(u"reason \"stale Auralis event "_s));
    writeEvent();
    QTRY_COMPARE_WITH_TIMEOUT(litLight(), 4, 20000);
}

int main(int argc, char** argv) {
    return runOnVirtualDisplay<VoiceE2eTest>(argc, argv, screenSize);
}
#include "voice_e2e_test.moc"
