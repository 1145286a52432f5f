#pragma once

#include <QString>

class QWidget;

/// The whole look of the program as one style sheet. It goes by object names and by the dynamic
/// properties "layoutDebug", "state", "active" and "unknown"; builders set names and the last
/// three, and no colours.
QString applicationStyleSheet();

/// What the layout-debug mode adds: the outline of frames, whose own borders would win otherwise.
QString layoutDebugStyleSheet();

/// Gives a finished window its look: the style sheet and the font of its first rule, and on the
/// scroll bars, which the platform's style draws, a palette of the same colours. In layout-debug
/// mode it also sets the property "layoutDebug" of every label and frame that gets an outline.
void applyLook(QWidget* window, bool layoutDebug);
