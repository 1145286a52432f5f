#include "ui/main_window.h"

#include "app/record_types.h"
#include "support/temporary_place.h"
#include "ui/focus_ring.h"
#include "ui/stream_image_widget.h"
#include "ui/stream_tiles.h"

#include <QAccessible>
#include <QApplication>
#include <QPushButton>
#include <QScrollArea>
#include <QStackedWidget>
#include <QTest>
#include <cmath>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

std::unique_ptr<MainWindow> shownWindow(const QSize& size = {1440, 810}) {
    auto window = std::make_unique<MainWindow>(false, true, false, false, 5000, false);
    window->resize(size);
    window->show();
    window->activateWindow();
    [[maybe_unused]] const bool active = QTest::qWaitForWindowActive(window.get());
    return window;
}

QPushButton* buttonOf(const MainWindow& window, View view) {
    return window.findChildren<QPushButton*>(u"viewButton"_s).at(int(view));
}

QString spoken(QWidget* widget, QAccessible::Text kind) {
    return QAccessible::queryAccessibleInterface(widget)->text(kind);
}

/// Relative luminance and contrast as WCAG 2 defines them.
double luminance(const QColor& color) {
    const auto linear = [](double value) {
        return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

double contrast(const QColor& one, const QColor& other) {
    const double a = luminance(one) + 0.05;
    const double b = luminance(other) + 0.05;
    return std::max(a, b) / std::min(a, b);
}

FaceOverlay somebody(int left) {
    FaceOverlay overlay;
    overlay.rect = QRect(left, 10, 50, 50);
    overlay.color = Qt::green;
    return overlay;
}

} // namespace

/// The window for people who use the keyboard or a screen reader.
class WindowAccessTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { registerRecordTypes(); }
    void init() { place = std::make_unique<TemporaryPlace>(); }
    void cleanup() { place.reset(); }
    void focusStartsOnTheShownViewAndFollowsIt();
    void spaceKeepsTheViewThatHasTheFocus();
    void theRingAppearsWithTheKeyboardAlone();
    void theRingContrastsWithWhatItCovers();
    void theRingGoesWithItsWidget();
    void buttonsSayTheirViewAndKey();
    void tilesSayWhatTheyShow();
    void everythingThatIsReachedHasAName();
    void screenReadersDoNotMeetTheRing();
    void roomAndFollowKeepTheSizeOfRgbInLowWindows();
    void longStatusLinesLeaveTheButtonsTheirHeight();
    void theWindowHasAnIcon();

private:
    std::unique_ptr<TemporaryPlace> place;
};

void WindowAccessTest::focusStartsOnTheShownViewAndFollowsIt() {
    const auto window = shownWindow();
    QCOMPARE(QApplication::focusWidget(), buttonOf(*window, View::Combo));
    for (int key = Qt::Key_1; key <= Qt::Key_7; ++key) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key(key));
        QCOMPARE(QApplication::focusWidget(), buttonOf(*window, View(key - Qt::Key_1)));
    }
    // Also out of a page that was being scrolled.
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    QVERIFY(qobject_cast<QScrollArea*>(QApplication::focusWidget()));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_2);
    QCOMPARE(QApplication::focusWidget(), buttonOf(*window, View::Ir));
}

void WindowAccessTest::spaceKeepsTheViewThatHasTheFocus() {
    const auto window = shownWindow();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    QVERIFY(buttonOf(*window, View::Combo)->isChecked());
    QCOMPARE(window->findChild<QStackedWidget*>()->currentIndex(), int(View::Combo));
}

void WindowAccessTest::theRingAppearsWithTheKeyboardAlone() {
    const auto window = shownWindow();
    auto* ring = window->findChild<FocusRing*>();
    QVERIFY(!ring->isVisible());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_3);
    QTest::mouseClick(buttonOf(*window, View::Room), Qt::LeftButton);
    QVERIFY(!ring->isVisible());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    QVERIFY(ring->isVisible());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_3);
    QVERIFY(ring->isVisible());
    QTest::mouseClick(buttonOf(*window, View::Room), Qt::LeftButton);
    QVERIFY(!ring->isVisible());
}

void WindowAccessTest::theRingContrastsWithWhatItCovers() {
    const auto window = shownWindow();
    auto* ring = window->findChild<FocusRing*>();
    for (int step = 0; step < 4; ++step) { // a button, a page, the panels, a button
        ring->hide();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QVERIFY(ring->isVisible());
        const QRect ringed = ring->geometry();
        const QImage with = window->centralWidget()->grab(ringed).toImage();
        ring->hide();
        const QImage without = window->centralWidget()->grab(ringed).toImage();
        ring->show();
        const QPoint top(ringed.width() / 2, 0);
        const QPoint side(1, ringed.height() / 2);
        for (const QPoint& at : {top, side}) {
            QVERIFY2(contrast(with.pixelColor(at), without.pixelColor(at)) >= 3.0,
                     qPrintable(QApplication::focusWidget()->accessibleName()));
        }
    }
}

void WindowAccessTest::theRingGoesWithItsWidget() {
    const auto window = shownWindow();
    auto* ring = window->findChild<FocusRing*>();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    window->resize(900, 700);
    QTRY_COMPARE(ring->geometry().adjusted(3, 3, -3, -3),
                 QRect(QApplication::focusWidget()->mapTo(window->centralWidget(), QPoint()),
                       QApplication::focusWidget()->size()));
}

