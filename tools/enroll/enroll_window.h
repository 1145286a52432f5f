#pragma once

#include "enroll/window_session.h"

#include <QMainWindow>
#include <QTimer>

class QLabel;
class QPushButton;
class StreamImageWidget;

namespace enroll {

class StationRing;

/// Leads the owner through a sitting: the live picture, a ring of stations, one sentence at a time,
/// and at the end the report. Everything works by keys: R repeats, S skips, F finishes, K or Return
/// keeps, Escape leaves. Nothing is kept before "Keep".
class EnrollWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit EnrollWindow(WindowSession session, QWidget* parent = nullptr);

    // What the sensor says.
    void showPicture(const QImage& color);
    void onLook(const enroll::FrameLook& look);
    void onFailed(const QString& sentence);
    void onSilent();

    WindowPhase phase() const { return session.view().phase; }

protected:
    void keyPressEvent(QKeyEvent* event) override;

Q_SIGNALS:
    /// The person wants the sensor to be opened again.
    void sensorWanted();

private:
    QWidget* buildPicture();
    QWidget* buildGuide();
    QWidget* buildButtons();
    QPushButton* addButton(QWidget* row, const QString& text, const QString& purpose,
                           void (EnrollWindow::*slot)());
    void refresh();
    void showBoxes();

    void onRepeat();
    void onSkip();
    void onFinish();
    void onKeep();
    void onLeave();
    void onTick();

    WindowSession session;
    QTimer ticks;
    StreamImageWidget* picture = nullptr;
    StationRing* ring = nullptr;
    QLabel* prompt = nullptr;
    QLabel* hint = nullptr;
    QLabel* report = nullptr;
    QPushButton* repeatButton = nullptr;
    QPushButton* skipButton = nullptr;
    QPushButton* finishButton = nullptr;
    QPushButton* keepButton = nullptr;
};

/// What the window adds to the application's style sheet: the large letters.
QString enrollStyleSheet();

} // namespace enroll
