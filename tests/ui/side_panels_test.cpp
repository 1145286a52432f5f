#include "ui/side_panels.h"
#include "ui/style_sheet.h"

#include <QFrame>
#include <QLabel>
#include <QLayout>
#include <QScrollArea>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

CommandLine demoRun() {
    CommandLine switches;
    switches.demoUi = switches.demoSpeakerLights = switches.mockMode = true;
    return switches;
}

CommandLine invertedRun() {
    CommandLine switches;
    switches.invertAudioDirection = true;
    return switches;
}

/// Texts of the labels of this name inside `widget`, in layout order.
QStringList labelTexts(const QWidget* widget, const QString& objectName) {
    QStringList texts;
    for (const QLabel* label : widget->findChildren<QLabel*>(objectName))
        texts.append(label->text());
    return texts;
}

} // namespace

class SidePanelsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void panelRows_data();
    void panelRows();
    void labelTakesNoMouseAndShowsItsTextLiterally();
    void labelWithoutANameStaysUnnamed();
    void layoutDebugMarksLabelsAndPanels();
    void pill_data();
    void pill();
    void panelHasTitleDividerAndRowsInOrder();
    void columnHoldsThreePanelsAndScrolls();
};

void SidePanelsTest::panelRows_data() {
    QTest::addColumn<PanelRows>("actual");
    QTest::addColumn<PanelRows>("expected");
    const PanelRows room{{u"people tracked"_s, u"face/depth"_s},
                         {u"Tavin visible"_s, u"unknown"_s},
                         {u"current view"_s, u"combo"_s},
                         {u"follow stability"_s, u"manual view"_s},
                         {u"lost timeout"_s, u"5 sec"_s}};
    PanelRows demoRoom = room;
    demoRoom[0].second = demoRoom[1].second = u"demo"_s;
    QTest::newRow("room") << roomAwarenessRows({}) << room;
    QTest::newRow("room, demo") << roomAwarenessRows(demoRun()) << demoRoom;

    CommandLine patient;
    patient.personLostMs = 9000;
    QTest::newRow("the promised time-out is not the switch's")
        << roomAwarenessRows(patient) << room;

    const PanelRows sensor{
        {u"RGB"_s, u"pending"_s},         {u"IR"_s, u"pending"_s},
        {u"Depth"_s, u"pending"_s},       {u"Skeletal"_s, u"pending"_s},
        {u"Auralis"_s, u"event JSON"_s},  {u"Speaker direction"_s, u"event JSON"_s},
        {u"Audio mapping"_s, u"normal"_s}};
    PanelRows demoSensor = sensor;
    demoSensor[5].second = u"DEMO"_s;
    PanelRows invertedSensor = sensor;
    invertedSensor[6].second = u"inverted"_s;
    QTest::newRow("sensor") << sensorStatusRows({}) << sensor;
    QTest::newRow("sensor, demo lights") << sensorStatusRows(demoRun()) << demoSensor;
    QTest::newRow("sensor, inverted") << sensorStatusRows(invertedRun()) << invertedSensor;

    const PanelRows safety{{u"Unknown may converse"_s, u"yes"_s},
                           {u"Unknown may control"_s, u"no"_s},
                           {u"Recognition"_s, u"first"_s},
                           {u"Owner trust"_s, u"later"_s},
                           {u"Visual tracking"_s, u"not trust"_s}};
    QTest::newRow("safety") << safetyRows() << safety;
}

void SidePanelsTest::panelRows() {
    QFETCH(PanelRows, actual);
    QTEST(actual, "expected");
}

void SidePanelsTest::labelTakesNoMouseAndShowsItsTextLiterally() {
    const std::unique_ptr<QLabel> label(makeLabel(u"<b>100%</b>"_s, u"muted"_s));
    QCOMPARE(label->text(), u"<b>100%</b>"_s);
    QCOMPARE(label->textFormat(), Qt::PlainText);
    QCOMPARE(label->objectName(), u"muted"_s);
    QCOMPARE(label->textInteractionFlags(), Qt::NoTextInteraction);
    QVERIFY(!label->property("layoutDebug").isValid());
    QVERIFY(!label->parent());
}

