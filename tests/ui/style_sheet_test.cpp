#include "ui/style_sheet.h"

#include "support/log_capture.h"
#include "ui/page_content.h"
#include "ui/side_panels.h"
#include "voice/speaker_hud.h"

#include <QApplication>
#include <QFontInfo>
#include <QFrame>
#include <QImage>
#include <QLabel>
#include <QMap>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>
#include <functional>

using namespace Qt::StringLiterals;

namespace {

/// A widget with the style sheet that holds `content` at its top left, at its own size.
std::unique_ptr<QWidget> styled(QWidget* content, bool layoutDebug = false) {
    auto holder = std::make_unique<QWidget>();
    holder->setObjectName(u"root"_s);
    holder->setAttribute(Qt::WA_StyledBackground);
    auto* layout = new QVBoxLayout(holder.get());
    layout->addWidget(content, 0, Qt::AlignLeft | Qt::AlignTop);
    applyLook(holder.get(), layoutDebug);
    holder->resize(700, 400);
    holder->grab(); // Lays out and polishes without a window.
    return holder;
}

QColor pixelOf(QWidget* widget, const QPoint& at) {
    return widget->grab().toImage().pixelColor(at);
}

/// Middle of the top border line.
QPoint borderOf(const QWidget* widget) {
    return {widget->width() / 2, 0};
}

} // namespace

class StyleSheetTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void isParsedWithoutAWarning();
    void aBrokenSheetWouldWarn();
    void everyRuleHasItsValues_data();
    void everyRuleHasItsValues();
    void theDesktopsFontIsSeenNowhere();
    void pillColoursFollowTheState_data();
    void pillColoursFollowTheState();
    void lightsAreGreyGreenOrBlue_data();
    void lightsAreGreyGreenOrBlue();
    void silhouettesAreGreenOrBlue();
    void panelsAndFramesHaveTheirColours();
    void viewButtonsShowTheCheckedOne();
    void dividerIsAThinLine();
    void layoutDebugOutlineIsDashedAmber_data();
    void layoutDebugOutlineIsDashedAmber();
};

void StyleSheetTest::isParsedWithoutAWarning() {
    const LogCapture log;
    const auto holder = styled(statusPill(u"x"_s, u"safe"_s));
    holder->grab();
    QCOMPARE(log.warnings(), QStringList());
}

void StyleSheetTest::aBrokenSheetWouldWarn() {
    const LogCapture log;
    QWidget widget;
    widget.setStyleSheet(applicationStyleSheet() + u"QLabel { color: #12"_s);
    widget.ensurePolished();
    QVERIFY(!log.warnings().isEmpty());
}

