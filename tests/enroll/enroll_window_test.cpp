#include "app/identity.h"
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

namespace {

bool holds(const QImage& picture, const QColor& color) {
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            if (picture.pixelColor(x, y) == color)
                return true;
    return false;
}

} // namespace

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
    void sensorsThatGiveNoPicture_data();
    void sensorsThatGiveNoPicture();
    void aSilentSensorCanBeTriedAgainByKey();
    void nobodyAndTwoPeopleAreSaid();
    void onlyTheKeptFaceIsGreen();
    void theFocusIsNeverOnLeaveByItself();
    void everySentenceFits_data();
    void everySentenceFits();
    void theRingShowsWhatIsFilled();
    void theStyleSheetIsUnderstood();

private:
    void showFace(unsigned texture);
    QString cutSentence() const;
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
        face::Options(),
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

void EnrollWindowTest::sensorsThatGiveNoPicture_data() {
    QTest::addColumn<QString>("message"); // the sensor's; empty: it is silent
    QTest::addColumn<QString>("hint");
    QTest::newRow("none") << u"Kinect unavailable: no Kinect v2 device detected"_s
                          << u"Kinect unavailable: no Kinect v2 device detected: plug it in, with "
                             "its own power, and try again."_s;
    QTest::newRow("busy") << u"Kinect unavailable: failed to open device. It may be busy."_s
                          << u"Kinect unavailable: failed to open device. It may be busy. Close "
                             "the Control Center first: only one program can hold the sensor."_s;
    QTest::newRow("does not start")
        << u"Kinect unavailable: failed to start RGB/IR/Depth streams"_s
        << u"Kinect unavailable: failed to start RGB/IR/Depth streams: unplug the sensor, wait, "
           "and plug it in again."_s;
    QTest::newRow("silent") << QString()
                            << u"The sensor gives no pictures: check its cable and its power "
                               "supply, then try again."_s;
}

void EnrollWindowTest::sensorsThatGiveNoPicture() {
    QFETCH(QString, message);
    QSignalSpy wanted(window.get(), &EnrollWindow::sensorWanted);
    QTest::keyClick(window.get(), Qt::Key_R); // not while it opens
    QCOMPARE(wanted.count(), 0);
    if (message.isEmpty())
        window->onSilent();
    else
        window->onFailed(sensorSentence(message));
    QTEST(text("enrollHint"), "hint");
    QCOMPARE(text("enrollPrompt"), u"There is no picture: press R to try again."_s);
    QCOMPARE(cutSentence(), QString());
    QTest::keyClick(window.get(), Qt::Key_R);
    QCOMPARE(wanted.count(), 1);
    QCOMPARE(window->phase(), WindowPhase::Opening);
}

void EnrollWindowTest::aSilentSensorCanBeTriedAgainByKey() {
    QSignalSpy wanted(window.get(), &EnrollWindow::sensorWanted);
    showFace(1);
    window->onSilent();
    QCOMPARE(text("enrollHint"), silenceSentence());
    QTest::keyClick(window.get(), Qt::Key_R);
    QCOMPARE(wanted.count(), 1);
    QCOMPARE(text("enrollPrompt"), u"Opening the sensor."_s);
    showFace(2);
    QCOMPARE(text("enrollPrompt"), stationPrompt(allStations()[1])); // both were kept
}

void EnrollWindowTest::nobodyAndTwoPeopleAreSaid() {
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    window->onLook({{}, now});
    QCOMPARE(text("enrollHint"), u"Nobody is to be seen: look at the sensor."_s);
    FaceLook other = keptSample(2, Distance::Near).face;
    other.box.x += 700;
    window->onLook({{keptSample(1, Distance::Near).face, other}, now});
    QCOMPARE(text("enrollHint"), u"Two people are in the picture: only the owner may be."_s);
    QCOMPARE(text("enrollPrompt"), stationPrompt(allStations()[0]));
}

void EnrollWindowTest::onlyTheKeptFaceIsGreen() {
    FaceLook portrait = keptSample(2, Distance::Near).face; // on the wall
    portrait.box = {1200, 200, 60, 60};
    portrait.measures.sidePx = 60;
    portrait.meters.reset();
    window->showPicture(QImage(1920, 1080, QImage::Format_RGB888));
    auto* picture = window->findChild<StreamImageWidget*>();
    for (int frame = 0; frame < 3; ++frame)
        window->onLook(
            {{keptSample(1, Distance::Near).face, portrait}, QDateTime::currentMSecsSinceEpoch()});
    const QImage shown = picture->grab().toImage();
    // The kept face is in the left half, the portrait in the right one.
    const QRect left(0, 0, shown.width() / 2, shown.height());
    const QRect right = left.translated(left.width(), 0);
    QVERIFY(holds(shown.copy(left), identity::ownerColor));
    QVERIFY(!holds(shown.copy(left), identity::bodyColor));
    QVERIFY(holds(shown.copy(right), identity::bodyColor));
    QVERIFY(!holds(shown.copy(right), identity::ownerColor));
    QTest::keyClick(window.get(), Qt::Key_F); // nobody looks any more
    const QImage after = picture->grab().toImage();
    QVERIFY(!holds(after, identity::ownerColor) && !holds(after, identity::bodyColor));
}

void EnrollWindowTest::theFocusIsNeverOnLeaveByItself() {
    QVERIFY(window->focusWidget() != button(u"Leave"_s));
    showFace(1);
    button(u"Finish"_s)->setFocus();
    QTest::keyClick(button(u"Finish"_s), Qt::Key_Space);
    QCOMPARE(window->phase(), WindowPhase::Report);
    QCOMPARE(window->focusWidget(), button(u"Keep"_s));
}

/// The first sentence that is cut, with its sizes; empty when none is.
QString EnrollWindowTest::cutSentence() const {
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    for (const QLabel* label : window->findChildren<QLabel*>()) {
        if (!label->isVisible())
            continue;
        const QRect place(label->mapTo(window.get(), QPoint()), label->size());
        const QSize needed(label->minimumSizeHint().width(), label->heightForWidth(label->width()));
        if (place.width() >= needed.width() && place.height() >= needed.height() &&
            window->rect().contains(place))
            continue;
        QString sizes;
        QDebug(&sizes) << place << "needs" << needed << "in" << window->size();
        return label->text() + sizes;
    }
    return {};
}

void EnrollWindowTest::everySentenceFits_data() {
    QTest::addColumn<QSize>("size");
    QTest::newRow("usual") << QSize(1280, 800);
    QTest::newRow("as small as it can be") << QSize(1, 1);
}

void EnrollWindowTest::everySentenceFits() {
    QFETCH(QSize, size);
    window->resize(size);
    FaceLook dark = keptSample(1, Distance::Near).face;
    dark.measures.mean = 20.0; // the longest hint
    for (const Station& station : allStations()) {
        window->onLook({{dark}, QDateTime::currentMSecsSinceEpoch()});
        QCOMPARE(text("enrollPrompt"), stationPrompt(station));
        QCOMPARE(cutSentence(), QString());
        QTest::keyClick(window.get(), Qt::Key_S);
    }
    QCOMPARE(window->phase(), WindowPhase::Report);
    QCOMPARE(cutSentence(), QString());
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
