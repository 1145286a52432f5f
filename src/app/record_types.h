#pragma once

/// Registers the records that travel between threads in queued signals: the raw depth list as
/// "QVector<float>", the overlay list as "QVector<FaceOverlay>" and "VoiceDirectionStatus". Call
/// once before the first connection; calling again is harmless.
void registerRecordTypes();
