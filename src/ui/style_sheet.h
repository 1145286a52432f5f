#pragma once

#include <QString>

/// The whole look of the program as one style sheet. It goes by object names and by the dynamic
/// properties "layoutDebug", "state", "active" and "unknown"; builders set those and no colours.
QString applicationStyleSheet();
