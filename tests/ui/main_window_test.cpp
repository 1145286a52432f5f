#include "ui/main_window.h"

#include "app/record_types.h"
#include "support/log_capture.h"
#include "support/picture_compare.h"
#include "support/temporary_place.h"
#include "ui/stream_image_widget.h"
#include "ui/stream_tiles.h"

#include <QAbstractButton>
#include <QGuiApplication>
#include <QLabel>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSplitter>
#include <QStackedWidget>
#include <QTest>
#include <QThread>

using namespace Qt::StringLiterals;

namespace {

constexpr const char* viewSuffix =
    ". Face overlay, depth distance, and read-only Auralis event status active.";
const QString mockStatus = u"Mock/demo mode: Kinect streams disabled | Face overlay, depth "
                           "distance, and read-only Auralis awareness active."_s;

/// A shown window of a run without sensor and faces. Demo texts are off unless asked for.
std::unique_ptr<MainWindow> mockWindow(bool layoutDebug = false, bool demo = false) {
    auto window = std::make_unique<MainWindow>(layoutDebug, true, demo, demo, 5000, false);
    window->show();
    [[maybe_unused]] const bool shown = QTest::qWaitForWindowActive(window.get());
    return window;
}

/// Lets a new size reach the innermost layout: each one asks the next by an event.
void settle() {
    for (int round = 0; round < 10; ++round)
        QCoreApplication::processEvents();
}

QString viewStatus(const QString& buttonText) {
    return u"Gate 4 live awareness. Current view: "_s + buttonText +
           QString::fromLatin1(viewSuffix);
}

/// The lines under the splitter: status, voice and, in layout-debug mode, layout.
QStringList statusLines(const MainWindow& window) {
    QStringList texts;
    for (const QLabel* label :
         window.centralWidget()->findChildren<QLabel*>(u"muted"_s, Qt::FindDirectChildrenOnly))
        texts.append(label->text());
    return texts;
}

QString statusLine(const MainWindow& window) {
    return statusLines(window).value(0);
}

QList<QAbstractButton*> buttons(const MainWindow& window) {
    return window.findChildren<QAbstractButton*>(u"viewButton"_s);
}

/// The checked buttons' texts; one as long as the group is exclusive.
QStringList checkedButtons(const MainWindow& window) {
    QStringList checked;
    for (const QAbstractButton* button : buttons(window)) {
        if (button->isChecked())
            checked.append(button->text());
    }
    return checked;
}

QString shownTitle(const MainWindow& window) {
    const QWidget* page = window.findChild<QStackedWidget*>()->currentWidget();
    return page->findChild<QLabel*>(u"currentView"_s)->text();
}

QStringList allLabelTexts(const QWidget& parent, const QString& name) {
    QStringList texts;
    for (const QLabel* label : parent.findChildren<QLabel*>(name))
        texts.append(label->text());
    return texts;
}

/// Tells how what `tile` paints differs from what a new tile without an image paints in its place;
/// empty when it does not.
QString paintedOtherwise(StreamImageWidget* tile, const QString& placeholder, bool voice) {
    const QImage actual = tile->grab().toImage(); // Lays the tile out.
    StreamImageWidget expected(placeholder, voice, tile->parentWidget());
    expected.resize(tile->size());
    return pictureDifference(actual, expected.grab().toImage(), u"tile"_s);
}

bool showsVoice(const QString& tileKey) {
    return tileKey != u"combo_ir"_s && tileKey != u"combo_depth"_s;
}

const QStringList tileKeys{u"rgb"_s,      u"ir"_s,          u"depth"_s,    u"combo_rgb"_s,
                           u"combo_ir"_s, u"combo_depth"_s, u"room_rgb"_s, u"follow_rgb"_s};

} // namespace

class MainWindowTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { place = std::make_unique<TemporaryPlace>(); }
    void cleanup() { place.reset(); }
    void startsInComboWithEveryPart();
    void keysAndButtonsSelectViews_data();
    void keysAndButtonsSelectViews();
    void keysCountWhateverTheModifiers();
    void pressingTheKeyOfTheShownViewAppliesItAgain();
    void unknownViewChangesNothing();
    void otherKeysChangeNothing();
    void quitKeysClose_data();
    void quitKeysClose();
    void pagesScrollVerticallyOnly();
    void comboPageHasItsTiles();
    void pagesFitANormalWindowWithoutScrolling_data();
    void pagesFitANormalWindowWithoutScrolling();
    void tilesNeverOverlap_data();
    void tilesNeverOverlap();
    void skeletalPageWithoutDemo();
    void demoUiShowsPeopleOnTheSkeletalPageAlone();
    void pillsAboveRoomAndFollow();
    void panelsStayWhenTheViewChanges();
    void mockModeHasNoWorkerAndKeepsPlaceholders();
    void statusSlotsWriteOneLine();
    void streamErrorReplacesEveryPlaceholder();
    void foreignTextsAreShownLiterally();
    void layoutFollowsTheWidth();
    void viewChangeAppliesTheSplitterSizesAgain();
    void firstWindowIsCentred();
    void layoutDebugShowsTheLine();
    void layoutDebugOutlinesWhatCarriesIt();
    void styleSheetIsAppliedWithoutAWarning();

private:
    std::unique_ptr<TemporaryPlace> place; ///< A home without a voice service.
};

void MainWindowTest::initTestCase() {
    registerRecordTypes();
}