void StyleSheetTest::everyRuleHasItsValues_data() {
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("declarations");
    int index = 0;
    const auto rule = [&index](const char* selector, const QString& declarations) {
        QTest::newRow(selector) << index++ << declarations;
    };
    rule("QMainWindow, QWidget#root",
         u"background: #0d1118; color: #e8eef7; font-family: \"Inter\", \"Segoe UI\", \"Ubuntu\", "
         "sans-serif; font-size: 12px"_s);
    rule("QLabel#appTitle", u"font-size: 22px; font-weight: 700; color: #f3f7fc"_s);
    rule("QLabel#appSubtitle, QLabel#muted, QLabel#sceneHint", u"color: #8fa1b7"_s);
    rule("QPushButton#viewButton",
         u"background: #171e2a; border: 1px solid #2b3748; border-radius: 6px; color: #d9e3f0; "
         "font-weight: 600; padding: 7px 8px; min-width: 58px"_s);
    rule("QPushButton#viewButton:hover", u"border-color: #4b9eea; background: #1d2837"_s);
    rule("QPushButton#viewButton:checked",
         u"background: #123a4b; border-color: #35c4ee; color: #ffffff"_s);
    rule("QFrame#viewFrame, QFrame#panel",
         u"background: #121821; border: 1px solid #2a3443; border-radius: 8px"_s);
    rule("QFrame#mockViewport",
         u"background: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 #162130, stop:1 #0a0f16); "
         "border: 1px solid #344254; border-radius: 8px"_s);
    rule("QLabel#currentView", u"font-size: 18px; font-weight: 800; color: #f4f8ff"_s);
    rule("QLabel#panelTitle", u"font-size: 14px; font-weight: 800; color: #f0f5fb"_s);
    rule("QLabel#keyLabel", u"color: #8fa1b7; font-weight: 600"_s);
    rule("QLabel#valueLabel", u"color: #edf4ff; font-weight: 600"_s);
    rule("QLabel#personName", u"color: #f4f8ff; font-weight: 800; background: rgba(10, 14, 20, "
                              "180); border-radius: 4px; padding: 4px 8px"_s);
    rule("QFrame#personSilhouette",
         u"background: #1f6f43; border: 2px solid #62e38b; border-radius: 42px"_s);
    rule("QFrame#personSilhouette[unknown=\"true\"]",
         u"background: #243d78; border-color: #7fa8ff"_s);
    rule("QFrame#speakerLight",
         u"background: #2b3442; border: 1px solid #556170; border-radius: 5px; min-width: 20px; "
         "max-width: 28px; min-height: 10px; max-height: 10px"_s);
    rule("QFrame#speakerLight[active=\"true\"]", u"background: #62e38b; border-color: #d8ffe3"_s);
    rule("QFrame#speakerLight[unknown=\"true\"]", u"background: #5aa7ff; border-color: #c8dcff"_s);
    rule("QWidget#streamImage", u"background: #070b10; border: 1px solid #344254; border-radius: "
                                "6px; color: #9fb0c4; font-weight: 700"_s);
    rule("QLabel#speakerStatus", u"color: #b8c7d8; font-size: 12px"_s);
    rule("QLabel#statusPill", u"border-radius: 5px; padding: 3px 8px; color: #f4f8ff; background: "
                              "#253145; border: 1px solid #3a4658"_s);
    rule("QLabel#statusPill[state=\"pending\"]", u"color: #d8e5f3; background: #253145"_s);
    rule("QLabel#statusPill[state=\"safe\"]", u"background: #193525; border-color: #356b48"_s);
    rule("QLabel#statusPill[state=\"warn\"]", u"background: #3b2f16; border-color: #81652c"_s);
    rule("QFrame#divider", u"color: #293343; background: #293343; max-height: 1px"_s);
    rule("QWidget[layoutDebug=\"true\"], QFrame[layoutDebug=\"true\"], "
         "QLabel[layoutDebug=\"true\"]",
         u"border: 1px dashed #ffcc66"_s);
    QCOMPARE(applicationStyleSheet().count(u'{'), index);
}

void StyleSheetTest::everyRuleHasItsValues() {
    QFETCH(int, index);
    const QStringList rule = applicationStyleSheet().split(u'}').at(index).split(u'{');
    QCOMPARE(rule.at(0).simplified(), QString::fromLatin1(QTest::currentDataTag()));
    QString declarations = rule.at(1).simplified();
    if (declarations.endsWith(u';'))
        declarations.chop(1);
    QTEST(declarations, "declarations");
}

