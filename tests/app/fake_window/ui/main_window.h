#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QMetaType>
#include <QThread>
#include <QTimer>
#include <QWidget>

#include <functional>
#include <optional>

/// What a window was made with, what the application was like at that moment, and what became of
/// it.
struct WindowNotes {
    bool layoutDebug = false;
    bool mockMode = false;
    bool demoUi = false;
    bool demoSpeakerLights = false;
    int personLostMs = 0;
    bool invertAudioDirection = false;
    QWidget* parent = nullptr;
    QString applicationName;
    QString organizationName;
    bool recordTypesKnown = false;
    bool shown = false;
    bool destroyed = false;
    std::optional<qint64> closedAfterMs; ///< Since it was shown.
};

/// In place of the real window where a test looks at how main() puts the program together.
class MainWindow : public QWidget {
public:
    using Notes = WindowNotes;
    static inline Notes notes;
    static inline int constructionMs = 0;              ///< How long the next one takes to build.
    static inline std::function<void()> onceItIsShown; ///< Called from the event loop.

    MainWindow(bool layoutDebug, bool mockMode, bool demoUi, bool demoSpeakerLights,
               int personLostMs, bool invertAudioDirection, QWidget* parent = nullptr)
        : QWidget(parent) {
        notes = {layoutDebug,
                 mockMode,
                 demoUi,
                 demoSpeakerLights,
                 personLostMs,
                 invertAudioDirection,
                 parent,
                 QCoreApplication::applicationName(),
                 QCoreApplication::organizationName(),
                 recordTypesKnown(),
                 false,
                 false,
                 {}};
        QThread::msleep(static_cast<unsigned long>(constructionMs));
    }
    ~MainWindow() override { notes.destroyed = true; }

    static bool recordTypesKnown() {
        return QMetaType::fromName("QVector<float>").isValid() &&
               QMetaType::fromName("QVector<FaceOverlay>").isValid() &&
               QMetaType::fromName("VoiceDirectionStatus").isValid();
    }

protected:
    void showEvent(QShowEvent*) override {
        notes.shown = true;
        sinceShown.start();
        QTimer::singleShot(0, this, [] { onceItIsShown(); });
    }
    void closeEvent(QCloseEvent*) override { notes.closedAfterMs = sinceShown.elapsed(); }

private:
    QElapsedTimer sinceShown;
};
