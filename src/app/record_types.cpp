#include "app/record_types.h"

#include "app/face_overlay.h"
#include "app/voice_direction_status.h"

#include <QList>
#include <QMetaType>

void registerRecordTypes() {
    qRegisterMetaType<QList<float>>("QVector<float>");
    qRegisterMetaType<QList<FaceOverlay>>("QVector<FaceOverlay>");
    qRegisterMetaType<VoiceDirectionStatus>("VoiceDirectionStatus");
}