void StyleSheetTest::theDesktopsFontIsSeenNowhere() {
    const QFont before = QApplication::font();
    QFont large = before;
    large.setPointSize(13);
    QApplication::setFont(large);
    auto* content = new QWidget;
    auto* layout = new QVBoxLayout(content);
    layout->addWidget(buildPanel(u"T"_s, {{u"k"_s, u"v"_s}}));
    layout->addWidget(makeLabel(u"title"_s, u"appTitle"_s));
    layout->addWidget(makeLabel(u"hint"_s, u"sceneHint"_s));
    auto* button = new QPushButton(u"RGB"_s);
    button->setObjectName(u"viewButton"_s);
    layout->addWidget(button);
    const auto holder = styled(content);
    QMap<QString, int> sizes;
    for (const QWidget* widget : content->findChildren<QWidget*>())
        sizes.insert(widget->objectName(), widget->fontInfo().pixelSize());
    QApplication::setFont(before);
    QCOMPARE(sizes.value(u"keyLabel"_s), 12);
    QCOMPARE(sizes.value(u"valueLabel"_s), 12);
    QCOMPARE(sizes.value(u"sceneHint"_s), 12);
    QCOMPARE(sizes.value(u"viewButton"_s), 12);
    QCOMPARE(sizes.value(u"panelTitle"_s), 14);
    QCOMPARE(sizes.value(u"appTitle"_s), 22);
    QCOMPARE(holder->font().families(),
             (QStringList{u"Inter"_s, u"Segoe UI"_s, u"Ubuntu"_s, u"sans-serif"_s}));
}

void StyleSheetTest::pillColoursFollowTheState_data() {
    QTest::addColumn<QString>("state");
    QTest::addColumn<QColor>("background");
    QTest::addColumn<QColor>("border");
    QTest::newRow("pending") << u"pending"_s << QColor(u"#253145"_s) << QColor(u"#3a4658"_s);
    QTest::newRow("safe") << u"safe"_s << QColor(u"#193525"_s) << QColor(u"#356b48"_s);
    QTest::newRow("warn") << u"warn"_s << QColor(u"#3b2f16"_s) << QColor(u"#81652c"_s);
}

void StyleSheetTest::pillColoursFollowTheState() {
    QFETCH(QString, state);
    QLabel* pill = statusPill(u"Pill"_s, state);
    const auto holder = styled(pill);
    QTEST(pixelOf(pill, {4, pill->height() / 2}), "background");
    QTEST(pixelOf(pill, borderOf(pill)), "border");
}

void StyleSheetTest::lightsAreGreyGreenOrBlue_data() {
    QTest::addColumn<bool>("demo");
    QTest::addColumn<QStringList>("fills");
    const QString grey = u"#2b3442"_s;
    const QString green = u"#62e38b"_s;
    const QString blue = u"#5aa7ff"_s;
    QTest::newRow("live") << false << QStringList(6, grey);
    QTest::newRow("demo") << true << QStringList{grey, green, grey, green, blue, grey};
}

void StyleSheetTest::lightsAreGreyGreenOrBlue() {
    QFETCH(bool, demo);
    const auto holder = styled(buildSpeakerHud(demo));
    QStringList fills;
    for (QFrame* light : holder->findChildren<QFrame*>(u"speakerLight"_s))
        fills.append(pixelOf(light, light->rect().center()).name());
    QTEST(fills, "fills");
}

void StyleSheetTest::silhouettesAreGreenOrBlue() {
    auto* scene = new QWidget;
    auto* layout = new QVBoxLayout(scene);
    CommandLine switches;
    switches.demoUi = true;
    addPeopleScene(layout, View::Skeletal, switches);
    const auto holder = styled(scene);
    const auto silhouettes = holder->findChildren<QFrame*>(u"personSilhouette"_s);
    QCOMPARE(silhouettes.size(), 2);
    QCOMPARE(pixelOf(silhouettes[0], silhouettes[0]->rect().center()), QColor(u"#1f6f43"_s));
    QCOMPARE(pixelOf(silhouettes[1], silhouettes[1]->rect().center()), QColor(u"#243d78"_s));
    QCOMPARE(pixelOf(silhouettes[0], borderOf(silhouettes[0])), QColor(u"#62e38b"_s));
    QCOMPARE(pixelOf(silhouettes[1], borderOf(silhouettes[1])), QColor(u"#7fa8ff"_s));
}

