#include "enroll/enroll_window.h"

#include "app/identity.h"
#include "enroll/sensor_feed.h"
#include "enroll/station_ring.h"
#include "ui/stream_image_widget.h"
#include "ui/style_sheet.h"

#include <QDateTime>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace enroll {

using namespace Qt::StringLiterals;

namespace {

constexpr int tickMs = 250;
constexpr QSize usualSize(1280, 800);
/// The longest sentences fit, and a small laptop's screen shows all of it.
constexpr QSize leastSize(1100, 690);

qint64 now() {
    return QDateTime::currentMSecsSinceEpoch();
}

QLabel* sentenceLabel(const QString& objectName, const QString& accessibleName) {
    auto* label = new QLabel;
    label->setObjectName(objectName);
    label->setAccessibleName(accessibleName);
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    return label;
}

/// The tag over a box has room for a distance, not for a sentence.
FaceOverlay boxOf(const FaceLook& face, bool kept) {
    FaceOverlay overlay;
    overlay.rect = QRect(face.box.x, face.box.y, face.box.width, face.box.height);
    overlay.label = face.meters ? QString::number(*face.meters, 'f', 1) + u" m"_s : u"face"_s;
    overlay.color = kept ? identity::ownerColor : identity::bodyColor;
    overlay.tier.clear();
    return overlay;
}

} // namespace

QString enrollStyleSheet() {
    // A letter can be read from two metres when it is about 1 cm high.
    return u"QLabel#enrollPrompt { font-size: 40px; font-weight: 800; color: #f4f8ff; }"
           "QLabel#enrollHint { font-size: 32px; font-weight: 600; color: #ffcc66; }"
           "QLabel#enrollReport { font-size: 17px; color: #d9e3f0; }"
           "QPushButton#viewButton { font-size: 17px; padding: 10px 14px; }"
           "QPushButton#viewButton:disabled { color: #5b6a7d; }"
           "QPushButton#viewButton:focus { border-color: #35c4ee; }"_s;
}

EnrollWindow::EnrollWindow(WindowSession newSession, QWidget* parent)
    : QMainWindow(parent), session(std::move(newSession)) {
    setWindowTitle(u"Lumeno enrolment"_s);
    auto* root = new QWidget;
    root->setObjectName(u"root"_s);
    auto* columns = new QHBoxLayout;
    columns->addWidget(buildPicture(), 5);
    columns->addWidget(buildGuide(), 4);
    auto* rows = new QVBoxLayout(root);
    rows->addLayout(columns, 1);
    rows->addWidget(buildButtons());
    setCentralWidget(root);
    applyLook(this, false);
    setStyleSheet(styleSheet() + enrollStyleSheet());
    setMinimumSize(leastSize);
    resize(usualSize);
    connect(&ticks, &QTimer::timeout, this, &EnrollWindow::onTick);
    ticks.start(tickMs);
    refresh();
    // Else it would be on "Leave", the only button that is enabled at first.
    picture->setFocus();
}

QWidget* EnrollWindow::buildPicture() {
    picture = new StreamImageWidget(u"Waiting for the sensor's picture"_s, false);
    picture->setAccessibleName(u"Live picture"_s);
    return picture;
}

QWidget* EnrollWindow::buildGuide() {
    auto* guide = new QWidget;
    auto* rows = new QVBoxLayout(guide);
    prompt = sentenceLabel(u"enrollPrompt"_s, u"What to do"_s);
    hint = sentenceLabel(u"enrollHint"_s, u"What is in the way"_s);
    report = sentenceLabel(u"enrollReport"_s, u"Report"_s);
    report->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    ring = new StationRing;
    rows->addWidget(prompt);
    rows->addWidget(hint);
    rows->addWidget(report);
    rows->addWidget(ring, 1);
    return guide;
}

