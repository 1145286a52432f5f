#pragma once

#include "app/face_overlay.h"
#include "app/voice_direction_status.h"

#include <QFont>
#include <QImage>
#include <QList>
#include <QRect>
#include <QSize>
#include <QString>

/// Everything that a stream widget can be given.
struct StreamScene {
    QString placeholder = QStringLiteral("Waiting for RGB stream");
    bool showVoice = false;
    QImage image;
    QList<FaceOverlay> overlays;
    VoiceDirectionStatus voice;
    QRect crop;
    QString label;
};

/// What a stream widget of `size` shows of `scene`, painted anew, step by step and without any
/// thought of speed. Texts have to be single lines. The image's format must be one without alpha.
QImage paintPlainly(const StreamScene& scene, const QSize& size, const QFont& font,
                    qreal devicePixelRatio = 1.0);
