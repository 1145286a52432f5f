#pragma once

#include "voice/voice_reading.h"

/// No more than this many bytes of either file are read: what the service writes is a few hundred
/// bytes, and a runaway file must not stop the window.
inline constexpr qint64 voiceFileLimitBytes = 1024 * 1024;

/// Reads the two files that the voice service leaves under `homePath`, and asks the system whether
/// the service's process lives. A process of another user counts as not alive. Only regular files
/// (and links to them) are opened, so that a FIFO or a device cannot hold up the caller. Content
/// and modification time are of one file, also while the service replaces it.
VoiceFiles readVoiceFiles(const QString& homePath);
