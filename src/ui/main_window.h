#pragma once

#include <QMainWindow>

/// The one top-level window of the program.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    MainWindow(bool layoutDebug, bool mockMode, bool demoUi, bool demoSpeakerLights,
               int personLostMs, bool invertAudioDirection, QWidget* parent = nullptr);
};
