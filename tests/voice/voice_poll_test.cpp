#include "ui/main_window.h"
#include "ui/stream_image_widget.h"

#include "support/log_capture.h"
#include "support/processor_time.h"
#include "support/temporary_place.h"

#include <QDir>
#include <QFile>
#include <QLabel>
#include <QTest>

#include <algorithm>
#include <limits>
#include <unistd.h>

using namespace Qt::StringLiterals;

/// The window's own poll of the voice service's files, in a home folder of the test's own.
class VoicePollTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void theFirstReadingIsThereBeforeTheWindowIsShown();
    void aReadingAppearsWithinASecondOrTwo();
    void everyPollWritesOneLine();
    void everyPollEndsWithAnAwarenessPass();
    void inversionShowsInTextAndLogLine();
    void textsOfTheServiceAreNoMarkUp();
    void aRunawayTextLeavesTheViewsTheirPlace();
    void aRunawayTextCostsLittleMoreThanAShortOne();

private:
    static std::unique_ptr<MainWindow> makeWindow(bool inverted = false);
    static QString voiceLine(const MainWindow& window);
    void writeFiles(const QByteArray& more) const;

    std::unique_ptr<TemporaryPlace> place;
};

namespace {

const QString prefix = u"Qt Auralis direction:"_s;

} // namespace

void VoicePollTest::init() {
    place = std::make_unique<TemporaryPlace>();
}

void VoicePollTest::cleanup() {
    place.reset();
}

std::unique_ptr<MainWindow> VoicePollTest::makeWindow(bool inverted) {
    return std::make_unique<MainWindow>(false, true, true, true, 5000, inverted);
}

/// The text of the one label that speaks of the service.
QString VoicePollTest::voiceLine(const MainWindow& window) {
    for (const QLabel* label : window.findChildren<QLabel*>(u"muted"_s)) {
        if (label->text().startsWith(u"Auralis: "_s))
            return label->text();
    }
    return {};
}

/// A living service (this process) and an event of just now.
void VoicePollTest::writeFiles(const QByteArray& more) const {
    const QString folder = place->home() + u"/.local/state/lumeno"_s;
    QVERIFY(QDir().mkpath(folder));
    QFile pid(folder + u"/auralis-live.pid"_s);
    QVERIFY(pid.open(QIODevice::WriteOnly));
    pid.write(QByteArray::number(getpid()) + "\n");
    QFile event(folder + u"/auralis-live-event.json"_s);
    QVERIFY(event.open(QIODevice::WriteOnly));
    event.write(R"({"direction_angle_degrees": 31.6, "direction_confidence": 0.5, )" + more + "}");
}

void VoicePollTest::theFirstReadingIsThereBeforeTheWindowIsShown() {
    const LogCapture log;
    const auto window = makeWindow();
    QCOMPARE(log.linesStartingWith(prefix).size(), 1);
    QVERIFY(voiceLine(*window).startsWith(
        u"Auralis: stopped/stale | direction unavailable | Auralis live event JSON not found"_s));
}

void VoicePollTest::aReadingAppearsWithinASecondOrTwo() {
    const LogCapture log;
    const auto window = makeWindow();
    writeFiles(R"("status": "running")");
    QTRY_VERIFY(voiceLine(*window).startsWith(
        u"Auralis: running/fresh | angle 32° | confidence 0.50 | low confidence false"_s));
    QVERIFY(QDir(place->home() + u"/.local"_s).removeRecursively());
    QTRY_VERIFY(voiceLine(*window).startsWith(u"Auralis: stopped/stale | direction unavail"_s));
}

void VoicePollTest::everyPollWritesOneLine() {
    const LogCapture log;
    writeFiles(R"("status": "running")");
    const auto window = makeWindow();
    window->pollAuralisStatus();
    const QString source = place->home() + u"/.local/state/lumeno/auralis-live-event.json"_s;
    const QString line =
        u"Qt Auralis direction: running fresh angle 31.6 confidence 0.5 low false "
        "source \"%1\" mapping normal reason \"live Auralis event JSON\""_s.arg(source);
    QCOMPARE(log.linesStartingWith(prefix), QStringList({line, line}));
}