void StyleSheetTest::panelsAndFramesHaveTheirColours() {
    QFrame* panel = buildPanel(u"T"_s, {{u"k"_s, u"v"_s}});
    const auto holder = styled(panel);
    QCOMPARE(pixelOf(panel, {5, panel->height() / 2}), QColor(u"#121821"_s));
    QCOMPARE(pixelOf(panel, borderOf(panel)), QColor(u"#2a3443"_s));
    QCOMPARE(pixelOf(holder.get(), {690, 390}), QColor(u"#0d1118"_s));

    QFrame* viewport = contentFrame(View::Rgb);
    const auto other = styled(viewport);
    viewport->setFixedSize(300, 320);
    QCOMPARE(pixelOf(viewport, borderOf(viewport)), QColor(u"#344254"_s));
    const QColor top = pixelOf(viewport, {150, 2});
    const QColor bottom = pixelOf(viewport, {150, 317});
    QVERIFY2(top.lightness() > bottom.lightness(), "the gradient darkens downwards");
}

void StyleSheetTest::viewButtonsShowTheCheckedOne() {
    auto* button = new QPushButton(u"RGB"_s);
    button->setObjectName(u"viewButton"_s);
    button->setCheckable(true);
    const auto holder = styled(button);
    QCOMPARE(pixelOf(button, {5, button->height() / 2}), QColor(u"#171e2a"_s));
    button->setChecked(true);
    QCOMPARE(pixelOf(button, {5, button->height() / 2}), QColor(u"#123a4b"_s));
    QCOMPARE(pixelOf(button, borderOf(button)), QColor(u"#35c4ee"_s));
}

void StyleSheetTest::dividerIsAThinLine() {
    QFrame* panel = buildPanel(u"A long enough title"_s, {});
    const auto holder = styled(panel);
    auto* divider = panel->findChild<QFrame*>(u"divider"_s);
    QVERIFY2(divider->height() <= 3, "a line and its frame");
    QCOMPARE(pixelOf(divider, divider->rect().center()), QColor(u"#293343"_s));
}

void StyleSheetTest::layoutDebugOutlineIsDashedAmber_data() {
    QTest::addColumn<std::function<QWidget*()>>("make");
    QTest::addColumn<bool>("outlined");
    const auto add = [](const char* name, const std::function<QWidget*()>& make,
                        bool outlined = true) { QTest::newRow(name) << make << outlined; };
    add("label", [] { return makeLabel(u"a label long enough"_s, u"muted"_s); });
    add("unnamed label", [] { return makeLabel(u"a label long enough"_s, QString()); });
    add("title", [] { return makeLabel(u"a title long enough"_s, u"appTitle"_s); });
    add("panel", [] { return buildPanel(u"A PANEL"_s, {{u"k"_s, u"v"_s}}); });
    add("viewport", [] { return contentFrame(View::Rgb); });
    add("skeletal tile", [] { return buildSkeletalTile(); });
    add(
        "pill", [] { return statusPill(u"a pill long enough"_s, u"safe"_s); }, false);
}

void StyleSheetTest::layoutDebugOutlineIsDashedAmber() {
    const auto amberInTopRow = [](QWidget* widget, bool layoutDebug) {
        const auto holder = styled(widget, layoutDebug);
        widget->setMinimumWidth(200);
        const QImage image = widget->grab().toImage();
        int amber = 0;
        // The toolkit draws dashes smoothed, that is, blended with the background.
        for (int x = 0; x < image.width(); ++x) {
            const QColor pixel = image.pixelColor(x, 0);
            amber += pixel.red() > pixel.green() && pixel.green() > pixel.blue() + 20;
        }
        return 100 * amber / image.width();
    };
    QFETCH(std::function<QWidget*()>, make);
    QFETCH(bool, outlined);
    const int percent = amberInTopRow(make(), true);
    QVERIFY2(outlined ? percent > 20 && percent < 90 : percent == 0,
             qPrintable(QString::number(percent)));
    QCOMPARE(amberInTopRow(make(), false), 0);
}

QTEST_MAIN(StyleSheetTest)
#include "style_sheet_test.moc"
