#pragma once

#include "app/face_overlay.h"
#include "app/rate_limit.h"
#include "app/voice_direction_status.h"
#include "frames/stream_frame.h"
#include "ui/fitted_picture.h"

#include <QImage>
#include <QList>
#include <QRect>
#include <QString>
#include <QWidget>

/// Shows one live stream: the newest image fitted into the widget (or a part of it), overlay boxes
/// with captions, a banner that names the crop, a placeholder while there is no image and, where
/// asked for, the speaker lights with the voice text. It keeps no history: each setter stores its
/// value and schedules a repaint. Interface thread only.
class StreamImageWidget : public QWidget {
    Q_OBJECT

public:
    StreamImageWidget(const QString& placeholder, bool showVoiceOverlay, QWidget* parent = nullptr);
    ~StreamImageWidget() override;

    /// Shows a deep copy of `image`, whose sender may write to it again; a null image brings the
    /// placeholder back.
    void setImage(const QImage& image);
    /// Shows a picture that nobody writes any more, without copying it; a null frame brings the
    /// placeholder back.
    void setFrame(const StreamFrame& frame);
    /// Shown as one paragraph while there is no image.
    void setPlaceholder(const QString& text);
    /// Boxes in pixels of the whole image.
    void setOverlays(const QList<FaceOverlay>& overlays);
    void setVoiceStatus(const VoiceDirectionStatus& status);
    /// Shows only the part of the image that lies in `crop` (image pixels); a null or reversed
    /// rectangle, and one outside the image, shows all of it. An empty label shows no banner.
    void setSourceCrop(const QRect& crop, const QString& label);

    /// What the tile shows at this moment, in words: the placeholder, or the number of people that
    /// are marked and the banner.
    QString description() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    bool paintPicture(QPainter& painter, const QRect& area);
    void announceNewDescription();

    StreamFrame frame;
    QString placeholder;
    bool showVoiceOverlay;
    QList<FaceOverlay> overlays;
    VoiceDirectionStatus voiceStatus;
    QRect sourceCrop;
    QString sourceCropLabel;
    FittedPicture fittedPicture;
    QString announced; ///< The description that screen readers were last told.
    RateLimit announcements;
};
