#include "voice/speaker_hud.h"

#include "ui/side_panels.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

constexpr int lightCount = 6;

QHBoxLayout* buildLights(bool demoLights) {
    auto* row = new QHBoxLayout;
    row->setSpacing(8);
    row->addStretch();
    for (int i = 0; i < lightCount; ++i) {
        auto* light = new QFrame;
        light->setObjectName(u"speakerLight"_s);
        light->setProperty("active", demoLights && (i == 1 || i == 3));
        light->setProperty("unknown", demoLights && i == 4);
        row->addWidget(light);
    }
    row->addStretch();
    return row;
}

QLabel* caption(const QString& text) {
    QLabel* label = makeWrappedLabel(text, u"speakerStatus"_s);
    label->setAlignment(Qt::AlignCenter);
    return label;
}

} // namespace

QWidget* buildSpeakerHud(bool demoLights) {
    auto* hud = new QWidget;
    auto* layout = new QVBoxLayout(hud);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(6);
    layout->addLayout(buildLights(demoLights));
    if (demoLights) {
        layout->addWidget(caption(u"DEMO speaker lights: Tavin / Quill / Renn visual test only"_s));
    } else {
        layout->addWidget(caption(u"Speaker lights: inactive / no live direction data"_s));
        layout->addWidget(
            caption(u"Speaker direction: event JSON status; inactive when stale/stopped"_s));
    }
    return hud;
}
