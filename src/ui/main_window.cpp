#include "ui/main_window.h"

#include "face/face_recognition_worker.h"
#include "kinect/kinect_stream_worker.h"
#include "ui/focus_ring.h"
#include "ui/page_content.h"
#include "ui/program_icon.h"
#include "ui/responsive_layout.h"
#include "ui/status_line.h"
#include "ui/status_texts.h"
#include "ui/stream_image_widget.h"
#include "ui/stream_tiles.h"
#include "ui/style_sheet.h"
#include "voice/speaker_hud.h"

#include <QButtonGroup>
#include <QFrame>
#include <QGridLayout>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QSplitter>
#include <QStackedWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

constexpr int viewButtonColumns = 4;
constexpr int comboColumns = 3;

/// The part of the primary screen that windows may cover; nothing where there is no screen.
std::optional<QRect> workArea() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen ? std::optional(screen->availableGeometry()) : std::nullopt;
}

std::optional<QSize> sizeOf(const std::optional<QRect>& area) {
    return area ? std::optional(area->size()) : std::nullopt;
}

} // namespace

MainWindow::MainWindow(bool layoutDebug, bool mockMode, bool demoUi, bool demoSpeakerLights,
                       int personLostMs, bool invertAudioDirection, QWidget* parent)
    : QMainWindow(parent), switches{.layoutDebug = layoutDebug,
                                    .mockMode = mockMode,
                                    .demoUi = demoUi,
                                    .demoSpeakerLights = demoSpeakerLights,
                                    .personLostMs = personLostMs,
                                    .invertAudioDirection = invertAudioDirection} {
    setWindowTitle(u"Lumeno Control Center"_s);
    setWindowIcon(programIcon());
    setCentralWidget(buildCentral());
    setMinimumSize(minimumWindowSize(sizeOf(workArea())));
    setView(u"combo"_s);
    resizeToScreen();
    startKinectWorker();
    startFaceWorker();
    startVoicePoll();
    applyLook(this, switches.layoutDebug);
    new FocusRing(centralWidget());
}

MainWindow::~MainWindow() {
    stopFaceWorker();
    stopKinectWorker();
}

QWidget* MainWindow::buildCentral() {
    auto* root = new QWidget;
    root->setObjectName(u"root"_s);
    auto* layout = new QVBoxLayout(root);
    layout->setContentsMargins(14, 12, 14, 12);
    layout->setSpacing(10);
    layout->addWidget(buildTopBar());

    viewStack = new QStackedWidget;
    viewStack->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    viewStack->setMinimumSize(0, 0);
    for (const ViewSpec& view : views)
        viewStack->addWidget(buildViewPage(view));
    rightPanelsScroll = buildRightPanels();

    splitter = new QSplitter(Qt::Horizontal);
    splitter->setChildrenCollapsible(false);
    splitter->setHandleWidth(8);
    splitter->addWidget(viewStack);
    splitter->addWidget(rightPanelsScroll);
    splitter->setStretchFactor(0, 4);
    splitter->setStretchFactor(1, 1);
    layout->addWidget(splitter, 1);

    const auto addStatusLine = [layout](const QString& purpose, const StatusText& text) {
        auto* line = new StatusLine(purpose);
        line->setText(text);
        layout->addWidget(line);
        return line;
    };
    statusLabel =
        addStatusLine(u"Stream and face status"_s, statusText::atStart(switches.mockMode));
    voiceStatusLabel = addStatusLine(u"Voice direction status"_s,
                                     {u"Auralis: checking live direction status"_s, {}, {}});
    if (switches.layoutDebug)
        layoutDebugLabel = addStatusLine(u"Layout"_s, {u"layout debug pending"_s, {}, {}});
    return root;
}

