// The voice members of the main window: once a second the service's files become the current
// reading, the status line and the notes on the overlays.

#include "ui/main_window.h"
#include "ui/status_line.h"
#include "voice/voice_files.h"

#include <QDateTime>
#include <QDir>
#include <QTimer>

using namespace std::chrono_literals;

void MainWindow::startVoicePoll() {
    voiceTimer = new QTimer(this);
    connect(voiceTimer, &QTimer::timeout, this, &MainWindow::pollAuralisStatus);
    voiceTimer->start(1000ms);
    pollAuralisStatus();
}

void MainWindow::pollAuralisStatus() {
    const VoiceFiles files = readVoiceFiles(QDir::homePath());
    // Read after the files, so that an event written meanwhile is not one of the future.
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    voiceStatus = voiceDirectionStatus(files, now, switches.invertAudioDirection);
    qInfo() << "Qt Auralis direction:" << voiceStatus;
    if (voiceStatusLabel)
        voiceStatusLabel->setText(voiceStatusText(voiceStatus));
    updateAwarenessOverlays();
}
