#include "enroll/station_ring.h"

#include "app/identity.h"

#include <QPainter>
#include <algorithm>

namespace enroll {

using namespace Qt::StringLiterals;

namespace {

constexpr int usualSide = 320;
constexpr int leastSide = 120;
constexpr double thickness = 0.14; ///< Of the side.
constexpr double cropShare = 0.42; ///< Of the side; fits into the ring.
constexpr int gapSixteenths = 24;  ///< Between two segments, in sixteenths of a degree.

constexpr QColor toComeColor(0x25, 0x31, 0x45);
constexpr QColor askedColor(0x35, 0xc4, 0xee);
constexpr QColor passedColor(0x81, 0x65, 0x2c);

} // namespace

StationRing::StationRing(QWidget* parent) : QWidget(parent) {
    setObjectName(u"stationRing"_s);
    setAccessibleName(u"Stations"_s);
    setPlan(startPlan(0));
}

void StationRing::setPlan(const StationPlan& newPlan) {
    plan = newPlan;
    setAccessibleDescription(
        u"%1 of %2 stations are filled"_s.arg(filledStations(plan)).arg(plan.states.size()));
    update();
}

void StationRing::setCrop(const QImage& newCrop) {
    crop = newCrop;
    update();
}

QSize StationRing::sizeHint() const {
    return {usualSide, usualSide};
}

QSize StationRing::minimumSizeHint() const {
    return {leastSide, leastSide};
}

QColor StationRing::colorOf(std::size_t station) const {
    if (isFilled(plan, station))
        return identity::ownerColor;
    if (station == plan.current)
        return askedColor;
    return plan.states[station].passed ? passedColor : toComeColor;
}

void StationRing::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const double side = std::min(width(), height());
    const double pen = side * thickness;
    QRectF ring(0, 0, side - pen, side - pen);
    ring.moveCenter(QRectF(rect()).center());
    const int count = int(plan.states.size());
    for (int i = 0; i < count; ++i) {
        painter.setPen(QPen(colorOf(std::size_t(i)), pen, Qt::SolidLine, Qt::FlatCap));
        // From the top, clockwise.
        const int start = 90 * 16 - (i + 1) * 360 * 16 / count;
        painter.drawArc(ring, start + gapSixteenths / 2, 360 * 16 / count - gapSixteenths);
    }
    if (crop.isNull())
        return;
    QRectF middle(0, 0, side * cropShare, side * cropShare);
    middle.moveCenter(QRectF(rect()).center());
    painter.drawImage(middle, crop);
}

} // namespace enroll
