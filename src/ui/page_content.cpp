#include "ui/page_content.h"

#include "ui/side_panels.h"
#include "voice/speaker_hud.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QScrollArea>
#include <QVBoxLayout>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// The frame of a page in a scroll area. It may be made as low as its content's minimum height:
/// with the tiles' preferred heights the page would scroll where shrinking the tiles is enough.
class PageFrame : public QFrame {
public:
    explicit PageFrame(const QWidget* shownContent) : content(shownContent) {}

    int heightForWidth(int width) const override {
        // A layout uses a widget's explicit minimum height even where the widget's content needs
        // more.
        const int squeezed = content->minimumSizeHint().height() - content->minimumHeight();
        return layout()->totalMinimumHeightForWidth(width) + std::max(squeezed, 0);
    }

private:
    const QWidget* content;
};

/// See comboContainer().
class ComboContainer : public QWidget {
public:
    bool hasHeightForWidth() const override { return false; }
};

QWidget* person(const QString& name, bool unknown) {
    auto* widget = new QWidget;
    auto* layout = new QVBoxLayout(widget);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setAlignment(Qt::AlignCenter);

    auto* label = new QLabel(name);
    label->setObjectName(u"personName"_s);
    label->setAlignment(Qt::AlignCenter);
    layout->addWidget(label);

    auto* silhouette = new QFrame;
    silhouette->setObjectName(u"personSilhouette"_s);
    silhouette->setProperty("unknown", unknown);
    silhouette->setMinimumSize(38, 72);
    silhouette->setMaximumSize(66, 112);
    layout->addWidget(silhouette, 0, Qt::AlignCenter);
    return widget;
}

QLabel* skeletonHint(View view) {
    QLabel* hint = makeWrappedLabel(
        view == View::Skeletal
            ? u"Skeleton/person tracking unavailable. Face/depth awareness is active in Gate 4."_s
            : u"Skeleton tracking is unavailable. Face/depth awareness is active in live mode."_s,
        u"sceneHint"_s);
    hint->setAlignment(Qt::AlignCenter);
    return hint;
}

} // namespace

bool isStreamPage(View view) {
    return view == View::Rgb || view == View::Ir || view == View::Depth || view == View::Combo;
}

QFrame* contentFrame(View view) {
    auto* frame = new QFrame;
    frame->setObjectName(u"mockViewport"_s);
    frame->setMinimumHeight(isStreamPage(view) ? 320 : 130);
    frame->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    return frame;
}

QHBoxLayout* pillRow(View view, bool demoUi) {
    auto* row = new QHBoxLayout;
    if (view == View::Skeletal)
        row->addWidget(statusPill(u"Skeleton unavailable"_s, u"warn"_s));
    else if (demoUi)
        row->addWidget(statusPill(u"DEMO UI"_s, u"warn"_s));
    else
        row->addWidget(statusPill(u"Live streams"_s, u"pending"_s));
    row->addWidget(statusPill(u"No owner trust"_s, u"warn"_s));
    row->addStretch();
    return row;
}

QStringList demoPeople(View view, bool demoUi) {
    if (!demoUi)
        return {};
    if (view == View::Follow)
        return {u"Tavin DEMO"_s};
    if (view == View::Room || view == View::Skeletal)
        return {u"Tavin DEMO"_s, u"Person 2 DEMO"_s};
    return {};
}

void addPeopleScene(QVBoxLayout* layout, View view, const CommandLine& switches) {
    auto* people = new QHBoxLayout;
    people->setSpacing(14);
    people->addStretch();
    const QStringList names = demoPeople(view, switches.demoUi);
    for (const QString& name : names)
        people->addWidget(person(name, name != names.first()));
    if (names.isEmpty())
        people->addWidget(skeletonHint(view), 1);
    people->addStretch();
    layout->addLayout(people, 1);
    layout->addWidget(buildSpeakerHud(switches.demoSpeakerLights));
}

QFrame* buildSkeletalTile() {
    auto* tile = new QFrame;
    tile->setObjectName(u"mockViewport"_s);
    tile->setMinimumSize(140, 95);
    auto* layout = new QVBoxLayout(tile);
    layout->setContentsMargins(10, 8, 10, 8);
    layout->setSpacing(4);
    layout->addWidget(makeLabel(u"SKELETAL"_s, u"panelTitle"_s));
    layout->addWidget(makeWrappedLabel(u"Unavailable in Gate 4"_s, u"sceneHint"_s));
    layout->addWidget(makeWrappedLabel(u"No skeleton backend connected."_s, u"speakerStatus"_s));
    layout->addStretch();
    return tile;
}

QWidget* comboContainer() {
    return new ComboContainer;
}

QWidget* pageAround(QWidget* content, const ViewSpec& view) {
    auto* frame = new PageFrame(content);
    frame->setObjectName(u"viewFrame"_s);
    auto* layout = new QVBoxLayout(frame);
    layout->setContentsMargins(10, 8, 10, 8);
    layout->setSpacing(5);
    layout->addWidget(makeWrappedLabel(view.title, u"currentView"_s));
    layout->addWidget(makeWrappedLabel(view.description, u"sceneHint"_s));
    layout->addWidget(content, 1);
    layout->addWidget(makeWrappedLabel(u"One stable person: Follow View | Multiple people: Room "
                                       "Overview | Lost grace: 5 sec | No rapid mode flicker"_s,
                                       u"muted"_s));

    QScrollArea* page = scrollAreaAround(frame);
    page->setMinimumSize(0, 0);
    page->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    page->setAccessibleName(view.buttonText + u" page"_s);
    page->setAccessibleDescription(view.description);
    return page;
}
