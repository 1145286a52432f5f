#include "enroll/enroll_window.h"
#include "enroll/sensor_feed.h"
#include "enroll/station_ring.h"
#include "kept_samples.h"
#include "support/log_capture.h"
#include "ui/stream_image_widget.h"

#include <QDateTime>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

using namespace enroll;
using namespace Qt::StringLiterals;

/// The window with real key events; looks come from the test instead of a sensor.
class EnrollWindowTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { window.reset(); }
    void everythingHasAnAccessibleName();
    void thePromptCanBeReadFromTwoMetres();
    void theKeysLeadThroughASitting();
    void returnKeepsToo();
    void escapeLeavesAndKeepsNothing();
    void aBusySensorCanBeTriedAgainByKey();
    void aSilentSensorIsSaid();
    void theRingShowsWhatIsFilled();
    void theStyleSheetIsUnderstood();

private:
    void showFace(unsigned texture);
    QString text(const char* name) const {
        return window->findChild<QLabel*>(QLatin1StringView(name))->text();
    }
    QPushButton* button(const QString& name) const {
        for (QPushButton* candidate : window->findChildren<QPushButton*>())
            if (candidate->accessibleName() == name)
                return candidate;
        return nullptr;
    }

    std::unique_ptr<EnrollWindow> window;
    int written = 0;
};

void EnrollWindowTest::init() {
    written = 0;
    window = std::make_unique<EnrollWindow>(WindowSession(
        Options(),
        [this](const std::vector<KeptSample>& samples) {
            written += int(samples.size());
            return QString();
        },
        [](const std::vector<KeptSample>&, SittingResult&) {}));
    window->show();
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
}

/// Shows a good near face until it is steady and kept.
void EnrollWindowTest::showFace(unsigned texture) {
    for (int frame = 0; frame < 3; ++frame)
        window->onLook(
            {{keptSample(texture, Distance::Near).face}, QDateTime::currentMSecsSinceEpoch()});
}

void EnrollWindowTest::everythingHasAnAccessibleName() {
    int named = 0;
    for (const QWidget* widget : window->findChildren<QWidget*>()) {
        const bool shows = qobject_cast<const QLabel*>(widget) ||
                           qobject_cast<const QPushButton*>(widget) ||
                           qobject_cast<const StreamImageWidget*>(widget) ||
                           qobject_cast<const StationRing*>(widget);
        if (!shows)
            continue;
        QVERIFY2(!widget->accessibleName().isEmpty(), qPrintable(widget->objectName()));
        ++named;
    }
    QCOMPARE(named, 3 + 5 + 1 + 1);
    for (const char* name : {"Repeat", "Skip", "Finish", "Keep", "Leave"})
        QVERIFY2(button(QLatin1StringView(name))->focusPolicy() & Qt::TabFocus, name);
}

void EnrollWindowTest::thePromptCanBeReadFromTwoMetres() {
    // A centimetre at the usual 96 dots per inch.
    const auto* prompt = window->findChild<QLabel*>(u"enrollPrompt"_s);
    QVERIFY(prompt->fontInfo().pixelSize() >= 38);
}

void EnrollWindowTest::theKeysLeadThroughASitting() {
    window->onLook({{}, QDateTime::currentMSecsSinceEpoch()});
    QCOMPARE(window->phase(), WindowPhase::Guiding);
    QCOMPARE(text("enrollPrompt"), stationPrompt(allStations()[0]));
    QTest::keyClick(window.get(), Qt::Key_S);
    QCOMPARE(text("enrollPrompt"), stationPrompt(allStations()[1]));
    QTest::keyClick(window.get(), Qt::Key_R);
    QCOMPARE(text("enrollPrompt"), stationPrompt(allStations()[0]));
    showFace(1);
    QVERIFY(!button(u"Keep"_s)->isEnabled());
    QTest::keyClick(window.get(), Qt::Key_K);
    QCOMPARE(written, 0);
    QTest::keyClick(window.get(), Qt::Key_F);
    QCOMPARE(window->phase(), WindowPhase::Report);
    QVERIFY(text("enrollReport").contains(u"Restart the Control Center"_s));
    QCOMPARE(written, 0);
    QTest::keyClick(window.get(), Qt::Key_K);
    QCOMPARE(window->phase(), WindowPhase::Kept);
    QCOMPARE(written, 1);
}

void EnrollWindowTest::returnKeepsToo() {
    showFace(1);
    QTest::keyClick(window.get(), Qt::Key_F);
    QTest::keyClick(window.get(), Qt::Key_Return);
    QCOMPARE(written, 1);
}

void EnrollWindowTest::escapeLeavesAndKeepsNothing() {
    showFace(1);
    QTest::keyClick(window.get(), Qt::Key_Escape);
    QVERIFY(!window->isVisible());
    QCOMPARE(written, 0);
}

void EnrollWindowTest::aBusySensorCanBeTriedAgainByKey() {
    QSignalSpy wanted(window.get(), &EnrollWindow::sensorWanted);
    window->onFailed(
        sensorSentence(u"Kinect unavailable: failed to open device. It may be busy."_s));
    QCOMPARE(text("enrollHint"),
             u"Kinect unavailable: failed to open device. It may be busy. Close the Control Center "
             "first: only one program can hold the sensor."_s);
    QTest::keyClick(window.get(), Qt::Key_R);
    QCOMPARE(wanted.count(), 1);
    QCOMPARE(window->phase(), WindowPhase::Opening);
}

void EnrollWindowTest::aSilentSensorIsSaid() {
    window->onSilent();
    QCOMPARE(text("enrollHint"), silenceSentence());
}

void EnrollWindowTest::theRingShowsWhatIsFilled() {
    showFace(1);
    showFace(2);
    auto* ring = window->findChild<StationRing*>();
    QCOMPARE(ring->accessibleDescription(), u"1 of 22 stations are filled"_s);
    const QImage shown = ring->grab().toImage();
    // The first segment lies right of the top; the sample in the middle is grey.
    const int side = std::min(shown.width(), shown.height());
    const QPoint middle(shown.width() / 2, shown.height() / 2);
    const QColor first = shown.pixelColor(middle + QPoint(side / 20, -side * 43 / 100));
    QVERIFY2(first.green() > 200 && first.red() < 150, qPrintable(first.name()));
    const QColor crop = shown.pixelColor(middle);
    QVERIFY(crop.red() == crop.green() && crop.green() == crop.blue());
}

void EnrollWindowTest::theStyleSheetIsUnderstood() {
    const LogCapture log;
    QWidget widget;
    widget.setStyleSheet(enrollStyleSheet());
    widget.ensurePolished();
    widget.show();
    QCOMPARE(log.warnings(), QStringList());
}

QTEST_MAIN(EnrollWindowTest)
#include "enroll_window_test.moc"
