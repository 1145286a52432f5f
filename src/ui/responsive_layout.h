#pragma once

#include <QList>
#include <QPoint>
#include <QRect>
#include <QSize>
#include <QString>
#include <optional>

/// How the views and the side panels share the window. Sizes in pixels.
struct ResponsiveLayout {
    bool compact = false;       ///< Panels below the views instead of beside them.
    int panelMinimumWidth = 0;  ///< Limits of the panels' scroll area.
    int panelMaximumWidth = 0;  ///< The toolkit's largest widget size means unbounded.
    int panelMaximumHeight = 0; ///< As the width.
    QList<int> splitterSizes;   ///< Views, then panels, along the splitter.
    int statusLineRows = 0;     ///< Each status line under the views has at most that many rows.
};

/// The layout for a window of this size: compact up to a width of 1099.
ResponsiveLayout responsiveLayout(const QSize& window);

/// "normal" (side by side) or "compact" (stacked).
QString layoutModeName(bool compact);

/// The line of the layout-debug mode: mode, window size and minimum size.
QString layoutDebugText(bool compact, const QSize& window, const QSize& minimum);

/// Smallest window for a work area of this size; for none, that of a headless start.
QSize minimumWindowSize(const std::optional<QSize>& workArea);

/// First size of the window for a work area of this size; for none, that of a headless start.
QSize firstWindowSize(const std::optional<QSize>& workArea);

/// Where a window of `window` size has its top left so that its center is the work area's.
QPoint centeredTopLeft(const QRect& workArea, const QSize& window);