void SidePanelsTest::labelWithoutANameStaysUnnamed() {
    const std::unique_ptr<QLabel> label(makeLabel(u"x"_s, QString()));
    QVERIFY(label->objectName().isEmpty());
}

void SidePanelsTest::layoutDebugMarksLabelsAndPanels() {
    QWidget window;
    QFrame* marked = buildPanel(u"T"_s, {{u"k"_s, u"v"_s}});
    marked->setParent(&window);
    applyLook(&window, true);
    QCOMPARE(marked->property("layoutDebug"), QVariant(true));
    for (const QLabel* label : marked->findChildren<QLabel*>())
        QCOMPARE(label->property("layoutDebug"), QVariant(true));

    const std::unique_ptr<QFrame> plain(buildPanel(u"T"_s, {{u"k"_s, u"v"_s}}));
    QVERIFY(!plain->property("layoutDebug").isValid());
}

void SidePanelsTest::pill_data() {
    QTest::addColumn<QString>("state");
    QTest::newRow("pending") << u"pending"_s;
    QTest::newRow("safe") << u"safe"_s;
    QTest::newRow("warn") << u"warn"_s;
}

void SidePanelsTest::pill() {
    QFETCH(QString, state);
    const std::unique_ptr<QLabel> label(statusPill(u"Gate 4"_s, state));
    QCOMPARE(label->text(), u"Gate 4"_s);
    QCOMPARE(label->objectName(), u"statusPill"_s);
    QCOMPARE(label->property("state").toString(), state);
    QCOMPARE(label->alignment(), Qt::AlignCenter);
    QCOMPARE(label->minimumHeight(), 24);
    QCOMPARE(label->sizePolicy().horizontalPolicy(), QSizePolicy::Preferred);
    QCOMPARE(label->sizePolicy().verticalPolicy(), QSizePolicy::Fixed);
}

void SidePanelsTest::panelHasTitleDividerAndRowsInOrder() {
    const std::unique_ptr<QFrame> panel(buildPanel(u"SENSOR STATUS"_s, sensorStatusRows({})));
    QCOMPARE(panel->objectName(), u"panel"_s);
    QCOMPARE(panel->layout()->contentsMargins(), QMargins(12, 10, 12, 10));
    QCOMPARE(panel->layout()->spacing(), 6);
    QCOMPARE(labelTexts(panel.get(), u"panelTitle"_s), QStringList{u"SENSOR STATUS"_s});
    QCOMPARE(panel->findChild<QFrame*>(u"divider"_s)->frameShape(), QFrame::HLine);

    QStringList keys;
    QStringList values;
    for (const auto& [key, value] : sensorStatusRows({})) {
        keys.append(key);
        values.append(value);
    }
    QCOMPARE(labelTexts(panel.get(), u"keyLabel"_s), keys);
    QCOMPARE(labelTexts(panel.get(), u"valueLabel"_s), values);
    for (const QLabel* label : panel->findChildren<QLabel*>())
        QVERIFY(label->wordWrap());
    for (const QLabel* value : panel->findChildren<QLabel*>(u"valueLabel"_s))
        QCOMPARE(value->alignment(), Qt::AlignRight | Qt::AlignVCenter);
}

void SidePanelsTest::columnHoldsThreePanelsAndScrolls() {
    const std::unique_ptr<QScrollArea> column(buildRightPanels({}));
    QCOMPARE(labelTexts(column.get(), u"panelTitle"_s),
             (QStringList{u"ROOM AWARENESS"_s, u"SENSOR STATUS"_s, u"SAFETY / TRUST"_s}));
    QVERIFY(column->widgetResizable());
    QCOMPARE(column->frameShape(), QFrame::NoFrame);
    QCOMPARE(column->horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
    QCOMPARE(column->minimumWidth(), 0);
    QCOMPARE(column->maximumWidth(), 360);
    QCOMPARE(column->sizePolicy().horizontalPolicy(), QSizePolicy::Preferred);
    QCOMPARE(column->sizePolicy().verticalPolicy(), QSizePolicy::Expanding);
    QCOMPARE(column->widget()->layout()->spacing(), 10);
}

QTEST_MAIN(SidePanelsTest)
#include "side_panels_test.moc"
