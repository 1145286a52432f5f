#include "awareness/overlay_geometry.h"

#include <algorithm>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

constexpr double headOfBodyHeight = 0.32;
constexpr double headOfBodyWidth = 0.78;
constexpr int minHeadSide = 64; // pixels; a smaller crop target would let the zoom jitter

qint64 widthOf(const QRect& box) {
    return qint64(box.right()) - box.left() + 1;
}

qint64 heightOf(const QRect& box) {
    return qint64(box.bottom()) - box.top() + 1;
}

double areaOf(const QRect& box) {
    return double(widthOf(box)) * double(heightOf(box));
}

int coordinate(qint64 value) {
    return int(std::clamp<qint64>(value, std::numeric_limits<int>::min(),
                                  std::numeric_limits<int>::max()));
}

QRect grown(const QRect& box, qint64 left, qint64 top, qint64 right, qint64 bottom) {
    return QRect(QPoint(coordinate(box.left() - left), coordinate(box.top() - top)),
                 QPoint(coordinate(box.right() + right), coordinate(box.bottom() + bottom)));
}

int headSide(double share, int bodySide) {
    return std::clamp(int(share * bodySide), minHeadSide, std::max(minHeadSide, bodySide));
}

} // namespace

double overlayGeometry::rectIou(const QRect& a, const QRect& b) {
    const double common = areaOf(a & b);
    if (common < 1.0)
        return 0.0;
    const double all = areaOf(a) + areaOf(b) - common;
    return all > 0.0 ? common / all : 0.0;
}

QPoint overlayGeometry::boxCenter(const QRect& box) {
    return QPoint(int((qint64(box.left()) + box.right()) / 2),
                  int((qint64(box.top()) + box.bottom()) / 2));
}

QRect overlayGeometry::expectedBodyBox(const QRect& face) {
    const qint64 w = widthOf(face);
    const qint64 h = heightOf(face);
    return grown(face, w, h, w, 3 * h);
}

QRect overlayGeometry::enlargedByHalf(const QRect& box) {
    const qint64 w = widthOf(box) / 2;
    const qint64 h = heightOf(box) / 2;
    return grown(box, w, h, w, h);
}

QRect overlayGeometry::estimatedHeadRegion(const FaceOverlay& overlay, const QSize& imageSize) {
    const QRect image(QPoint(0, 0), imageSize);
    const QRect box = overlay.rect & image;
    if (box.isEmpty() || !overlay.bodyOnly)
        return box;
    const int width = headSide(headOfBodyWidth, box.width());
    const int height = headSide(headOfBodyHeight, box.height());
    const int left =
        std::clamp(boxCenter(box).x() - width / 2, 0, std::max(imageSize.width() - width, 0));
    const int top = std::clamp(box.top(), 0, std::max(imageSize.height() - height, 0));
    return QRect(left, top, width, height) & image;
}

QString overlayGeometry::boxText(const QRect& box) {
    return u"%1,%2 %3x%4"_s.arg(QString::number(box.left()), QString::number(box.top()),
                                QString::number(widthOf(box)), QString::number(heightOf(box)));
}
