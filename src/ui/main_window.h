#pragma once

#include "app/command_line.h"
#include "app/face_overlay.h"
#include "app/rate_limit.h"
#include "app/voice_direction_status.h"
#include "awareness/awareness_pass.h"
#include "frames/stream_frame.h"
#include "ui/side_panels.h"
#include "ui/view_specs.h"

#include <QElapsedTimer>
#include <QHash>
#include <QList>
#include <QMainWindow>

class FaceRecognitionWorker;
class KinectStreamWorker;
class QPushButton;
class QScrollArea;
class QSplitter;
class QStackedWidget;
class QTimer;
class StatusLine;
class StreamImageWidget;
struct FollowDisplay;
struct TileSpec;

/// The newest data of the acquisition worker. An image that is missing from a frame set leaves the
/// previous one in place.
struct NewestFrames {
    StreamFrame lastRgbImage;
    StreamFrame lastIrImage;
    StreamFrame lastDepthImage;
    DepthFrame lastDepth;
};

/// The one top-level window of the program: it owns the views, the side panels and the workers, and
/// passes what the workers report on to the functions that know what to do with it. Everything here
/// runs on the interface thread.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    using ViewSpec = ::ViewSpec;
    using BodyTrack = ::BodyTrack;

    /// Builds the window and, unless in mock mode, starts the workers. `personLostMs`, 0 or more,
    /// is the time after which a lost person is dropped.
    MainWindow(bool layoutDebug, bool mockMode, bool demoUi, bool demoSpeakerLights,
               int personLostMs, bool invertAudioDirection, QWidget* parent = nullptr);

    /// Stops the workers, each waited for at most 3 s.
    ~MainWindow() override;

    /// Shows the view whose key is exactly `key`; an unknown key changes nothing.
    void setView(const QString& key);

    void startKinectWorker();
    void stopKinectWorker();
    void startFaceWorker();
    void stopFaceWorker();

    // What the workers report.
    void onStreamStatus(const QString& status);
    void onStreamError(const QString& message);
    void onFaceStatus(const QString& status);
    void onFramesReady(const QImage& rgb, const QImage& ir, const QImage& depth);
    void onDepthRawReady(const QList<float>& depth_mm, int width, int height);
    void onFaceOverlaysReady(const QList<FaceOverlay>& overlays);

    /// Joins the newest faces, depth and voice reading: who is where, and where the Follow view
    /// looks.
    void updateAwarenessOverlays();

    /// The newest data and the switches, as the next awareness pass looks at them.
    AwarenessInput awarenessInput() const;

    /// Reads what the voice service left in the user's state folder, and shows it.
    void pollAuralisStatus();

    /// Hands the newest images, overlays and voice reading to every tile.
    void updateStreamPixmaps();
    void updateStreamLabel(const QString& name, const StreamFrame& image);

    void resizeToScreen();
    void updateResponsiveLayout();
    QString layoutModeName() const;

    /// The tile of this key; null where there is none.
    StreamImageWidget* streamLabel(const QString& key) const { return streamLabels.value(key); }

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    // Builders; each returns the widget that it made, without a parent.
    QWidget* buildCentral();
    QWidget* buildTopBar();
    QWidget* buildViewPage(const ViewSpec& spec);
    QPushButton* makeViewButton(const ViewSpec& spec);
    QLabel* makeLabel(const QString& text, const QString& objectName) const;
    QFrame* buildPanel(const QString& title, const PanelRows& rows) const;
    QScrollArea* buildRightPanels() const;
    QFrame* buildMockScene(const ViewSpec& view);
    QWidget* buildSpeakerHud() const;
    QWidget* buildComboStreamView();
    /// Makes the tile `key`, in place of an earlier one of the same key.
    StreamImageWidget* buildStreamLabel(const QString& key, const QString& placeholder,
                                        bool showVoiceOverlay);
    StreamImageWidget* buildTile(const TileSpec& tile);

    void showView(View view);
    void takeImage(StreamFrame NewestFrames::*stream, const QImage& image);
    void submitToFaceWorker(const StreamFrame& rgb);
    void logAwareness(const AwarenessResult& result);
    void startVoicePoll();
    void updateFollowLabel(StreamImageWidget* widget, const StreamFrame& image);
    void logFollowDisplay(const FollowDisplay& display, const QSize& shown, const QSize& source);

    const CommandLine switches;
    const QList<ViewSpec> views = viewSpecs();

    // Widgets; all belong to the window's tree.
    QList<QPushButton*> viewButtons;
    QStackedWidget* viewStack = nullptr;
    QSplitter* splitter = nullptr;
    QScrollArea* rightPanelsScroll = nullptr;
    StatusLine* statusLabel = nullptr;
    StatusLine* voiceStatusLabel = nullptr;
    StatusLine* layoutDebugLabel = nullptr; ///< Only in layout-debug mode.
    QHash<QString, StreamImageWidget*> streamLabels;

    QTimer* voiceTimer = nullptr; ///< Once a second, as long as the window lives.

    QString currentView = QStringLiteral("combo");
    bool compactLayout = false;

    KinectStreamWorker* kinectWorker = nullptr;  ///< Owned; null in mock mode.
    FaceRecognitionWorker* faceWorker = nullptr; ///< Owned; null in mock mode.
    QElapsedTimer faceFrameTimer; ///< Since a frame was last handed to the face worker.

    NewestFrames frames;
    QList<FaceOverlay> faceOverlays;
    VoiceDirectionStatus voiceStatus;
    AwarenessState awareness;
    /// What the newest pass says of the follow target, for the Follow view's banner.
    QString selectedFollowTarget = QStringLiteral("No follow target");
    RateLimit awarenessLog;
    RateLimit followDisplayLog;
};
