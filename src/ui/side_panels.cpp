#include "ui/side_panels.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QScrollArea>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

// The panel states the product's usual time-out; --person-lost-ms, for experiments, does not change
// it.
constexpr int shownLostTimeoutSeconds = 5;

} // namespace

PanelRows roomAwarenessRows(const CommandLine& switches) {
    return {
        {u"people tracked"_s, switches.demoUi ? u"demo"_s : u"face/depth"_s},
        {u"Tavin visible"_s, switches.demoUi ? u"demo"_s : u"unknown"_s},
        {u"current view"_s, u"combo"_s},
        {u"follow stability"_s, u"manual view"_s},
        {u"lost timeout"_s, QString::number(shownLostTimeoutSeconds) + u" sec"_s},
    };
}

PanelRows sensorStatusRows(const CommandLine& switches) {
    return {
        {u"RGB"_s, u"pending"_s},
        {u"IR"_s, u"pending"_s},
        {u"Depth"_s, u"pending"_s},
        {u"Skeletal"_s, u"pending"_s},
        {u"Auralis"_s, u"event JSON"_s},
        {u"Speaker direction"_s, switches.demoSpeakerLights ? u"DEMO"_s : u"event JSON"_s},
        {u"Audio mapping"_s, switches.invertAudioDirection ? u"inverted"_s : u"normal"_s},
    };
}

PanelRows safetyRows() {
    return {
        {u"Unknown may converse"_s, u"yes"_s},  {u"Unknown may control"_s, u"no"_s},
        {u"Recognition"_s, u"first"_s},         {u"Owner trust"_s, u"later"_s},
        {u"Visual tracking"_s, u"not trust"_s},
    };
}

QLabel* makeLabel(const QString& text, const QString& objectName) {
    auto* label = new QLabel(text);
    // Some labels show texts of drivers and of other programs.
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(Qt::NoTextInteraction);
    if (!objectName.isEmpty())
        label->setObjectName(objectName);
    return label;
}

QLabel* makeWrappedLabel(const QString& text, const QString& objectName) {
    QLabel* label = makeLabel(text, objectName);
    label->setWordWrap(true);
    return label;
}

QLabel* statusPill(const QString& text, const QString& state) {
    auto* pill = new QLabel(text);
    pill->setObjectName(u"statusPill"_s);
    pill->setProperty("state", state);
    pill->setAlignment(Qt::AlignCenter);
    pill->setMinimumHeight(24);
    pill->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    return pill;
}

QFrame* buildPanel(const QString& title, const PanelRows& rows) {
    auto* panel = new QFrame;
    panel->setObjectName(u"panel"_s);
    auto* layout = new QVBoxLayout(panel);
    layout->setContentsMargins(12, 10, 12, 10);
    layout->setSpacing(6);

    layout->addWidget(makeWrappedLabel(title, u"panelTitle"_s));
    auto* divider = new QFrame;
    divider->setFrameShape(QFrame::HLine);
    divider->setObjectName(u"divider"_s);
    layout->addWidget(divider);

    panel->setAccessibleName(title);
    QStringList described;
    for (const auto& [keyText, valueText] : rows) {
        described.append(keyText + u": "_s + valueText);
        QLabel* value = makeWrappedLabel(valueText, u"valueLabel"_s);
        value->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        auto* row = new QHBoxLayout;
        row->addWidget(makeWrappedLabel(keyText, u"keyLabel"_s), 1);
        row->addWidget(value, 1);
        layout->addLayout(row);
    }
    panel->setAccessibleDescription(described.join(u", "_s));
    return panel;
}

QScrollArea* scrollAreaAround(QWidget* content) {
    auto* area = new QScrollArea;
    area->setWidget(content);
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // Both would fill themselves with the palette's window color.
    content->setAutoFillBackground(false);
    area->viewport()->setAutoFillBackground(false);
    return area;
}

QScrollArea* buildRightPanels(const CommandLine& switches) {
    auto* container = new QWidget;
    auto* layout = new QVBoxLayout(container);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(10);
    layout->addWidget(buildPanel(u"ROOM AWARENESS"_s, roomAwarenessRows(switches)));
    layout->addWidget(buildPanel(u"SENSOR STATUS"_s, sensorStatusRows(switches)));
    layout->addWidget(buildPanel(u"SAFETY / TRUST"_s, safetyRows()));
    layout->addStretch();

    QScrollArea* area = scrollAreaAround(container);
    area->setMinimumWidth(0);
    area->setMaximumWidth(360);
    area->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Expanding);
    area->setAccessibleName(u"Side panels"_s);
    area->setAccessibleDescription(u"Room awareness, sensor status, safety and trust"_s);
    return area;
}