QWidget* MainWindow::buildTopBar() {
    auto* bar = new QWidget;
    auto* layout = new QVBoxLayout(bar);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(12);

    auto* titles = new QVBoxLayout;
    titles->setSpacing(2);
    titles->addWidget(makeLabel(u"Lumeno Control Center"_s, u"appTitle"_s));
    titles->addWidget(makeWrappedLabel(
        u"Local Velmor security/control dashboard - Gate 4 live awareness"_s, u"appSubtitle"_s));
    auto* heading = new QHBoxLayout;
    heading->addLayout(titles, 1);
    heading->addWidget(statusPill(u"Gate 4"_s, u"safe"_s));
    heading->addWidget(statusPill(u"Pending"_s, u"pending"_s));
    layout->addLayout(heading);

    auto* buttons = new QGridLayout;
    buttons->setHorizontalSpacing(8);
    buttons->setVerticalSpacing(6);
    auto* group = new QButtonGroup(this);
    group->setExclusive(true);
    for (int i = 0; i < int(views.size()); ++i) {
        QPushButton* button = makeViewButton(views.at(i));
        button->setToolTip(u"%1, key %2"_s.arg(views.at(i).buttonText).arg(i + 1));
        button->setAccessibleName(u"%1 view, key %2"_s.arg(views.at(i).buttonText).arg(i + 1));
        button->setAccessibleDescription(views.at(i).description);
        buttons->addWidget(button, i / viewButtonColumns, i % viewButtonColumns);
        viewButtons.append(button);
        group->addButton(button);
    }
    for (int column = 0; column < viewButtonColumns; ++column)
        buttons->setColumnStretch(column, 1);
    layout->addLayout(buttons);
    return bar;
}

QPushButton* MainWindow::makeViewButton(const ViewSpec& spec) {
    auto* button = new QPushButton(spec.buttonText);
    button->setObjectName(u"viewButton"_s);
    button->setCheckable(true);
    button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(button, &QPushButton::clicked, this, [this, key = spec.key] { setView(key); });
    return button;
}

QWidget* MainWindow::buildViewPage(const ViewSpec& spec) {
    return pageAround(buildMockScene(spec), spec);
}

QLabel* MainWindow::makeLabel(const QString& text, const QString& objectName) const {
    return ::makeLabel(text, objectName);
}

QFrame* MainWindow::buildPanel(const QString& title, const PanelRows& rows) const {
    return ::buildPanel(title, rows);
}

QScrollArea* MainWindow::buildRightPanels() const {
    return ::buildRightPanels(switches);
}

QWidget* MainWindow::buildSpeakerHud() const {
    return ::buildSpeakerHud(switches.demoSpeakerLights);
}

QFrame* MainWindow::buildMockScene(const ViewSpec& view) {
    QFrame* frame = contentFrame(view.view);
    auto* layout = new QVBoxLayout(frame);
    if (isStreamPage(view.view)) {
        layout->setContentsMargins(4, 4, 4, 4);
        layout->setSpacing(4);
    } else {
        layout->setContentsMargins(12, 10, 12, 10);
        layout->setSpacing(6);
        layout->addLayout(pillRow(view.view, switches.demoUi));
    }
    const QList<TileSpec> tiles = tilesOf(view.view);
    if (tiles.isEmpty())
        addPeopleScene(layout, view.view, switches);
    else if (tiles.size() == 1)
        layout->addWidget(buildTile(tiles.first()), 1);
    else
        layout->addWidget(buildComboStreamView(), 1);
    return frame;
}

QWidget* MainWindow::buildComboStreamView() {
    QWidget* combo = comboContainer();
    auto* grid = new QGridLayout(combo);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(8);
    grid->setVerticalSpacing(8);
    const QList<TileSpec> tiles = tilesOf(View::Combo);
    grid->addWidget(buildTile(tiles.at(0)), 0, 0, 1, comboColumns);
    grid->addWidget(buildTile(tiles.at(1)), 1, 0);
    grid->addWidget(buildTile(tiles.at(2)), 1, 1);
    grid->addWidget(buildSkeletalTile(), 1, 2);
    for (int column = 0; column < comboColumns; ++column)
        grid->setColumnStretch(column, 1);
    grid->setRowStretch(0, 5);
    grid->setRowStretch(1, 2);
    return combo;
}

StreamImageWidget* MainWindow::buildTile(const TileSpec& tile) {
    StreamImageWidget* widget = buildStreamLabel(tile.key, tile.placeholder, tile.voice);
    widget->setMinimumSize(tile.minimumSize);
    widget->setAccessibleName(streamName(tile.stream));
    return widget;
}

StreamImageWidget* MainWindow::buildStreamLabel(const QString& key, const QString& placeholder,
                                                bool showVoiceOverlay) {
    auto* widget = new StreamImageWidget(placeholder, showVoiceOverlay, nullptr);
    streamLabels.insert(key, widget);
    return widget;
}