void VoicePollTest::everyPollEndsWithAnAwarenessPass() {
    const LogCapture log;
    const auto window = makeWindow();
    window->resize(1440, 810);
    window->setView(u"rgb"_s);
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window.get()));
    StreamImageWidget* tile = window->streamLabel(u"rgb"_s);
    QImage image(640, 480, QImage::Format_RGB888);
    image.fill(Qt::gray);
    window->onFramesReady(image, {}, {});
    FaceOverlay somebody;
    somebody.rect = QRect(440, 60, 60, 60); // where the event below hears a voice
    somebody.color = Qt::green;
    somebody.label = u"Unknown"_s;
    window->onFaceOverlaysReady({somebody});
    // Far from the lights and the voice text at the foot.
    const auto upperHalf = [tile] {
        return tile->grab(QRect(0, 0, tile->width(), tile->height() / 2)).toImage();
    };
    const QImage before = upperHalf();
    QCOMPARE(upperHalf(), before);
    writeFiles(R"("status": "running")");
    window->pollAuralisStatus();
    QVERIFY2(upperHalf() != before, "the caption says who may be speaking");
}

void VoicePollTest::inversionShowsInTextAndLogLine() {
    const LogCapture log;
    writeFiles(R"("status": "running")");
    const auto window = makeWindow(true);
    QVERIFY(voiceLine(*window).contains(u" | angle 32° | "_s));
    QVERIFY(voiceLine(*window).endsWith(
        u" | audio direction mapping: inverted | audio_direction_inverted=true"
        " | attention only, no trust granted"_s));
    QVERIFY(log.linesStartingWith(prefix).constFirst().contains(u" mapping inverted "_s));
}

void VoicePollTest::textsOfTheServiceAreNoMarkUp() {
    const LogCapture log;
    writeFiles(R"("error": "<h1>%1</h1><img src='x'>", "status": "stopped")");
    const auto window = makeWindow();
    QVERIFY(voiceLine(*window).contains(u"<h1>%1</h1><img src='x'>"_s));
    for (const QLabel* label : window->findChildren<QLabel*>(u"muted"_s)) {
        if (label->wordWrap())
            QCOMPARE(label->textFormat(), Qt::PlainText);
    }
}

void VoicePollTest::aRunawayTextLeavesTheViewsTheirPlace() {
    const LogCapture log;
    writeFiles(R"("error": ")" + QByteArray("lost it again\n").repeated(60'000) + '"');
    const auto window = makeWindow();
    window->resize(1280, 900);
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window.get()));
    QVERIFY(voiceLine(*window).size() > 800'000);
    QCOMPARE(window->size(), QSize(1280, 900));
    QVERIFY(window->streamLabel(u"combo_rgb"_s)->height() > 200);
}

/// A long and a short text in turn, each up to the painted window. What counts is this thread's own
/// processor time, whatever else the machine does.
void VoicePollTest::aRunawayTextCostsLittleMoreThanAShortOne() {
    auto log = std::make_unique<LogCapture>();
    const auto window = makeWindow();
    window->resize(1920, 1080);
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window.get()));
    const auto paintedNs = [&](const auto& change) {
        const qint64 start = processorNs();
        change();
        QCoreApplication::processEvents();
        window->repaint();
        return processorNs() - start;
    };
    const auto statusNs = [&](const QString& text) {
        return paintedNs([&] { window->onStreamStatus(text); });
    };
    const auto pollNs = [&](const QByteArray& error) {
        writeFiles(R"("error": ")" + error + '"');
        return paintedNs([&] { window->pollAuralisStatus(); });
    };
    constexpr qint64 none = std::numeric_limits<qint64>::max();
    qint64 shortStatus = none, longStatus = none, shortPoll = none, longPoll = none;
    for (int round = 0; round < 15; ++round) { // a new text each time
        const QByteArray words = QByteArray::number(round) + " lost it again. ";
        const QByteArray megabyte = words.repeated(1024 * 1024 / words.size() - 10);
        shortStatus = std::min(shortStatus, statusNs(QString::fromUtf8(words)));
        longStatus = std::min(longStatus, statusNs(QString::fromUtf8(megabyte)));
        shortPoll = std::min(shortPoll, pollNs(words));
        longPoll = std::min(longPoll, pollNs(megabyte));
    }
    QVERIFY(voiceLine(*window).size() > 1'000'000);
    log.reset();
    const auto times = [](qint64 longNs, qint64 shortNs) {
        return double(longNs) / double(shortNs);
    };
    qInfo("shown: %.1f times, polled: %.1f times", times(longStatus, shortStatus),
          times(longPoll, shortPoll));
    QVERIFY2(longStatus <= 3 * shortStatus, "what is shown is bounded");
    QVERIFY2(longPoll <= 3 * shortPoll,
             "searches and the line of the log go over it at full speed");
}

QTEST_MAIN(VoicePollTest)
#include "voice_poll_test.moc"