QWidget* EnrollWindow::buildButtons() {
    auto* row = new QWidget;
    new QHBoxLayout(row);
    repeatButton = addButton(row, u"Repeat (R)"_s,
                             u"Drops the samples of this station and asks for it again"_s,
                             &EnrollWindow::onRepeat);
    skipButton =
        addButton(row, u"Skip (S)"_s, u"Goes on to the next station"_s, &EnrollWindow::onSkip);
    finishButton =
        addButton(row, u"Finish (F)"_s, u"Goes to the report"_s, &EnrollWindow::onFinish);
    keepButton = addButton(row, u"Keep (K)"_s, u"Writes the samples"_s, &EnrollWindow::onKeep);
    addButton(row, u"Leave (Esc)"_s, u"Closes the window; what was not kept is gone"_s,
              &EnrollWindow::onLeave);
    return row;
}

QPushButton* EnrollWindow::addButton(QWidget* row, const QString& text, const QString& purpose,
                                     void (EnrollWindow::*slot)()) {
    auto* button = new QPushButton(text);
    button->setObjectName(u"viewButton"_s);
    button->setAccessibleName(text.section(u' ', 0, 0));
    button->setAccessibleDescription(purpose);
    button->setToolTip(purpose);
    connect(button, &QPushButton::clicked, this, slot);
    row->layout()->addWidget(button);
    return button;
}

void EnrollWindow::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_R:
        return repeatButton->click();
    case Qt::Key_S:
        return skipButton->click();
    case Qt::Key_F:
        return finishButton->click();
    case Qt::Key_K:
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return keepButton->click();
    case Qt::Key_Escape:
        return onLeave();
    default:
        QMainWindow::keyPressEvent(event);
    }
}

void EnrollWindow::showPicture(const QImage& color) {
    picture->setFrame(StreamFrame(color)); // nobody writes its pixels any more
}

void EnrollWindow::onLook(const FrameLook& look) {
    session.onLook(look);
    refresh();
}

void EnrollWindow::onFailed(const QString& sentence) {
    session.onFailed(sentence);
    refresh();
}

void EnrollWindow::onSilent() {
    session.onSilent(silenceSentence());
    refresh();
}

void EnrollWindow::onRepeat() {
    const bool withoutPictures = session.repeat(now());
    refresh();
    if (withoutPictures)
        Q_EMIT sensorWanted();
}

void EnrollWindow::onSkip() {
    session.skip(now());
    refresh();
}

void EnrollWindow::onFinish() {
    session.finish();
    refresh();
}

void EnrollWindow::onKeep() {
    session.keep();
    refresh();
}

void EnrollWindow::onLeave() {
    close();
}

void EnrollWindow::onTick() {
    session.passTime(now());
    refresh();
}

/// A box around every face, with its distance: what is wrong stands in large letters beside it. A
/// face that was just kept is green. Without a sitting nobody looks any more.
void EnrollWindow::showBoxes() {
    QList<FaceOverlay> overlays;
    if (session.isGuiding()) {
        const FaceLook* kept =
            session.newestFlaw() == Flaw::None ? largestFace(session.newestLook()) : nullptr;
        for (const FaceLook& face : session.newestLook().faces)
            overlays.append(boxOf(face, &face == kept));
    }
    picture->setOverlays(overlays);
}

void EnrollWindow::refresh() {
    const WindowView view = session.view();
    prompt->setText(view.prompt);
    hint->setText(view.hint);
    hint->setVisible(!view.hint.isEmpty());
    report->setText(view.report.join(u"\n\n"_s));
    report->setVisible(!view.report.isEmpty());
    // Whoever just pressed "Finish" is handed on to "Keep", and not to "Leave": the focus goes to
    // the next button that is enabled.
    keepButton->setEnabled(view.canKeep);
    repeatButton->setEnabled(view.canRepeat);
    skipButton->setEnabled(view.canSkip);
    finishButton->setEnabled(view.canFinish);
    if (const StationPlan* plan = session.stationPlan())
        ring->setPlan(*plan);
    ring->setCrop(view.lastCrop);
    showBoxes();
}

} // namespace enroll