void MainWindowTest::startsInComboWithEveryPart() {
    const auto window = mockWindow();
    QCOMPARE(window->windowTitle(), u"Lumeno Control Center"_s);
    QCOMPARE(checkedButtons(*window), QStringList{u"Combo"_s});
    QCOMPARE(shownTitle(*window), u"CURRENT VIEW: COMBO"_s);
    QStringList texts;
    for (const QAbstractButton* button : buttons(*window)) {
        texts.append(button->text());
        QCOMPARE(button->sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
        QCOMPARE(button->sizePolicy().verticalPolicy(), QSizePolicy::Fixed);
    }
    QCOMPARE(texts, (QStringList{u"RGB"_s, u"IR"_s, u"Depth"_s, u"Skeletal"_s, u"Combo"_s,
                                 u"Room"_s, u"Follow"_s}));
    QCOMPARE(buttons(*window).at(3)->y(), buttons(*window).at(0)->y());
    QVERIFY(buttons(*window).at(4)->y() > buttons(*window).at(0)->y());
    QCOMPARE(buttons(*window).at(4)->x(), buttons(*window).at(0)->x());
    QCOMPARE(window->findChild<QStackedWidget*>()->count(), 7);
    QCOMPARE(window->findChild<QLabel*>(u"appTitle"_s)->text(), u"Lumeno Control Center"_s);
    QCOMPARE(window->findChild<QLabel*>(u"appSubtitle"_s)->text(),
             u"Local Velmor security/control dashboard - Gate 4 live awareness"_s);
    QCOMPARE(allLabelTexts(*window, u"statusPill"_s).first(2),
             (QStringList{u"Gate 4"_s, u"Pending"_s}));
    QCOMPARE(statusLines(*window).size(), 2);
}

void MainWindowTest::keysAndButtonsSelectViews_data() {
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("title");
    QTest::newRow("1") << 0 << u"RGB"_s << u"CURRENT VIEW: RGB"_s;
    QTest::newRow("2") << 1 << u"IR"_s << u"CURRENT VIEW: IR"_s;
    QTest::newRow("3") << 2 << u"Depth"_s << u"CURRENT VIEW: DEPTH"_s;
    QTest::newRow("4") << 3 << u"Skeletal"_s << u"CURRENT VIEW: SKELETAL"_s;
    QTest::newRow("5") << 4 << u"Combo"_s << u"CURRENT VIEW: COMBO"_s;
    QTest::newRow("6") << 5 << u"Room"_s << u"CURRENT VIEW: ROOM OVERVIEW"_s;
    QTest::newRow("7") << 6 << u"Follow"_s << u"CURRENT VIEW: FOLLOW"_s;
}

void MainWindowTest::keysAndButtonsSelectViews() {
    QFETCH(int, index);
    QFETCH(QString, button);
    QFETCH(QString, title);
    const auto window = mockWindow();
    const auto verifyShown = [&] {
        QCOMPARE(checkedButtons(*window), QStringList{button});
        QCOMPARE(shownTitle(*window), title);
        QCOMPARE(window->findChild<QStackedWidget*>()->currentIndex(), index);
        QCOMPARE(statusLine(*window), viewStatus(button));
    };
    window->setView(index == 0 ? u"ir"_s : u"rgb"_s);
    QTest::keyClick(window.get(), Qt::Key(Qt::Key_1 + index));
    verifyShown();
    window->setView(index == 0 ? u"ir"_s : u"rgb"_s);
    QTest::mouseClick(buttons(*window).at(index), Qt::LeftButton);
    verifyShown();
}

void MainWindowTest::keysCountWhateverTheModifiers() {
    const auto window = mockWindow();
    QTest::keyClick(window.get(), Qt::Key_2, Qt::ControlModifier);
    QCOMPARE(checkedButtons(*window), QStringList{u"IR"_s});
    QTest::keyClick(window.get(), Qt::Key_3, Qt::KeypadModifier);
    QCOMPARE(checkedButtons(*window), QStringList{u"Depth"_s});
    QTest::keyClick(window.get(), Qt::Key_7, Qt::ShiftModifier | Qt::AltModifier);
    QCOMPARE(checkedButtons(*window), QStringList{u"Follow"_s});
    // A key press reaches the window through whatever has the focus.
    QTest::mouseClick(buttons(*window).at(0), Qt::LeftButton);
    QTest::keyClick(buttons(*window).at(0), Qt::Key_6);
    QCOMPARE(checkedButtons(*window), QStringList{u"Room"_s});
}

void MainWindowTest::pressingTheKeyOfTheShownViewAppliesItAgain() {
    const auto window = mockWindow();
    QCOMPARE(statusLine(*window), mockStatus);
    QTest::keyClick(window.get(), Qt::Key_5);
    QCOMPARE(checkedButtons(*window), QStringList{u"Combo"_s});
    QCOMPARE(statusLine(*window), viewStatus(u"Combo"_s));
    QTest::mouseClick(buttons(*window).at(4), Qt::LeftButton);
    QCOMPARE(checkedButtons(*window), QStringList{u"Combo"_s});
}

void MainWindowTest::unknownViewChangesNothing() {
    const auto window = mockWindow();
    const QString before = statusLine(*window);
    for (const QString& key : {u"RGB"_s, u""_s, u"attic"_s, u"rgb "_s})
        window->setView(key);
    QCOMPARE(checkedButtons(*window), QStringList{u"Combo"_s});
    QCOMPARE(statusLine(*window), before);
}

void MainWindowTest::otherKeysChangeNothing() {
    const auto window = mockWindow();
    const QString before = statusLine(*window);
    for (const Qt::Key key :
         {Qt::Key_0, Qt::Key_8, Qt::Key_9, Qt::Key_W, Qt::Key_F1, Qt::Key_Exclam})
        QTest::keyClick(window.get(), key);
    QCOMPARE(statusLine(*window), before);
    QVERIFY(window->isVisible());
}

void MainWindowTest::quitKeysClose_data() {
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::newRow("q") << Qt::Key_Q << Qt::KeyboardModifiers();
    QTest::newRow("Q") << Qt::Key_Q << Qt::KeyboardModifiers(Qt::ShiftModifier);
    QTest::newRow("Ctrl+Q") << Qt::Key_Q << Qt::KeyboardModifiers(Qt::ControlModifier);
    QTest::newRow("Escape") << Qt::Key_Escape << Qt::KeyboardModifiers();
}

void MainWindowTest::quitKeysClose() {
    QFETCH(Qt::Key, key);
    QFETCH(Qt::KeyboardModifiers, modifiers);
    const auto window = mockWindow();
    QTest::keyClick(window.get(), key, modifiers);
    QVERIFY(!window->isVisible());
}

void MainWindowTest::pagesScrollVerticallyOnly() {
    const auto window = mockWindow();
    const auto* stack = window->findChild<QStackedWidget*>();
    for (int i = 0; i < stack->count(); ++i) {
        const auto* page = qobject_cast<QScrollArea*>(stack->widget(i));
        QVERIFY(page);
        QVERIFY(page->widgetResizable());
        QCOMPARE(page->horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
        QCOMPARE(page->widget()->objectName(), u"viewFrame"_s);
        QCOMPARE(page->widget()->findChildren<QLabel*>().last()->text(),
                 u"One stable person: Follow View | Multiple people: Room Overview | Lost grace: "
                 "5 sec | No rapid mode flicker"_s);
    }
}

void MainWindowTest::comboPageHasItsTiles() {
    const auto window = mockWindow();
    QCOMPARE(window->findChildren<StreamImageWidget*>().size(), tileKeys.size());
    for (const QString& key : tileKeys)
        QVERIFY2(window->streamLabel(key), qPrintable(key));
    QVERIFY(!window->streamLabel(u"skeletal"_s));
    QCOMPARE(window->streamLabel(u"combo_rgb"_s)->minimumSize(), QSize(360, 240));
    QCOMPARE(window->streamLabel(u"combo_ir"_s)->minimumSize(), QSize(140, 95));
    QCOMPARE(window->streamLabel(u"combo_depth"_s)->minimumSize(), QSize(140, 95));
    const QWidget* page = window->findChild<QStackedWidget*>()->currentWidget();
    QVERIFY(allLabelTexts(*page, u"panelTitle"_s).contains(u"SKELETAL"_s));
    QVERIFY(allLabelTexts(*page, u"sceneHint"_s).contains(u"Unavailable in Gate 4"_s));
    QVERIFY(allLabelTexts(*page, u"speakerStatus"_s).contains(u"No skeleton backend connected."_s));
}

void MainWindowTest::pagesFitANormalWindowWithoutScrolling_data() {
    QTest::addColumn<QString>("view");
    for (const ViewSpec& view : viewSpecs())
        QTest::newRow(qPrintable(view.key)) << view.key;
}

void MainWindowTest::pagesFitANormalWindowWithoutScrolling() {
    QFETCH(QString, view);
    const auto window = mockWindow();
    window->resize(1440, 810);
    window->setView(view);
    settle();
    const auto* page =
        qobject_cast<QScrollArea*>(window->findChild<QStackedWidget*>()->currentWidget());
    QCOMPARE(page->verticalScrollBar()->maximum(), 0);
}

void MainWindowTest::tilesNeverOverlap_data() {
    QTest::addColumn<QSize>("size");
    QTest::newRow("normal") << QSize(1440, 810);
    QTest::newRow("compact") << QSize(1000, 820);
    QTest::newRow("a little too low") << QSize(1000, 790);
    QTest::newRow("smallest") << QSize(560, 420);
}

void MainWindowTest::tilesNeverOverlap() {
    QFETCH(QSize, size);
    const auto window = mockWindow();
    window->resize(size);
    settle();
    const QWidget* grid = window->streamLabel(u"combo_rgb"_s)->parentWidget();
    const auto tiles = grid->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    QCOMPARE(tiles.size(), 4);
    for (const QWidget* tile : tiles) {
        QVERIFY(grid->rect().contains(tile->geometry()));
        for (const QWidget* other : tiles)
            QVERIFY(tile == other || !tile->geometry().intersects(other->geometry()));
    }
}

void MainWindowTest::skeletalPageWithoutDemo() {
    const auto window = mockWindow();
    window->setView(u"skeletal"_s);
    const QWidget* page = window->findChild<QStackedWidget*>()->currentWidget();
    QCOMPARE(allLabelTexts(*page, u"statusPill"_s),
             (QStringList{u"Skeleton unavailable"_s, u"No owner trust"_s}));
    QVERIFY(allLabelTexts(*page, u"sceneHint"_s)
                .contains(u"Skeleton/person tracking unavailable. Face/depth awareness is active "
                          "in Gate 4."_s));
    QCOMPARE(allLabelTexts(*page, u"speakerStatus"_s).size(), 2);
    QCOMPARE(page->findChildren<QFrame*>(u"speakerLight"_s).size(), 6);
    QVERIFY(page->findChildren<QFrame*>(u"personSilhouette"_s).isEmpty());
}

void MainWindowTest::demoUiShowsPeopleOnTheSkeletalPageAlone() {
    const auto window = mockWindow(false, true);
    QCOMPARE(allLabelTexts(*window, u"personName"_s),
             (QStringList{u"Tavin DEMO"_s, u"Person 2 DEMO"_s}));
    QCOMPARE(window->findChildren<QFrame*>(u"personSilhouette"_s).size(), 2);
    window->setView(u"skeletal"_s);
    const QWidget* page = window->findChild<QStackedWidget*>()->currentWidget();
    QCOMPARE(page->findChildren<QFrame*>(u"personSilhouette"_s).size(), 2);
    QCOMPARE(allLabelTexts(*page, u"speakerStatus"_s),
             QStringList{u"DEMO speaker lights: Tavin / Quill / Renn visual test only"_s});
    QVERIFY(allLabelTexts(*window, u"valueLabel"_s).contains(u"demo"_s));
    QVERIFY(allLabelTexts(*window, u"valueLabel"_s).contains(u"DEMO"_s));
}

void MainWindowTest::pillsAboveRoomAndFollow() {
    for (const bool demo : {false, true}) {
        const auto window = mockWindow(false, demo);
        for (const QString& view : {u"room"_s, u"follow"_s}) {
            window->setView(view);
            const QWidget* page = window->findChild<QStackedWidget*>()->currentWidget();
            QCOMPARE(allLabelTexts(*page, u"statusPill"_s),
                     (QStringList{demo ? u"DEMO UI"_s : u"Live streams"_s, u"No owner trust"_s}));
        }
    }
}

void MainWindowTest::panelsStayWhenTheViewChanges() {
    const auto window = mockWindow();
    const QStringList before = allLabelTexts(*window, u"valueLabel"_s);
    QCOMPARE(before.size(), 17);
    for (int i = 0; i < 7; ++i) {
        QTest::keyClick(window.get(), Qt::Key(Qt::Key_1 + i));
        QCOMPARE(allLabelTexts(*window, u"valueLabel"_s), before);
    }
    QVERIFY(before.contains(u"combo"_s) && before.contains(u"5 sec"_s));
}

void MainWindowTest::mockModeHasNoWorkerAndKeepsPlaceholders() {
    const auto window = mockWindow();
    QVERIFY(window->findChildren<QThread*>().isEmpty());
    QCOMPARE(statusLine(*window), mockStatus);
    for (const QString& key : tileKeys)
        QCOMPARE(paintedOtherwise(window->streamLabel(key), tileNamed(key)->placeholder,
                                  showsVoice(key)),
                 QString());
}

void MainWindowTest::statusSlotsWriteOneLine() {
    const auto window = mockWindow();
    window->onStreamStatus(u"Kinect: stopped"_s);
    QCOMPARE(statusLine(*window), u"Kinect: stopped | Face overlay, depth distance, and read-only "
                                  "Auralis awareness active."_s);
    window->onFaceStatus(u"Face recognition stopped"_s);
    QCOMPARE(statusLine(*window),
             u"Face recognition stopped | Skeletal tracking remains disconnected; voice direction "
             "is read-only attention data."_s);
    window->onStreamError(u"Kinect warning: timeout waiting for frame"_s);
    QCOMPARE(statusLine(*window), u"Kinect warning: timeout waiting for frame | Use --mock to "
                                  "review the shell without Kinect."_s);
}

void MainWindowTest::streamErrorReplacesEveryPlaceholder() {
    const auto window = mockWindow();
    window->onStreamError(u"Kinect unavailable: no Kinect v2 device detected"_s);
    for (const QString& key : tileKeys)
        QCOMPARE(paintedOtherwise(window->streamLabel(key),
                                  u"Kinect unavailable: no Kinect v2 device detected"_s,
                                  showsVoice(key)),
                 QString());
}

void MainWindowTest::foreignTextsAreShownLiterally() {
    const auto window = mockWindow();
    window->onStreamError(u"<b>%1 %2</b>"_s);
    QCOMPARE(statusLine(*window),
             u"<b>%1 %2</b> | Use --mock to review the shell without Kinect."_s);
    for (const QLabel* label : window->centralWidget()->findChildren<QLabel*>(u"muted"_s))
        QCOMPARE(label->textFormat(), Qt::PlainText);
}

void MainWindowTest::layoutFollowsTheWidth() {
    const auto window = mockWindow();
    const auto* splitter = window->findChild<QSplitter*>();
    const auto* panels = qobject_cast<QScrollArea*>(splitter->widget(1));

    window->resize(1099, 900);
    QCOMPARE(window->layoutModeName(), u"compact"_s);
    QCOMPARE(splitter->orientation(), Qt::Vertical);
    QCOMPARE(panels->maximumHeight(), 300);
    QCOMPARE(panels->maximumWidth(), QWIDGETSIZE_MAX);
    QCOMPARE(panels->minimumWidth(), 0);

    window->resize(1100, 900);
    QCOMPARE(window->layoutModeName(), u"normal"_s);
    QCOMPARE(splitter->orientation(), Qt::Horizontal);
    QCOMPARE(panels->minimumWidth(), 250);
    QCOMPARE(panels->maximumWidth(), 360);
    QCOMPARE(panels->maximumHeight(), QWIDGETSIZE_MAX);
    QVERIFY(panels->width() >= 250 && panels->width() <= 360);
    QVERIFY(!splitter->childrenCollapsible());
    QCOMPARE(splitter->handleWidth(), 8);
}

void MainWindowTest::viewChangeAppliesTheSplitterSizesAgain() {
    const auto window = mockWindow();
    window->resize(1400, 900);
    auto* splitter = window->findChild<QSplitter*>();
    const QList<int> sizes = splitter->sizes();
    splitter->setSizes({1100, 260});
    QVERIFY(splitter->sizes() != sizes);
    QTest::keyClick(window.get(), Qt::Key_1);
    QCOMPARE(splitter->sizes(), sizes);
}

void MainWindowTest::firstWindowIsCentred() {
    const MainWindow window(false, true, true, true, 5000, false);
    const QRect area = QGuiApplication::primaryScreen()->availableGeometry();
    const QSize wanted(int(area.width() * 0.75), int(area.height() * 0.75));
    QCOMPARE(window.size(), wanted.expandedTo(window.minimumSize()));
    QCOMPARE(window.geometry().center(), area.center());
}

void MainWindowTest::layoutDebugShowsTheLine() {
    const auto window = mockWindow(true);
    QCOMPARE(statusLines(*window).size(), 3);
    window->resize(1440, 810);
    const QSize least = window->minimumSize();
    QCOMPARE(statusLines(*window).at(2),
             u"layout: normal | window: 1440x810 | min: %1x%2 | panels: scrollable"_s.arg(
                 QString::number(least.width()), QString::number(least.height())));
}

void MainWindowTest::layoutDebugOutlinesWhatCarriesIt() {
    const auto marked = [](const MainWindow& window) {
        QStringList names;
        for (const QWidget* widget : window.findChildren<QWidget*>()) {
            if (widget->property("layoutDebug").toBool())
                names.append(widget->objectName());
        }
        return names;
    };
    QVERIFY(marked(*mockWindow()).isEmpty());
    const auto window = mockWindow(true);
    const QStringList names = marked(*window);
    QCOMPARE(names.count(u"root"_s), 1);
    QCOMPARE(names.count(u"viewFrame"_s), 7);
    QCOMPARE(names.count(u"mockViewport"_s), 8);
    QCOMPARE(names.count(u"panel"_s), 3);
    QCOMPARE(names.count(u"currentView"_s), 7);
}

void MainWindowTest::styleSheetIsAppliedWithoutAWarning() {
    const LogCapture log;
    MainWindow window(true, true, true, true, 5000, false);
    const QImage picture = window.grab().toImage();
    QCOMPARE(log.warnings(), QStringList());
    QCOMPARE(picture.pixelColor(3, 3), QColor(u"#0d1118"_s));
    QVERIFY(!window.styleSheet().isEmpty());
}

QTEST_MAIN(MainWindowTest)
#include "main_window_test.moc"
