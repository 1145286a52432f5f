#include "ui/responsive_layout.h"

#include <QWidget>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr int maximumCompactWidth = 1099;

// In lower windows long status lines would squeeze the view buttons.
constexpr int minimumHeightForThreeRows = 480;

// Floors of the stacked layout: below them a tile or a panel row could no longer be read.
constexpr int minimumViewHeight = 260;
constexpr int minimumPanelHeight = 140;
constexpr int minimumPanelLimit = 150;

ResponsiveLayout compactLayoutFor(int height) {
    ResponsiveLayout layout;
    layout.compact = true;
    layout.panelMaximumWidth = QWIDGETSIZE_MAX;
    layout.panelMaximumHeight = height > 452 ? height / 3 : minimumPanelLimit;
    if (2 * height > 782)
        layout.splitterSizes = {2 * height / 3, height > 422 ? height / 3 : minimumPanelHeight};
    else
        layout.splitterSizes = {minimumViewHeight, minimumPanelHeight};
    return layout;
}

ResponsiveLayout normalLayoutFor(int width) {
    ResponsiveLayout layout;
    layout.panelMinimumWidth = 250;
    layout.panelMaximumWidth = 360;
    layout.panelMaximumHeight = QWIDGETSIZE_MAX;
    layout.splitterSizes = {std::max(width - 340, 520), 320};
    return layout;
}

} // namespace

ResponsiveLayout responsiveLayout(const QSize& window) {
    ResponsiveLayout layout = window.width() <= maximumCompactWidth
                                  ? compactLayoutFor(window.height())
                                  : normalLayoutFor(window.width());
    layout.statusLineRows = window.height() < minimumHeightForThreeRows ? 2 : 3;
    return layout;
}

QString layoutModeName(bool compact) {
    return compact ? u"compact"_s : u"normal"_s;
}

QString layoutDebugText(bool compact, const QSize& window, const QSize& minimum) {
    return u"layout: %1 | window: %2x%3 | min: %4x%5 | panels: scrollable"_s.arg(
        layoutModeName(compact), QString::number(window.width()), QString::number(window.height()),
        QString::number(minimum.width()), QString::number(minimum.height()));
}

QSize minimumWindowSize(const std::optional<QSize>& workArea) {
    if (!workArea)
        return {560, 420};
    return {std::clamp(int(workArea->width() * 0.4), 560, 680),
            std::clamp(int(workArea->height() * 0.42), 420, 480)};
}

QSize firstWindowSize(const std::optional<QSize>& workArea) {
    if (!workArea)
        return {960, 620};
    return {int(workArea->width() * 0.75), int(workArea->height() * 0.75)};
}

QPoint centeredTopLeft(const QRect& workArea, const QSize& window) {
    QRect placed(QPoint(), window);
    placed.moveCenter(workArea.center());
    return placed.topLeft();
}
