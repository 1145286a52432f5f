#include "ui/stream_geometry.h"

#include <algorithm>
#include <cmath>

namespace {

// Beyond any image or screen, and small enough that sums of two never overflow an int.
constexpr int farAway = 1 << 29;

int within(double coordinate) {
    return static_cast<int>(std::clamp(coordinate, double(-farAway), double(farAway)));
}

/// A rectangle by its edges, the last two inclusive.
QRect fromEdges(double left, double top, double right, double bottom) {
    return {QPoint(within(left), within(top)), QPoint(within(right), within(bottom))};
}

/// `rect` moved by minus `offset`.
QRect movedBack(const QRect& rect, const QPoint& offset) {
    return fromEdges(double(rect.left()) - offset.x(), double(rect.top()) - offset.y(),
                     double(rect.right()) - offset.x(), double(rect.bottom()) - offset.y());
}

struct LightRow {
    int width;
    int spacing;
    int firstLeft;
    int top;
};

LightRow lightRow(const QSize& widgetSize) {
    const bool roomy = widgetSize.width() >= 420;
    const int middle = (widgetSize.width() - 1) / 2;
    const int top = widgetSize.height() - 1 - (widgetSize.height() >= 170 ? 44 : 24);
    return roomy ? LightRow{22, 29, middle - 83, top} : LightRow{16, 21, middle - 60, top};
}

} // namespace

QRect streamGeometry::sourceRect(const QRect& crop, const QSize& imageSize) {
    if (!crop.isValid())
        return {};
    const QRect inside = movedBack(crop, {}).intersected(QRect(QPoint(0, 0), imageSize));
    return inside.isEmpty() ? QRect() : inside;
}

QRect streamGeometry::fittedIn(const QRect& area, const QSize& imageSize) {
    const QSize size = imageSize.scaled(area.size(), Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
    return {QPoint(area.left() + (area.width() - size.width()) / 2,
                   area.top() + (area.height() - size.height()) / 2),
            size};
}

QRect streamGeometry::devicePixels(const QRectF& onDevice) {
    const QPoint topLeft = onDevice.topLeft().toPoint();
    const QPoint end = onDevice.bottomRight().toPoint();
    return QRect(topLeft, QSize(end.x() - topLeft.x(), end.y() - topLeft.y()).expandedTo({1, 1}));
}

std::optional<QRect> streamGeometry::screenBox(const QRect& box, const ImagePlacement& placement) {
    const QPoint offset = placement.source.isEmpty() ? QPoint() : placement.source.topLeft();
    const QRect moved = movedBack(box, offset);
    if (!placement.source.isEmpty() &&
        !moved.intersects(QRect(QPoint(0, 0), placement.source.size())))
        return std::nullopt;
    const QRect& target = placement.target;
    const double sx = double(target.width()) / placement.shownSize.width();
    const double sy = double(target.height()) / placement.shownSize.height();
    const double left = std::trunc(moved.left() * sx) + target.left();
    const double top = std::trunc(moved.top() * sy) + target.top();
    const double width = std::trunc(moved.width() * sx);
    const double height = std::trunc(moved.height() * sy);
    const QRect visible =
        fromEdges(left, top, left + width - 1, top + height - 1).intersected(target);
    if (visible.isEmpty())
        return std::nullopt;
    return visible;
}

QRect streamGeometry::captionTag(const QRect& screenBox, int textWidth, const QRect& imageTarget) {
    const int width = std::min(std::max(textWidth + 14, 74), imageTarget.width());
    const int left =
        std::max(std::min(screenBox.left(), imageTarget.right() - width), imageTarget.left());
    const int top = std::max(screenBox.top() - 25, imageTarget.top());
    return {left, top, width, 22};
}

QRect streamGeometry::bannerRect(int width) {
    const QRect banner(QPoint(8, 8), QPoint(width - 9, 33));
    return banner.isValid() ? banner : QRect();
}

QRect streamGeometry::speakerLight(int index, const QSize& widgetSize) {
    const LightRow row = lightRow(widgetSize);
    return {row.firstLeft + index * row.spacing, row.top, row.width, 8};
}

QRect streamGeometry::firstVoiceLine(const QSize& widgetSize) {
    const int w = widgetSize.width() - 1;
    const int h = widgetSize.height() - 1;
    return {QPoint(8, h - 30), QPoint(w - 8, h - 15)};
}

QRect streamGeometry::secondVoiceLine(const QSize& widgetSize) {
    const int w = widgetSize.width() - 1;
    const int h = widgetSize.height() - 1;
    return {QPoint(8, h - 15), QPoint(w - 8, h - 2)};
}
