#pragma once

#include "app/status_text.h"
#include "app/voice_direction_status.h"

#include <QByteArray>
#include <QDebug>
#include <QString>

/// What was found of the voice service's two files, before it is given a meaning.
struct VoiceFiles {
    bool processAlive = false;  ///< The pid file names a process that is alive.
    QString eventPath;          ///< Full path of the event file.
    bool eventExists = false;   ///< Something of that name exists.
    bool eventOpened = false;   ///< It could be read; the two values below are only then set.
    QByteArray eventBytes;      ///< Its content, UTF-8.
    qint64 eventModifiedMs = 0; ///< Its modification time, ms since the epoch.
};

/// The age up to which an event counts as recent, in milliseconds. The service writes several times
/// a second and the window looks once a second.
inline constexpr quint64 recentVoiceEventMs = 2000;

/// The process id that a pid file holds: decimal, greater than 0, white space around it ignored; 0
/// where it holds none.
qint64 voiceServicePid(const QByteArray& pidFileContent);

/// Gives the files their meaning at the time `nowMs` (ms since the epoch). Only six keys of the
/// event are looked at, wherever in the text they stand; the first occurrence of each counts, and
/// nothing else needs to be well-formed. Whatever is missing, stale or broken shows as `reason`.
VoiceDirectionStatus voiceDirectionStatus(const VoiceFiles& files, qint64 nowMs,
                                          bool invertAudioDirection);

/// The status line under the views; its foreign part is the reading's reason.
StatusText voiceStatusText(const VoiceDirectionStatus& status);

/// What the diagnostic line says after its prefix.
QDebug operator<<(QDebug debug, const VoiceDirectionStatus& status);
