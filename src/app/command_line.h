#pragma once

#include <QStringList>

/// The run-time choices that the command line offers; there is no configuration file.
struct CommandLine {
    bool layoutDebug = false;          ///< --layout-debug
    bool mockMode = false;             ///< --mock or --no-kinect: no sensor, demo scene
    bool demoUi = false;               ///< --demo-ui, implied by mock mode
    bool demoSpeakerLights = false;    ///< --demo-speaker-lights, implied by mock mode
    int personLostMs = 5000;           ///< --person-lost-ms N, 0 or more
    bool invertAudioDirection = false; ///< --invert-audio-direction
    int autoQuitMs = 0;                ///< --auto-quit-ms N; 0 or less: never
};

/// Reads the switches out of the whole argument list, program path included. Switches are matched
/// whole and case-sensitively, the first occurrence of a valued switch counts, unknown arguments
/// are ignored, and a missing or malformed value silently gives the default.
CommandLine parseCommandLine(const QStringList& arguments);
