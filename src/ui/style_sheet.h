#pragma once

#include <QString>

class QWidget;

/// The whole look of the program as one style sheet. It goes by object names and by the dynamic
/// properties "layoutDebug", "state", "active" and "unknown"; builders set those and no colours.
QString applicationStyleSheet();

/// What the layout-debug mode adds: the outline of frames, whose own borders would win otherwise.
QString layoutDebugStyleSheet();

/// Gives a finished window its look: the style sheet, and on the scroll bars, which the platform's
/// style draws, a palette of the same colours.
void applyLook(QWidget* window, bool layoutDebug);