void MainWindow::setView(const QString& key) {
    if (const std::optional<View> view = viewNamed(key))
        showView(*view);
}

void MainWindow::showView(View view) {
    const int index = static_cast<int>(view);
    viewStack->setCurrentIndex(index);
    currentView = views.at(index).key;
    viewButtons.at(index)->setChecked(true);
    viewButtons.at(index)->setFocus();
    statusLabel->setText(statusText::forView(views.at(index).buttonText));
    updateResponsiveLayout();
}

void MainWindow::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Q || event->key() == Qt::Key_Escape)
        close();
    else if (const std::optional<View> view = viewForKeyboardKey(event->key()))
        showView(*view);
    else
        QMainWindow::keyPressEvent(event);
}

void MainWindow::resizeEvent(QResizeEvent* event) {
    QMainWindow::resizeEvent(event);
    updateResponsiveLayout();
    updateStreamPixmaps();
}

void MainWindow::resizeToScreen() {
    const std::optional<QRect> area = workArea();
    resize(firstWindowSize(sizeOf(area)));
    // The minimum size may have enlarged the window: its center is taken from its real size.
    if (area)
        move(centeredTopLeft(*area, size()));
    updateResponsiveLayout();
}

void MainWindow::updateResponsiveLayout() {
    if (!splitter || !rightPanelsScroll)
        return;
    const ResponsiveLayout layout = responsiveLayout(size());
    if (layout.compact != compactLayout) {
        compactLayout = layout.compact;
        splitter->setOrientation(compactLayout ? Qt::Vertical : Qt::Horizontal);
    }
    rightPanelsScroll->setMinimumWidth(layout.panelMinimumWidth);
    rightPanelsScroll->setMaximumSize(layout.panelMaximumWidth, layout.panelMaximumHeight);
    splitter->setSizes(layout.splitterSizes);
    for (StatusLine* line : {statusLabel, voiceStatusLabel, layoutDebugLabel}) {
        if (line)
            line->setMaximumRows(layout.statusLineRows);
    }
    if (layoutDebugLabel)
        layoutDebugLabel->setText({layoutDebugText(compactLayout, size(), minimumSize()), {}, {}});
}

QString MainWindow::layoutModeName() const {
    return ::layoutModeName(compactLayout);
}

void MainWindow::startKinectWorker() {
    if (switches.mockMode) {
        onStreamStatus(u"Mock/demo mode: Kinect streams disabled"_s);
        return;
    }
    kinectWorker = new KinectStreamWorker(this);
    connect(kinectWorker, &KinectStreamWorker::framesReady, this, &MainWindow::onFramesReady);
    connect(kinectWorker, &KinectStreamWorker::depthRawReady, this, &MainWindow::onDepthRawReady);
    connect(kinectWorker, &KinectStreamWorker::statusChanged, this, &MainWindow::onStreamStatus);
    connect(kinectWorker, &KinectStreamWorker::streamError, this, &MainWindow::onStreamError);
    kinectWorker->start();
}

void MainWindow::stopKinectWorker() {
    WorkerThread::release(std::exchange(kinectWorker, nullptr));
}

void MainWindow::startFaceWorker() {
    if (switches.mockMode)
        return;
    faceWorker = new FaceRecognitionWorker(switches.personLostMs, this);
    connect(faceWorker, &FaceRecognitionWorker::overlaysReady, this,
            &MainWindow::onFaceOverlaysReady);
    connect(faceWorker, &FaceRecognitionWorker::statusChanged, this, &MainWindow::onFaceStatus);
    faceWorker->start();
}

void MainWindow::stopFaceWorker() {
    WorkerThread::release(std::exchange(faceWorker, nullptr));
}

void MainWindow::onStreamStatus(const QString& status) {
    statusLabel->setText(statusText::forStream(status));
}

void MainWindow::onStreamError(const QString& message) {
    statusLabel->setText(statusText::forStreamError(message));
    for (StreamImageWidget* widget : std::as_const(streamLabels))
        widget->setPlaceholder(message);
}

void MainWindow::onFaceStatus(const QString& status) {
    statusLabel->setText(statusText::forFace(status));
}