void WindowAccessTest::buttonsSayTheirViewAndKey() {
    const auto window = shownWindow();
    for (const ViewSpec& spec : viewSpecs()) {
        QPushButton* button = buttonOf(*window, spec.view);
        const QString number = QString::number(int(spec.view) + 1);
        QCOMPARE(spoken(button, QAccessible::Name), spec.buttonText + u" view, key "_s + number);
        QCOMPARE(spoken(button, QAccessible::Description), spec.description);
        QCOMPARE(button->toolTip(), spec.buttonText + u", key "_s + number);
    }
}

void WindowAccessTest::tilesSayWhatTheyShow() {
    const auto window = shownWindow();
    StreamImageWidget* tile = window->streamLabel(u"combo_rgb"_s);
    const auto* interface = QAccessible::queryAccessibleInterface(tile);
    QCOMPARE(interface->role(), QAccessible::Graphic);
    QCOMPARE(spoken(tile, QAccessible::Name), u"RGB stream"_s);
    QCOMPARE(spoken(tile, QAccessible::Description), u"Waiting for RGB stream"_s);
    tile->setPlaceholder(u"Kinect unavailable:\nno device"_s);
    QCOMPARE(spoken(tile, QAccessible::Description), u"Kinect unavailable: no device"_s);
    QImage image(64, 48, QImage::Format_RGB888);
    image.fill(Qt::gray);
    tile->setImage(image);
    QCOMPARE(spoken(tile, QAccessible::Description), u"Live picture"_s);
    tile->setOverlays({somebody(5)});
    QCOMPARE(spoken(tile, QAccessible::Description), u"Live picture, 1 person marked"_s);
    tile->setOverlays({somebody(5), somebody(9)});
    tile->setSourceCrop(QRect(), u"current view: FOLLOW"_s);
    QCOMPARE(spoken(tile, QAccessible::Description),
             u"Live picture, 2 people marked. current view: FOLLOW"_s);
    for (const TileSpec& spec : streamTiles())
        QCOMPARE(spoken(window->streamLabel(spec.key), QAccessible::Name), streamName(spec.stream));
}

void WindowAccessTest::everythingThatIsReachedHasAName() {
    const auto window = shownWindow();
    for (QWidget* widget : window->findChildren<QWidget*>()) {
        const bool panel = widget->objectName() == u"panel"_s;
        const bool line = widget->objectName() == u"muted"_s && widget->inherits("StatusLine");
        if (widget->focusPolicy() == Qt::NoFocus && !panel && !line)
            continue;
        const QString what = QString::fromLatin1(widget->metaObject()->className());
        QVERIFY2(!spoken(widget, QAccessible::Name).isEmpty(), qPrintable(what));
        QVERIFY2(!spoken(widget, QAccessible::Description).isEmpty(), qPrintable(what));
    }
    const auto* panel = window->findChild<QFrame*>(u"panel"_s);
    QCOMPARE(panel->accessibleName(), u"ROOM AWARENESS"_s);
    QVERIFY(panel->accessibleDescription().startsWith(u"people tracked: face/depth, "_s));
}

void WindowAccessTest::screenReadersDoNotMeetTheRing() {
    const auto window = shownWindow();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    const auto* root = QAccessible::queryAccessibleInterface(window->centralWidget());
    QVERIFY(root->childCount() > 0);
    for (int i = 0; i < root->childCount(); ++i)
        QVERIFY(!qobject_cast<FocusRing*>(root->child(i)->object()));
}

void WindowAccessTest::roomAndFollowKeepTheSizeOfRgbInLowWindows() {
    const auto window = shownWindow({560, 420});
    const auto heightIn = [&](const QString& view, const QString& tile) {
        window->setView(view);
        for (int round = 0; round < 10; ++round)
            QCoreApplication::processEvents();
        return window->streamLabel(tile)->height();
    };
    const int rgb = heightIn(u"rgb"_s, u"rgb"_s);
    QCOMPARE(heightIn(u"room"_s, u"room_rgb"_s), rgb);
    QCOMPARE(heightIn(u"follow"_s, u"follow_rgb"_s), rgb);
}

void WindowAccessTest::longStatusLinesLeaveTheButtonsTheirHeight() {
    for (const bool layoutDebug : {false, true}) {
        MainWindow window(layoutDebug, true, false, false, 5000, false);
        window.resize(560, 420);
        window.show();
        window.onStreamError(u"the device was lost again "_s.repeated(160));
        for (int round = 0; round < 10; ++round)
            QCoreApplication::processEvents();
        QCOMPARE(window.size(), QSize(560, 420));
        const QPushButton* button = buttonOf(window, View::Rgb);
        QCOMPARE(button->height(), button->sizeHint().height());
    }
}

void WindowAccessTest::theWindowHasAnIcon() {
    const auto window = shownWindow();
    QVERIFY(!window->windowIcon().isNull());
    for (const int size : {16, 48, 128, 256}) {
        const QImage icon = window->windowIcon().pixmap(size).toImage();
        QCOMPARE(icon.size(), QSize(size, size));
        QCOMPARE(icon.pixelColor(0, 0).alpha(), 0);
        QVERIFY(icon.pixelColor(size / 2, size * 104 / 256).green() > 180); // the person's head
    }
}

QTEST_MAIN(WindowAccessTest)
#include "window_access_test.moc"
