#pragma once

#include <QMetaType>
#include <QString>

/// The voice service's latest reading and its freshness. Attention data only: nothing in it grants
/// trust. A default-made record means that there is no data.
struct VoiceDirectionStatus {
    bool running = false;      ///< The service is alive.
    bool hasDirection = false; ///< The event held a readable angle and confidence.
    bool fresh = false;        ///< The event is recent, the service runs and says "running".
    bool lowConfidence = true; ///< The direction is of low confidence.
    bool inverted = false;     ///< The audio direction mapping is mirrored.
    double angleDegrees = 0.0; ///< As read, never mirrored here; -60 to +60 across the view.
    double confidence = 0.0;   ///< As read; 0 to 1 by the service's convention.
    qint64 eventTimeMs = 0; ///< Modification time of the event file, ms since the epoch; 0: unread.
    QString source;         ///< Full path of the event file that was consulted.
    QString reason = QStringLiteral("Auralis direction event unavailable"); ///< Cause of the state.
};

Q_DECLARE_METATYPE(VoiceDirectionStatus)
