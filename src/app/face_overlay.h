#pragma once

#include <QColor>
#include <QList>
#include <QMetaType>
#include <QRect>
#include <QString>

/// One box to draw over the colour stream: a face track published by the face worker, or a body
/// track that the awareness pass adds from depth. A newly made overlay stands for a near face.
struct FaceOverlay {
    QRect rect;                  ///< Box in colour-image pixels, before any crop or scaling.
    QString label;               ///< Identity shown first in the caption; see identity.h.
    QColor color;                ///< Outline and caption colour.
    double confidence = 0.0;     ///< Recogniser distance, lower is closer to the owner; 0 if none.
    QString detector;            ///< "frontal", "profile_left", …, "depth_body" for bodies.
    QString status;              ///< "tracked", "last seen 0.7s", "lost", "body tracked", …
    bool stale = false;          ///< Last seen more than 500 ms ago.
    bool hasDistance = false;    ///< distanceMeters is known.
    double distanceMeters = 0.0; ///< Distance from the sensor in metres, valid when hasDistance.
    bool depthMissing = false;   ///< Depth was looked up and held no usable sample.
    QString speakerNote;         ///< Voice-direction annotation; attention only.
    bool bodyOnly = false;       ///< Stands for a depth body, not for a detected face.
    bool faceEvidence = true;    ///< Rests on a detected face.
    QString tier = QStringLiteral("near"); ///< Distance tier shown in the caption.
    QString reason;                        ///< Why the overlay was accepted or kept.
};

Q_DECLARE_METATYPE(FaceOverlay)
